#include "desktop/folder/card_edit.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <utility>

#include "common/calendar/wall_time.h"
#include "common/formats/items/identity.h"
#include "common/formats/lines/content_writer.h"
#include "common/text/text.h"
#include "desktop/folder/card_lines.h"
#include "desktop/folder/line_candidates.h"
#include "desktop/merge/item.h"

namespace desktop {
namespace {

using formats::Contact;
using formats::ContactField;

enum class Needed { kBetter, kNotWorse };

// Where a card's lines are put together, none of them is hidden by another.
constexpr ContactField kSaidByAllLines[] = {ContactField::kBody, ContactField::kChildren};

class CardEditor {
 public:
  CardEditor(std::string_view text, std::span<const FileLine> lines, const Contact& to,
             const LineStyle& style)
      : card_(text, lines, style),
        lines_(card_.lines()),
        was_(CardReading::Read(lines_)),
        to_(WithoutDerived(to)),
        differences_(DifferencesOf(was_, to_)) {}

  EditedPart Edit(std::chrono::sys_seconds when);

 private:
  Contact WithoutDerived(Contact to) const;
  bool Try(CardLines lines, Needed needed);
  bool IsNotWorse(const ContactDifferences& differences) const;
  bool StillConcerns(const CanonicalLine& line, bool missing) const;

  enum class Names { kAll, kPlain };
  void EditName(Names names);
  void EditCategories();
  void EditLines();
  void Replace(const CanonicalLine& gone, const CanonicalLine& wanted);
  bool ReplaceAll(const CardLines& carriers, const CanonicalLine& gone,
                  const CanonicalLine& wanted);
  bool ReplacePieces(const CardLines& carriers, const CanonicalLine& wanted);
  void Remove(const CanonicalLine& gone);
  void Insert(const CanonicalLine& wanted);
  void RemoveLabels(const std::vector<CanonicalLine>& changed);
  void NoteTime(std::chrono::sys_seconds when);

  // The lines that say it by themselves; first those that say it of the same kind alone.
  std::vector<CardLines> SayersOf(const CanonicalLine& canonical) const;
  // Those without which the card would say it otherwise.
  CardLines CarriersOf(const CanonicalLine& canonical) const;
  // The line, and those that say the same again.
  CardLines Repeating(const CardLineRef& line) const;
  CardLines Without(const CardLines& removed) const;
  CardLines With(const CardLineRef& old, const CardLineRef& replacement) const;

