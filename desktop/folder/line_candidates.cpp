#include "desktop/folder/line_candidates.h"

#include <algorithm>

#include "common/formats/lines/content_writer.h"
#include "common/text/text.h"
#include "desktop/merge/item.h"

namespace desktop {
namespace {

using formats::ContactField;

constexpr ContactField kNameFields[] = {ContactField::kTitle, ContactField::kFirstName,
                                        ContactField::kMiddleName, ContactField::kLastName,
                                        ContactField::kSuffix};
constexpr std::string_view kOnceOnly[] = {"BDAY", "ANNIVERSARY", "X-ANNIVERSARY"};

std::string HeadOf(const CanonicalLine& line) {
  return line.text.substr(0, line.text.size() - line.line.value.size());
}

template <typename Alike>
void Pair(std::vector<CanonicalLine>& gone, std::vector<CanonicalLine>& wanted, Alike&& alike,
          std::vector<std::pair<CanonicalLine, CanonicalLine>>& pairs) {
  for (auto from = gone.begin(); from != gone.end();) {
    const auto to = std::find_if(wanted.begin(), wanted.end(),
                                 [&](const CanonicalLine& each) { return alike(*from, each); });
    if (to == wanted.end()) {
      ++from;
      continue;
    }
    pairs.emplace_back(std::move(*from), std::move(*to));
    wanted.erase(to);
    from = gone.erase(from);
  }
}

std::string WithoutHyphens(std::string text) {
  std::erase(text, '-');
  return text;
}

// The value with those components of it changed that differ; nothing when it has too few.
std::string WithComponents(const std::string& value, const std::string& gone,
                           const std::string& wanted) {
  const auto own = formats::SplitValue(value, ';');
  const auto from = formats::SplitValue(gone, ';');
  const auto to = formats::SplitValue(wanted, ';');
  std::string changed;
  for (std::size_t i = 0; i < std::max(own.size(), to.size()); ++i) {
    const bool same = (i < from.size() ? from[i] : "") == (i < to.size() ? to[i] : "");
    if (i > 0) changed += ';';
    if (same) {
      if (i < own.size()) changed += own[i];
    } else if (i < to.size()) {
      changed += to[i];
    }
  }
  return changed;
}

// The pieces that the text begins with, each but the last one with the separator behind.
std::size_t CountLeading(std::string_view& text, const std::vector<std::string>& pieces,
                         std::string_view separator) {
  std::size_t count = 0;
  for (const std::string& piece : pieces) {
    if (!text.starts_with(piece)) break;
    const std::string_view rest = text.substr(piece.size());
    if (!rest.empty() && !rest.starts_with(separator)) break;
    text = rest.empty() ? rest : rest.substr(separator.size());
    ++count;
  }
  return count;
}

std::size_t CountTrailing(std::string_view& text, const std::vector<std::string>& pieces,
                          std::size_t most, std::string_view separator) {
  std::size_t count = 0;
  while (count < most) {
    const std::string& piece = pieces[pieces.size() - 1 - count];
    if (text.empty() || !text.ends_with(piece)) break;
    const std::string_view rest = text.substr(0, text.size() - piece.size());
    if (!rest.empty() && !rest.ends_with(separator)) break;
    text = rest.empty() ? rest : rest.substr(0, rest.size() - separator.size());
    ++count;
  }
  return count;
}

std::vector<Piece> Arrange(const std::vector<std::string>& texts, std::string_view wanted,
                           std::string_view separator) {
  std::string_view middle = wanted;
  const std::size_t leading = CountLeading(middle, texts, separator);
  const std::size_t trailing = CountTrailing(middle, texts, texts.size() - leading, separator);
  std::vector<Piece> pieces;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    const bool stays = i < leading || i >= texts.size() - trailing;
    pieces.push_back(stays ? Piece{texts[i], false} : Piece{});
  }
  if (middle.empty()) return pieces;
  if (leading + trailing < texts.size()) {
    pieces[leading] = {std::string(middle), true};
  } else if (leading > 0) {
    Piece& before = pieces[leading - 1];
    before = {*before.text + std::string(separator) + std::string(middle), true};
  } else {
    Piece& behind = pieces.front();
    behind = {std::string(middle) + std::string(separator) + *behind.text, true};
  }
  return pieces;
}

}  // namespace

