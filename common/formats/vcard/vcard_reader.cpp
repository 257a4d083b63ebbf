#include <optional>
#include <utility>

#include "common/formats/lines/notice_list.h"
#include "common/formats/lines/stray_lines.h"
#include "common/formats/lines/vcard_lines.h"
#include "common/formats/vcard/contact_builder.h"
#include "common/formats/vcard/vcard.h"
#include "common/text/code_page.h"
#include "common/text/text.h"
#include "common/text/unicode.h"

namespace formats {
namespace {

struct OpenCard {
  std::vector<Property> properties;
  std::size_t line = 0;
  std::size_t nested = 0;    // AGENTs' cards that are open
  bool agentBefore = false;  // the last line was an AGENT without a value
  bool versionSeen = false;
  NoticeList notices;
  StrayLines stray;
};

// Cuts the lines of a file into cards. A card within a card is an AGENT's and is skipped; a card
// that begins anywhere else ends the one before, whose END is missing.
class CardReader {
 public:
  explicit CardReader(Overflow overflow) : overflow_(overflow) {}
  void Take(const ContentLine& line);
  VCardFile Finish();

 private:
  void Begin(const ContentLine& line);
  void End(const ContentLine& line);
  void TakeProperty(const ContentLine& line);
  void TakeOutside(const ContentLine& line);
  void ReportOutside();
  void CloseCard(bool endMissing);

  const Overflow overflow_;
  VCardFile file_;
  std::optional<OpenCard> card_;
  std::size_t outsideFirst_ = 0;
  std::size_t outsideCount_ = 0;
};

void CardReader::Take(const ContentLine& line) {
  if (IsVCardBegin(line.text)) {
    Begin(line);
  } else if (IsVCardEnd(line.text)) {
    End(line);
  } else if (card_) {
    TakeProperty(line);
  } else {
    TakeOutside(line);
  }
}

void CardReader::Begin(const ContentLine& line) {
  ReportOutside();
  if (card_ && card_->agentBefore) {
    card_->agentBefore = false;
    ++card_->nested;
    return;
  }
  if (card_) CloseCard(true);
  card_.emplace();
  card_->line = line.line;
}

void CardReader::End(const ContentLine& line) {
  if (!card_) {
    TakeOutside(line);
  } else if (card_->nested > 0) {
    --card_->nested;
  } else {
    CloseCard(false);
  }
}

void CardReader::TakeProperty(const ContentLine& line) {
  std::optional<Property> property = ParseProperty(line);
  card_->agentBefore =
      property && property->name == "AGENT" && text::TrimBlanks(property->value).empty();
  if (card_->agentBefore && card_->nested == 0) property->value = "BEGIN:VCARD";
  if (card_->nested > 0) return;
  if (!property) {
    card_->stray.Add(line);
    return;
  }
  card_->stray.Release(card_->notices);
  if (property->name == "VERSION") card_->versionSeen = true;
  card_->properties.push_back(std::move(*property));
}

void CardReader::TakeOutside(const ContentLine& line) {
  if (outsideCount_ == 0) outsideFirst_ = line.line;
  ++outsideCount_;
}

void CardReader::ReportOutside() {
  if (outsideCount_ == 0) return;
  file_.notices.push_back({outsideFirst_, std::to_string(outsideCount_) +
                                              (outsideCount_ == 1 ? " line" : " lines") +
                                              " outside any vCard left out"});
  outsideCount_ = 0;
}

void CardReader::CloseCard(bool endMissing) {
  ParsedContact contact;
  contact.line = card_->line;
  card_->stray.Release(card_->notices);
  if (!card_->versionSeen) card_->notices.Add(card_->line, "VERSION is missing, read as 3.0");
  contact.contact = BuildContact(card_->properties, overflow_, card_->notices);
  contact.notices = card_->notices.Release();
  if (endMissing) {
    file_.notices.push_back({card_->line, "the vCard that begins here has no END:VCARD"});
  }
  file_.contacts.push_back(std::move(contact));
  card_.reset();
}

VCardFile CardReader::Finish() {
  if (card_) CloseCard(true);
  ReportOutside();
  return std::move(file_);
}

}  // namespace

VCardFile ReadVCards(std::string_view bytes, Overflow overflow) {
  const text::Conversion text = text::DecodeFile(bytes);
  ContentLineReader lines(text.text);
  CardReader cards(overflow);
  ContentLine line;
  while (lines.Next(line)) cards.Take(line);
  VCardFile file = cards.Finish();
  if (text.damaged) {
    file.notices.insert(file.notices.begin(), {1, "bytes that are no UTF-16 were replaced"});
  }
  return file;
}

}  // namespace formats
