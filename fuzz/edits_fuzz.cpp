// Any bytes as a file of a desk's, and an edit of one of its items: what says other items stays as
// it is, byte for byte, and so do the item's lines that no handheld knows; an edit that changes
// nothing changes no byte; the item is read as the edit wanted it, but for a value that another
// line of a card said in vain before, or what the file cannot say is told.
//
// The first bytes choose the kind of file, the item, the field and how long its new text is, which
// follows; the others are the file.
#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "common/formats/lines/vcard_property.h"
#include "common/text/text.h"
#include "common/text/unicode.h"
#include "desktop/folder/contact_differences.h"
#include "desktop/folder/desk_reader.h"
#include "desktop/folder/edit_text.h"
#include "desktop/folder/file_parts.h"
#include "desktop/folder/file_text.h"
#include "desktop/folder/item_facts.h"
#include "fuzz/require.h"

namespace {

using desktop::DeskItem;
using desktop::DeskReading;
using desktop::FileParts;
using desktop::Item;
using fuzz::Require;

constexpr std::chrono::sys_seconds kWhen{std::chrono::seconds(1'800'000'000)};

const calendar::Zone& EditZone() {
  static const calendar::Zone zone = *calendar::Zone::Find("Europe/Berlin");
  return zone;
}

// As one comes from a handheld.
std::string NewText(std::string_view bytes) {
  std::string text = text::RepairUtf8(bytes);
  std::erase_if(text, [](char c) { return static_cast<unsigned char>(c) < ' ' && c != '\n'; });
  return text;
}

void Edit(formats::Contact& contact, std::uint8_t field, const std::string& text) {
  contact.fields[field % contact.fields.size()] = text;
}

void Edit(formats::Appointment& appointment, std::uint8_t field, const std::string& text) {
  switch (field % 6) {
    case 0:
      appointment.subject = text;
      break;
    case 1:
      appointment.location = text;
      break;
    case 2:
      appointment.body = text;
      break;
    case 3:
      appointment.busyStatus = static_cast<int>(text.size() % 4);
      break;
    case 4:
      appointment.isPrivate = !appointment.isPrivate;
      break;
    default:
      appointment.reminderMinutes = static_cast<int>(text.size());
      break;
  }
}

void Edit(formats::Task& task, std::uint8_t field, const std::string& text) {
  switch (field % 3) {
    case 0:
      task.subject = text;
      break;
    case 1:
      task.body = text;
      break;
    default:
      task.isPrivate = !task.isPrivate;
      break;
  }
}

// A file's text, and where its parts are.
struct Layout {
  explicit Layout(std::string_view bytes) : text(desktop::FileText(bytes).text()) {
    parts = desktop::FindParts(text);
  }
  std::string_view TextOf(std::size_t first, std::size_t last) const {
    const std::size_t begin = parts.lines[first].begin;
    return std::string_view(text).substr(begin, parts.lines[last].end - begin);
  }
  // The part that begins at the line of the file; null without one.
  const desktop::FilePart* PartAt(std::size_t line) const {
    const auto part = std::ranges::find_if(parts.parts, [&](const desktop::FilePart& each) {
      return parts.lines[each.first].content.line == line;
    });
    return part == parts.parts.end() ? nullptr : &*part;
  }
  // The first UID directly within a part.
  std::string UidOf(const desktop::FilePart& part) const {
    for (std::size_t i = part.first; i <= part.last; ++i) {
      if (parts.lines[i].depth != parts.lines[part.first].depth) continue;
      const auto property = formats::ParseProperty(parts.lines[i].content);
      if (property && property->name == "UID") return formats::TextOf(*property);
    }
    return {};
  }

  std::string text;
  FileParts parts;
};

// The texts that an edit of the item at the line leaves alone, in their order: those of items that
// stand beside it.
std::vector<std::string_view> OtherItems(const Layout& layout, std::size_t line) {
  const auto& all = layout.parts.parts;
  const auto isItem = [](const desktop::FilePart& part) {
    return part.name == "VCARD" || part.name == "VEVENT" || part.name == "VTODO";
  };
  const desktop::FilePart* const own = layout.PartAt(line);
  Require(own != nullptr && isItem(*own), "an item stands where it was read");
  const std::string uid = own->name == "VCARD" ? std::string() : layout.UidOf(*own);
  std::vector<std::string_view> others;
  std::size_t next = 0;
  for (const desktop::FilePart& part : all) {
    const bool isApart = part.last < own->first || part.first > own->last;
    const bool sameSeries = part.name == own->name && !uid.empty() && layout.UidOf(part) == uid;
    if (!isItem(part) || !isApart || part.first < next) continue;
    if (!sameSeries) others.push_back(layout.TextOf(part.first, part.last));
    next = part.last + 1;  // what is within it is its own
  }
  return others;
}

// The lines that are nothing to a handheld.
std::vector<std::string_view> KeptLines(const Layout& layout) {
  std::vector<std::string_view> lines;
  for (std::size_t i = 0; i < layout.parts.lines.size(); ++i) {
    if (layout.parts.lines[i].content.text.starts_with("X-KEEP")) {
      lines.push_back(layout.TextOf(i, i));
    }
  }
  return lines;
}

bool AreInOrder(std::string_view text, const std::vector<std::string_view>& pieces) {
  return std::ranges::all_of(pieces, [&](std::string_view piece) {
    const std::size_t at = text.find(piece);
    if (at != text.npos) text.remove_prefix(at + piece.size());
    return at != text.npos;
  });
}

// What the lines of the card at the line say, each by itself.
std::set<std::string> ValuesOfLines(const Layout& layout, std::size_t line) {
  constexpr std::string_view kVersions[] = {"2.1", "3.0", "4.0"};
  std::set<std::string> values;
  const desktop::FilePart* const card = layout.PartAt(line);
  for (std::size_t i = card->first + 1; i < card->last; ++i) {
    const auto version = static_cast<std::size_t>(layout.parts.lines[i].content.dialect);
    std::string alone = "BEGIN:VCARD\nVERSION:" + std::string(kVersions[version]) + "\n";
    alone.append(layout.TextOf(i, i)).append("\nEND:VCARD\n");
    for (const DeskItem& item : desktop::ReadDeskBytes("a.vcf", alone, EditZone()).items) {
      values.merge(desktop::ValuesOf(std::get<formats::Contact>(item.item)));
    }
  }
  return values;
}

// As it is wanted; in a card, what another line said in vain before may now be said.
bool ReadsAs(const Item& now, const Item& wanted, const Layout& was, std::size_t line) {
  const auto* contact = std::get_if<formats::Contact>(&now);
  if (contact == nullptr) {
    return desktop::DifferingFields(desktop::FactsOf(now), desktop::FactsOf(wanted)).empty();
  }
  auto differences = desktop::DifferencesOf(*contact, std::get<formats::Contact>(wanted));
  // A name to sort by that follows from the others is as good as none.
  std::erase_if(differences, [](const auto& each) { return each.field == "FileAs"; });
  if (differences.empty()) return true;
  const std::set<std::string> values = ValuesOfLines(was, line);
  return std::ranges::all_of(differences, [&](const auto& each) {
    const bool isOfAllLines = each.field == "Body" || each.field == "Children";
    return !each.missing && !isOfAllLines && values.contains(each.value);
  });
}

// The same item in a later reading: that of its kind and UID, of several the one of its rank.
const Item* Standing(const std::vector<DeskItem>& before, std::size_t index,
                     const std::vector<DeskItem>& after) {
  const Item& item = before[index].item;
  const auto isAlike = [&](const DeskItem& each) {
    return desktop::KindOf(each.item) == desktop::KindOf(item) &&
           desktop::UidOf(each.item) == desktop::UidOf(item);
  };
  const auto end = before.begin() + static_cast<std::ptrdiff_t>(index);
  auto rank = std::count_if(before.begin(), end, isAlike);
  for (const DeskItem& each : after) {
    if (isAlike(each) && rank-- == 0) return &each.item;
  }
  return nullptr;
}

struct Wish {
  std::uint8_t item;
  std::uint8_t field;
  std::string text;
};

void RequireEdit(const char* name, std::string_view bytes, const Wish& wish) {
  const DeskReading before = desktop::ReadDeskBytes(name, bytes, EditZone());
  if (!before.whole || before.items.empty()) return;
  const std::size_t index = wish.item % before.items.size();
  const DeskItem& item = before.items[index];

  desktop::TextEdit none(bytes, EditZone(), kWhen);
  static_cast<void>(none.Change(item.line, item.item, item.item));
  Require(none.bytes() == bytes, "an edit that changes nothing changes no byte");

  Item to = item.item;
  std::visit([&](auto& each) { Edit(each, wish.field, wish.text); }, to);
  desktop::TextEdit edit(bytes, EditZone(), kWhen);
  const desktop::TextChange change = edit.Change(item.line, item.item, to);
  const std::string edited = edit.bytes();
  Require(!change.later, "nothing was edited before");
  if (!change.done) {
    Require(edited == bytes && !change.losses.empty(), "what is not edited stays, and why is told");
    return;
  }
  const Layout was(bytes);
  const Layout is(edited);
  Require(AreInOrder(is.text, OtherItems(was, item.line)), "other items stay as they are");
  Require(AreInOrder(is.text, KeptLines(was)), "lines of others stay as they are");
  const DeskReading after = desktop::ReadDeskBytes(name, edited, EditZone());
  Require(after.whole, "a file stays whole");
  Require(after.items.size() == before.items.size(), "there are as many items");
  const Item* const now = Standing(before.items, index, after.items);
  Require(now != nullptr, "the item is still there");
  Require(!change.losses.empty() || ReadsAs(*now, to, was, item.line), "it reads as wanted");

  desktop::TextEdit removal(bytes, EditZone(), kWhen);
  if (!removal.Remove(item.line, item.item).done) return;
  const Layout left(removal.bytes());
  Require(AreInOrder(left.text, OtherItems(was, item.line)), "the other items are left");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::size_t kChoices = 4;
  if (size < kChoices) return 0;
  std::string_view bytes(reinterpret_cast<const char*>(data) + kChoices, size - kChoices);
  const std::string_view text = bytes.substr(0, data[3]);
  bytes.remove_prefix(text.size());
  const char* const name = data[0] % 2 == 0 ? "a.vcf" : "a.ics";
  RequireEdit(name, bytes, {data[1], data[2], NewText(text)});
  return 0;
}