void RemoveCommon(std::vector<CanonicalLine>& gone, std::vector<CanonicalLine>& wanted) {
  std::vector<std::pair<CanonicalLine, CanonicalLine>> common;
  Pair(
      gone, wanted, [](const auto& a, const auto& b) { return a.text == b.text; }, common);
}

std::vector<std::pair<CanonicalLine, CanonicalLine>> PairUp(std::vector<CanonicalLine>& gone,
                                                            std::vector<CanonicalLine>& wanted) {
  std::vector<std::pair<CanonicalLine, CanonicalLine>> pairs;
  Pair(
      gone, wanted, [](const auto& a, const auto& b) { return a.key == b.key; }, pairs);
  Pair(
      gone, wanted, [](const auto& a, const auto& b) { return HeadOf(a) == HeadOf(b); }, pairs);
  return pairs;
}

std::vector<RawLine> CandidatesFor(const CardLine& line, const CanonicalLine& gone,
                                   const CanonicalLine& wanted) {
  const RawLine spelled = CardReading::Spelled(line);
  std::vector<RawLine> candidates;
  const auto add = [&](std::string value) {
    candidates.push_back(spelled);
    candidates.back().value = std::move(value);
  };
  const std::string& from = gone.line.value;
  const std::string& to = wanted.line.value;
  if (from != to) {
    if (spelled.value == WithoutHyphens(from)) add(WithoutHyphens(to));
    // A number within an address would leave the address ill-formed.
    const bool whole = from.empty() || spelled.Is("TEL");
    const std::size_t at = whole ? std::string::npos : spelled.value.find(from);
    if (at != std::string::npos && spelled.value.find(from, at + 1) == std::string::npos) {
      add(spelled.value.substr(0, at) + to + spelled.value.substr(at + from.size()));
    }
    add(WithComponents(spelled.value, from, to));
    add(to);
  }
  candidates.push_back(wanted.line);
  candidates.back().group = spelled.group;
  return candidates;
}

std::vector<std::vector<Piece>> PiecesFor(const CardLines& lines, const CanonicalLine& wanted) {
  formats::ContentLine content;
  content.text = wanted.text;
  const std::optional<formats::Property> property = formats::ParseProperty(content);
  if (!property) return {};
  const std::string text = TextOf(*property);
  std::vector<std::string> texts;
  for (const CardLineRef& line : lines) texts.push_back(CommonText(TextOf(*line->property)));
  std::vector<std::vector<Piece>> all;
  for (const std::string_view separator : {"\n", ", "}) {
    all.push_back(Arrange(texts, text, separator));
  }
  all.emplace_back(lines.size());
  all.back().front() = {text, true};
  return all;
}

std::optional<std::string> FollowName(std::string text, const formats::Contact& was,
                                      const formats::Contact& to) {
  for (const ContactField field : kNameFields) {
    const std::string from = CommonText(was[field]);
    const std::string into = CommonText(to[field]);
    if (from == into) continue;
    const std::size_t at = from.empty() ? std::string::npos : text.find(from);
    if (at == std::string::npos || into.empty()) return std::nullopt;
    text.replace(at, from.size(), into);
  }
  return text == CommonText(text) ? std::optional(text) : std::nullopt;
}

std::string CategoryValue(const std::vector<std::string>& names) {
  formats::ContentValue value;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (i > 0) value.Separate(',');
    value.Add(names[i]);
  }
  return value.text();
}

bool IsBlankValue(std::string_view value) {
  return value.find_first_not_of("; \t") == std::string_view::npos;
}

bool IsOnceOnly(std::string_view name) {
  return std::find(std::begin(kOnceOnly), std::end(kOnceOnly), name) != std::end(kOnceOnly);
}

}  // namespace desktop
