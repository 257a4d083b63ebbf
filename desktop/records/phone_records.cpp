#include "desktop/records/phone_records.h"

#include <fmt/format.h>

#include <optional>

#include "common/formats/items/message_time.h"
#include "desktop/records/wire_values.h"

namespace desktop {
namespace {

struct TextRow {
  std::string_view element;
  std::string formats::Call::*field;
};
constexpr TextRow kCallTexts[] = {
    {"Number", &formats::Call::number},
    {"Name", &formats::Call::name},
    {"Type", &formats::Call::numberType},
    {"Note", &formats::Call::note},
};

struct FlagRow {
  std::string_view element;
  bool formats::Call::*field;
};
constexpr FlagRow kCallFlags[] = {
    {"Outgoing", &formats::Call::outgoing},
    {"Connected", &formats::Call::connected},
    {"Roam", &formats::Call::roaming},
    {"Ended", &formats::Call::ended},
};

std::optional<formats::MessageTime> ChildTime(const XmlElement& record, std::string_view name) {
  const std::optional<std::chrono::sys_seconds> time = DateTimeFromText(record.ChildText(name));
  if (!time || formats::ToFileTime(*time) == 0 || !formats::IsKeepableTime(*time)) {
    return std::nullopt;
  }
  return *time;
}

// Not so for an element that is not there.
bool IsFalse(const XmlElement& record, std::string_view name) {
  return record.ChildText(name) == "FALSE";
}

// Not even what every message has that the handheld could read.
bool IsMultimedia(const XmlElement& record) {
  for (const XmlElement& child : record.children) {
    if (child.name != "Folder") return false;
  }
  return true;
}

}  // namespace

formats::TextMessage MessageFromXml(const XmlElement& record) {
  formats::TextMessage message;
  message.folder = record.ChildText("Folder");
  if (IsMultimedia(record)) message.messageClass = formats::MessageClass::kMms;
  message.time = ChildTime(record, "Time");
  message.flags = formats::FromFlags(ChildNumber(record, "Flags", 0));
  message.from.address = record.ChildText("Sender");
  message.text = record.ChildText("NOTES");
  if (const XmlElement* recipients = record.Child("Recipients")) {
    for (const XmlElement& recipient : recipients->children) {
      if (recipient.name != "Recipient") continue;
      message.to.push_back({std::string(recipient.ChildText("Number")), {}});
    }
  }
  return message;
}

formats::Call CallFromXml(const XmlElement& record) {
  formats::Call call;
  for (const TextRow& row : kCallTexts) call.*row.field = record.ChildText(row.element);
  for (const FlagRow& row : kCallFlags) call.*row.field = ChildIsTrue(record, row.element);
  call.missed = IsFalse(record, "Outgoing") && IsFalse(record, "Connected");
  call.callerId = ChildNumber(record, "CID", 0);
  call.start = ChildTime(record, "Start");
  call.end = ChildTime(record, "End");
  return call;
}

std::string MissingOf(const Record& message) {
  if (message.oidText.empty()) {
    return "no identifier: the handheld sends no sender, text and recipients";
  }
  if (IsMultimedia(message.element)) {
    return "multimedia: the handheld sends nothing of it but its number and folder";
  }
  return {};
}

}  // namespace desktop