  const CardReading card_;
  CardLines lines_;
  const Contact was_;
  const Contact to_;
  ContactDifferences differences_;
  std::set<std::string> hidden_;  // values that some line has and the card did not say
};

bool Says(const CardLine& line, const std::string& key) {
  return std::any_of(line.says.begin(), line.says.end(),
                     [&](const CanonicalLine& said) { return said.key == key; });
}

bool IsNameless(const Contact& contact) {
  constexpr ContactField kName[] = {ContactField::kTitle, ContactField::kFirstName,
                                    ContactField::kMiddleName, ContactField::kLastName,
                                    ContactField::kSuffix};
  return std::all_of(std::begin(kName), std::end(kName),
                     [&](ContactField field) { return CommonText(contact[field]).empty(); });
}

// A name to sort by that follows from the others is none of its own, unless the card has it.
Contact CardEditor::WithoutDerived(Contact to) const {
  std::string& fileAs = to[ContactField::kFileAs];
  if (!was_[ContactField::kFileAs].empty()) return to;
  Contact derived = to;
  derived[ContactField::kFileAs].clear();
  if (SameText(formats::WithFileAs(derived)[ContactField::kFileAs], fileAs)) fileAs.clear();
  return to;
}

bool CardEditor::IsNotWorse(const ContactDifferences& differences) const {
  return std::all_of(differences.begin(), differences.end(), [&](const ContactDifference& each) {
    return differences_.contains(each) || (!each.missing && hidden_.contains(each.value));
  });
}

bool CardEditor::Try(CardLines lines, Needed needed) {
  ContactDifferences differences = DifferencesOf(CardReading::Read(lines), to_);
  const bool better =
      std::any_of(differences_.begin(), differences_.end(),
                  [&](const ContactDifference& each) { return !differences.contains(each); });
  if (!IsNotWorse(differences) || (needed == Needed::kBetter && !better)) return false;
  lines_ = std::move(lines);
  differences_ = std::move(differences);
  return true;
}

bool CardEditor::StillConcerns(const CanonicalLine& line, bool missing) const {
  const std::set<std::string> values = ValuesOf(card_.Compose(line.line)->alone);
  return std::any_of(differences_.begin(), differences_.end(), [&](const ContactDifference& each) {
    return each.missing == missing && values.contains(each.value);
  });
}

std::vector<CardLines> CardEditor::SayersOf(const CanonicalLine& canonical) const {
  CardLines exact;
  CardLines alike;
  for (const CardLineRef& line : lines_) {
    if (line->foreign || line->IsNamed("FN") || !Says(*line, canonical.key)) continue;
    alike.push_back(line);
    const bool same = std::any_of(line->says.begin(), line->says.end(),
                                  [&](const auto& said) { return said.text == canonical.text; });
    if (same) exact.push_back(line);
  }
  std::vector<CardLines> sayers;
  if (!exact.empty()) sayers.push_back(exact);
  if (alike.size() > exact.size()) sayers.push_back(std::move(alike));
  return sayers;
}

CardLines CardEditor::CarriersOf(const CanonicalLine& canonical) const {
  const std::set<std::string> values = ValuesOf(card_.Compose(canonical.line)->alone);
  const Contact now = CardReading::Read(lines_);
  CardLines carriers;
  for (const CardLineRef& line : lines_) {
    if (line->foreign || line->says.empty() || line->IsNamed("FN")) continue;
    const Contact without = CardReading::Read(Without(Repeating(line)));
    const ContactDifferences lost = DifferencesOf(without, now);
    const bool carries = std::any_of(lost.begin(), lost.end(), [&](const auto& each) {
      return each.missing && values.contains(each.value);
    });
    if (carries) carriers.push_back(line);
  }
  return carriers;
}

CardLines CardEditor::Repeating(const CardLineRef& line) const {
  CardLines repeating;
  std::copy_if(lines_.begin(), lines_.end(), std::back_inserter(repeating),
               [&](const CardLineRef& each) {
                 return !each->IsNamed("FN") && Says(*each, line->says.front().key);
               });
  return repeating;
}

// With a line its group's label goes, unless that is for other lines as well.
CardLines CardEditor::Without(const CardLines& removed) const {
  const auto isRemoved = [&](const CardLineRef& line) {
    return std::find(removed.begin(), removed.end(), line) != removed.end();
  };
  const auto isDecoration = [](const CardLine& line) {
    return line.property && line.property->name.starts_with("X-AB") && line.says.empty();
  };
  std::set<std::string> left;
  std::set<std::string> gone;
  for (const CardLineRef& line : lines_) {
    if (!line->property || line->property->group.empty() || isDecoration(*line)) continue;
    (isRemoved(line) ? gone : left).insert(line->property->group);
  }
  CardLines lines;
  for (const CardLineRef& line : lines_) {
    const bool widowed = line->property && isDecoration(*line) &&
                         gone.contains(line->property->group) &&
                         !left.contains(line->property->group);
    if (!isRemoved(line) && !widowed) lines.push_back(line);
  }
  return lines;
}

CardLines CardEditor::With(const CardLineRef& old, const CardLineRef& replacement) const {
  CardLines lines = lines_;
  std::replace(lines.begin(), lines.end(), old, replacement);
  return lines;
}

// What the card calls the contact follows its name: word by word where it has words of its own.
void CardEditor::EditName(Names names) {
  const std::string was = FormattedName(was_);
  const std::string to = FormattedName(to_);
  if (was == to) return;
  // What no other line says is not to be taken for the name of a person.
  const std::set<std::string> values = ValuesOf(to_);
  const bool is40 = card_.version() == formats::VCardVersion::k40;
  for (const CardLineRef& line : CardLines(lines_)) {
    if (!line->IsNamed("FN")) continue;
    const std::string text = TextOf(*line->property);
    if (names == Names::kPlain && text != was) continue;
    RawLine raw = CardReading::Spelled(*line);
    const std::string name = text == was ? to : FollowName(text, was_, to_).value_or(to);
    raw.value = formats::ContentValue().Add(name).text();
    if (IsNameless(to_) && !values.contains(CommonText(name))) {
      raw.parameters.emplace_back(is40 ? "DERIVED=true" : "X-DERIVED=true");
    }
    Try(With(line, card_.Compose(raw)), Needed::kNotWorse);
  }
}

void CardEditor::EditCategories() {
  const auto has = [](const std::vector<std::string>& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
  };
  std::vector<std::string> added;
  for (const std::string& name : to_.categories) {
    if (!has(was_.categories, name)) added.push_back(name);
  }
  CardLines carriers;
  for (const CardLineRef& line : lines_) {
    if (!line->foreign && !line->alone.categories.empty()) carriers.push_back(line);
  }
  for (const CardLineRef& line : carriers) {
    std::vector<std::string> names = line->alone.categories;
    std::erase_if(names, [&](const std::string& name) { return !has(to_.categories, name); });
    if (line == carriers.back()) names.insert(names.end(), added.begin(), added.end());
    if (names == line->alone.categories) continue;
    CardLines lines = Without({line});
    if (!names.empty()) {
      RawLine raw = CardReading::Spelled(*line);
      raw.value = CategoryValue(names);
      lines = With(line, card_.Compose(raw));
    }
    Try(std::move(lines), Needed::kBetter);
  }
  if (carriers.empty() && !added.empty()) {
    Insert({{{}, "CATEGORIES", {}, CategoryValue(added)}, {}, {}});
  }
}

void CardEditor::EditLines() {
  std::vector<CanonicalLine> gone = CanonicalLines(was_, card_.version());
  std::vector<CanonicalLine> wanted = CanonicalLines(to_, card_.version());
  RemoveCommon(gone, wanted);
  for (const auto& [from, to] : PairUp(gone, wanted)) Replace(from, to);
  for (const CanonicalLine& line : gone) Remove(line);
  for (const CanonicalLine& line : wanted) Insert(line);
}

bool CardEditor::ReplaceAll(const CardLines& carriers, const CanonicalLine& gone,
                            const CanonicalLine& wanted) {
  CardLines lines = lines_;
  for (const CardLineRef& carrier : carriers) {
    CardLineRef chosen;
    for (const RawLine& raw : CandidatesFor(*carrier, gone, wanted)) {
      CardLineRef candidate = card_.Compose(raw);
      if (!Says(*candidate, wanted.key)) continue;
      chosen = std::move(candidate);
      break;
    }
    if (!chosen) return false;
    std::replace(lines.begin(), lines.end(), carrier, chosen);
  }
  return Try(std::move(lines), Needed::kNotWorse);
}

// A text that several lines say together, such as notes: the lines before and behind what is new
// stay.
bool CardEditor::ReplacePieces(const CardLines& carriers, const CanonicalLine& wanted) {
  for (const std::vector<Piece>& pieces : PiecesFor(carriers, wanted)) {
    CardLines removed;
    CardLines lines = lines_;
    for (std::size_t i = 0; i < pieces.size(); ++i) {
      if (!pieces[i].text) {
        removed.push_back(carriers[i]);
      } else if (pieces[i].changed) {
        RawLine raw = CardReading::Spelled(*carriers[i]);
        raw.value = formats::ContentValue().Add(*pieces[i].text).text();
        std::replace(lines.begin(), lines.end(), carriers[i], card_.Compose(raw));
      }
    }
    std::erase_if(lines, [&](const CardLineRef& line) {
      return std::find(removed.begin(), removed.end(), line) != removed.end();
    });
    if (Try(std::move(lines), Needed::kBetter)) return true;
  }
  return false;
}

void CardEditor::Replace(const CanonicalLine& gone, const CanonicalLine& wanted) {
  const std::vector<CardLines> sayers = SayersOf(gone);
  for (const CardLines& lines : sayers) {
    if (ReplaceAll(lines, gone, wanted)) return;
  }
  if (!StillConcerns(gone, false) && !StillConcerns(wanted, true)) return;
  const CardLines carriers = sayers.empty() ? CarriersOf(gone) : sayers.front();
  if (carriers.size() > 1 && ReplacePieces(carriers, wanted)) return;
  for (const CardLineRef& carrier : carriers) {
    for (const RawLine& raw : CandidatesFor(*carrier, gone, wanted)) {
      if (Try(With(carrier, card_.Compose(raw)), Needed::kBetter)) break;
    }
  }
  Insert(wanted);
}

void CardEditor::Remove(const CanonicalLine& gone) {
  for (const CardLines& lines : SayersOf(gone)) {
    if (Try(Without(lines), Needed::kBetter)) return;
  }
  if (!StillConcerns(gone, false)) return;
  const CardLines carriers = CarriersOf(gone);
  if (!carriers.empty() && Try(Without(carriers), Needed::kBetter)) return;
  CanonicalLine blank = gone;
  std::erase_if(blank.line.value, [](char c) { return c != ';'; });
  for (const CardLineRef& carrier : carriers) {
    for (const RawLine& raw : CandidatesFor(*carrier, gone, blank)) {
      if (Try(With(carrier, card_.Compose(raw)), Needed::kBetter)) break;
    }
  }
}

// Where an empty line of the name waits for it, else behind the last one of the name, else at the
// end; before all others when the first of several counts.
void CardEditor::Insert(const CanonicalLine& wanted) {
  if (!StillConcerns(wanted, true)) return;
  const CardLineRef line = card_.Compose(wanted.line);
  const std::string name = text::ToUpperAscii(wanted.line.name);
  std::size_t behind = lines_.size() - 1;
  for (std::size_t i = 1; i + 1 < lines_.size(); ++i) {
    if (!lines_[i]->IsNamed(name)) continue;
    behind = i + 1;
    const bool waits = lines_[i]->says.empty() && lines_[i]->alone.categories.empty() &&
                       (IsBlankValue(lines_[i]->property->value) || IsOnceOnly(name));
    if (waits && Try(With(lines_[i], line), Needed::kBetter)) return;
  }
  for (const std::size_t place : {behind, std::min<std::size_t>(2, lines_.size() - 1)}) {
    CardLines lines = lines_;
    lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(place), line);
    if (Try(std::move(lines), Needed::kBetter)) return;
  }
  // A line that repeats another one may hold the place.
  for (const CardLineRef& old : CardLines(lines_)) {
    if (!old->IsNamed(name) || old->says.empty()) continue;
    const bool repeats = std::any_of(lines_.begin(), lines_.end(), [&](const CardLineRef& other) {
      return other != old && other->IsNamed(name) && Says(*other, old->says.front().key);
    });
    if (repeats && Try(With(old, line), Needed::kBetter)) return;
  }
}

// An address as it is printed is wrong from then on.
void CardEditor::RemoveLabels(const std::vector<CanonicalLine>& changed) {
  for (const CardLineRef& line : CardLines(lines_)) {
    if (!line->IsNamed("LABEL")) continue;
    const bool stale = std::any_of(changed.begin(), changed.end(), [&](const CanonicalLine& each) {
      const bool home = line->property->HasType("HOME");
      const bool work = line->property->HasType("WORK");
      const bool isHome =
          each.text.starts_with("ADR;TYPE=HOME:") || each.text.starts_with("ADR;TYPE=home:");
      const bool isWork =
          each.text.starts_with("ADR;TYPE=WORK:") || each.text.starts_with("ADR;TYPE=work:");
      return each.line.Is("ADR") && home == isHome && work == isWork;
    });
    if (stale) Try(Without({line}), Needed::kNotWorse);
  }
}

void CardEditor::NoteTime(std::chrono::sys_seconds when) {
  for (CardLineRef& line : lines_) {
    if (!line->IsNamed("REV")) continue;
    RawLine raw = CardReading::Spelled(*line);
    const bool extended = raw.value.find('-') != std::string::npos;
    raw.value =
        extended ? formats::IsoDateTime(std::chrono::local_seconds(when.time_since_epoch())) + "Z"
                 : formats::BasicUtc(when);
    line = card_.Compose(raw);
  }
}

EditedPart CardEditor::Edit(std::chrono::sys_seconds when) {
  if (differences_.empty()) return {CardReading::BytesOf(lines_), {}};
  const std::set<std::string> said = ValuesOf(was_);
  for (const CardLineRef& line : lines_) {
    Contact alone = line->alone;
    for (const ContactField field : kSaidByAllLines) alone[field].clear();
    for (const std::string& value : ValuesOf(alone)) {
      if (!said.contains(value)) hidden_.insert(value);
    }
  }
  const CardLines before = lines_;
  std::vector<CanonicalLine> gone = CanonicalLines(was_, card_.version());
  std::vector<CanonicalLine> wanted = CanonicalLines(to_, card_.version());
  RemoveCommon(gone, wanted);
  EditName(Names::kAll);
  EditCategories();
  EditLines();
  // That of a company, which would have been a person's name before; and a person's, which could
  // not go before another line said what the card calls the contact.
  EditName(Names::kPlain);
  if (!differences_.empty()) EditLines();
  RemoveLabels(gone);
  if (lines_ != before) NoteTime(when);
  EditedPart edited{CardReading::BytesOf(lines_), {}};
  std::set<std::string> named;
  for (const ContactDifference& each : differences_) {
    if (!each.missing && hidden_.contains(each.value)) continue;
    if (named.insert(each.field).second) {
      edited.losses.push_back(each.field + ": cannot be said by an edit of this card");
    }
  }
  return edited;
}

}  // namespace

EditedPart EditCard(std::string_view text, std::span<const FileLine> lines, const Contact& to,
                    const LineStyle& style, std::chrono::sys_seconds when) {
  return CardEditor(text, lines, to, style).Edit(when);
}

}  // namespace desktop
