// The lines of one card, each with what it says by itself.
#pragma once

#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "common/formats/items/contact.h"
#include "common/formats/lines/vcard_property.h"
#include "common/formats/vcard/vcard.h"
#include "desktop/folder/contact_differences.h"
#include "desktop/folder/file_parts.h"
#include "desktop/folder/raw_line.h"

namespace desktop {

struct CardLine {
  std::string bytes;
  formats::ContentLine content;
  std::optional<formats::Property> property;
  formats::Contact alone;           // what it says without the others, but for its group's label
  std::vector<CanonicalLine> says;  // the same
  // Says nothing and is not looked at: a picture, a card within the card, empty lines.
  bool foreign = false;

  bool IsNamed(std::string_view name) const {
    return !foreign && property && property->name == name;
  }
};
using CardLineRef = std::shared_ptr<const CardLine>;
using CardLines = std::vector<CardLineRef>;

class CardReading {
 public:
  // `lines` are those of a card, from its BEGIN to its END.
  CardReading(std::string_view text, std::span<const FileLine> lines, LineStyle style);

  const CardLines& lines() const { return lines_; }
  formats::VCardVersion version() const;
  // A new line, in the style of the card.
  CardLineRef Compose(const RawLine& line) const;
  // The line as it is spelled, its value as UTF-8 without a transfer encoding, without the
  // parameters that tell of one or of the value that it has.
  static RawLine Spelled(const CardLine& line);
  static formats::Contact Read(const CardLines& lines);
  static std::string BytesOf(const CardLines& lines);

 private:
  void AddGap(std::string bytes);
  CardLineRef Make(std::string bytes, formats::ContentLine content, bool within) const;

  LineStyle style_;
  std::vector<std::pair<std::string, std::string>> labels_;  // lines, by their group
  CardLines lines_;
};

}  // namespace desktop
