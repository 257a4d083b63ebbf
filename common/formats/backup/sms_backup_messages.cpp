// Messages of a backup.
#include <algorithm>
#include <map>

#include "common/formats/backup/sms_backup_element.h"
#include "common/formats/backup/sms_backup_values.h"
#include "common/formats/items/message_places.h"
#include "common/formats/json/message_json_fields.h"
#include "common/text/text.h"

namespace formats {
namespace {

// The types of <addr>.
constexpr std::string_view kFrom = "137";
constexpr std::string_view kTo = "151";
constexpr std::string_view kCc = "130";
constexpr std::string_view kBcc = "129";

MessageType TypeFrom(const BackupElement& element, std::string_view attribute, NoticeTally& tally) {
  const std::string_view text = element.attributes[attribute];
  const std::int64_t number = BackupNumber(text).value_or(0);
  if (number < 1 || number > 6) {
    tally.Add(element.line, std::string(attribute) + ": not a known kind of message, taken as a " +
                                "received one: " + text::Excerpt(text));
    return MessageType::kReceived;
  }
  const auto type = static_cast<MessageType>(number);
  if (type != MessageType::kQueued) return type;
  tally.Add(element.line, std::string(attribute) +
                              ": queued messages are kept as messages on their way in the Outbox");
  return MessageType::kOutbox;
}

// Which name goes with which address. Names that do not go with the addresses one by one are of
// no use.
class NameBook {
 public:
  NameBook(const BackupElement& element, const std::vector<std::string>& addresses,
           NoticeTally& tally) {
    const std::string_view text = element.attributes["contact_name"];
    std::vector<std::string> names = {std::string(text)};
    if (addresses.size() != 1) names = SplitAt(text, ", ");
    if (names.size() == addresses.size()) {
      for (std::size_t i = 0; i < names.size(); ++i) {
        names_.try_emplace(addresses[i], KnownName(names[i]));
      }
    } else if (!text.empty() && !KnownName(text).empty()) {
      tally.Add(element.line, "contact_name: not as many names as addresses");
    }
  }
  MessageParty Party(const std::string& address) const {
    const auto known = names_.find(address);
    return {KnownAddress(address), known == names_.end() ? std::string() : known->second};
  }

 private:
  std::map<std::string, std::string> names_;
};

TextMessage Begin(const BackupElement& element, std::string_view typeAttribute,
                  NoticeTally& tally) {
  TextMessage message;
  const bool read = element.attributes["read"] == "1";
  MessagePlace place = PlaceOf(TypeFrom(element, typeAttribute, tally), read);
  message.folder = std::move(place.folder);
  message.flags = place.flags;
  message.time = BackupTime(element, tally);
  if (element.attributes["locked"] == "1") {
    tally.Add(element.line, "locked: a handheld cannot lock messages");
  }
  return message;
}

void Finish(const BackupElement& element, TextMessage& message, NoticeTally& tally) {
  const std::string_view json = element.attributes[kHandheldAttribute];
  if (json.empty()) return;
  TakeJson(json, message, [&](const std::string& problem) {
    tally.Add(element.line, std::string(kHandheldAttribute) + ": " + problem);
  });
}

// One address is that of the sender or of the recipient, several are those of the recipients.
void TakeAddresses(const BackupElement& element, const std::vector<std::string>& addresses,
                   TextMessage& message, NoticeTally& tally) {
  const NameBook names(element, addresses, tally);
  if (!message.flags.fromMe && !addresses.empty()) {
    message.from = names.Party(addresses.front());
    if (addresses.size() > 1) tally.Add(element.line, "address: which one sent it is not said");
    return;
  }
  for (const std::string& address : addresses) message.to.push_back(names.Party(address));
}

void NoteWhatSmsLoses(const BackupElement& element, NoticeTally& tally) {
  const BackupAttributes& attributes = element.attributes;
  if (!attributes["subject"].empty()) {
    tally.Add(element.line, "subject: a text message has no place for it");
  }
  if (!attributes["service_center"].empty()) {
    tally.Add(element.line, "service_center: the number of the service centre is not kept");
  }
  if (BackupNumber(attributes["status"]).value_or(-1) >= 0) {
    tally.Add(element.line, "status: delivery reports are not kept");
  }
  if (BackupNumber(attributes["date_sent"]).value_or(0) > 0) {
    tally.Add(element.line, "date_sent: only the time in \"date\" is kept");
  }
}

bool IsPlainText(std::string_view contentType) {
  return text::EqualsNoCase(contentType, "text/plain");
}

void AppendLine(std::string& text, std::string_view line) {
  if (line.empty()) return;
  if (!text.empty()) text += '\n';
  text += line;
}

std::string MmsText(const BackupElement& element, NoticeTally& tally) {
  std::string text;
  AppendLine(text, element.attributes["sub"]);
  for (const BackupAttributes& part : element.parts) {
    const std::string_view contentType = part["ct"];
    if (IsPlainText(contentType)) {
      AppendLine(text, part["text"]);
    } else if (!text::EqualsNoCase(contentType, "application/smil")) {
      tally.Add(element.line, "part: of a multimedia message only text is kept, not " +
                                  text::Excerpt(contentType));
    }
  }
  return text;
}

void TakeMmsAddresses(const BackupElement& element, TextMessage& message, NoticeTally& tally) {
  const std::vector<std::string> others = SplitAt(element.attributes["address"], "~");
  if (element.addresses.empty()) return TakeAddresses(element, others, message, tally);
  const NameBook names(element, others, tally);
  for (const BackupAttributes& address : element.addresses) {
    const std::string_view type = address["type"];
    const MessageParty party = names.Party(std::string(address["address"]));
    if (type == kFrom) {
      message.from = party;
    } else if (type == kTo || type == kCc || type == kBcc) {
      message.to.push_back(party);
      if (type != kTo) {
        tally.Add(element.line, "addr: those who got a copy are kept as recipients");
      }
    } else {
      tally.Add(element.line, "addr: not a known kind of address: " + text::Excerpt(type));
    }
  }
}

// The writer's side.

std::string Joined(const std::vector<MessageParty>& parties, std::string MessageParty::*member,
                   const char* separator, const char* none) {
  std::string text;
  for (const MessageParty& party : parties) {
    if (&party != &parties.front()) text += separator;
    text += (party.*member).empty() ? none : party.*member;
  }
  return text.empty() ? none : XmlCarries(text);
}

void AddWhenAndWho(BackupAttributes& attributes, const TextMessage& message) {
  attributes.Add("readable_date", ReadableDate(message.time));
  const std::vector<MessageParty> sender = {message.from};
  attributes.Add("contact_name", Joined(message.flags.fromMe ? message.to : sender,
                                        &MessageParty::name, ", ", "(Unknown)"));
}

std::string AddressText(const TextMessage& message) {
  const std::vector<MessageParty> sender = {message.from};
  return Joined(message.flags.fromMe ? message.to : sender, &MessageParty::address, "~", "null");
}

std::string TypeText(const TextMessage& message) {
  return std::to_string(static_cast<int>(TypeOf(message.folder, message.flags)));
}

BackupElement SmsElement(const TextMessage& message) {
  BackupElement element;
  BackupAttributes& to = element.attributes;
  to.Add("protocol", "0");
  to.Add("address", AddressText(message));
  to.Add("date", MillisecondsText(message.time));
  to.Add("type", TypeText(message));
  to.Add("subject", "null");
  to.Add("body", XmlCarries(message.text));
  to.Add("toa", "null");
  to.Add("sc_toa", "null");
  to.Add("service_center", "null");
  to.Add("read", message.flags.read ? "1" : "0");
  to.Add("status", "-1");
  to.Add("locked", "0");
  to.Add("date_sent", "0");
  AddWhenAndWho(to, message);
  return element;
}

BackupAttributes TextPart(const std::string& text) {
  BackupAttributes part;
  part.Add("seq", "0");
  part.Add("ct", "text/plain");
  part.Add("name", "null");
  part.Add("chset", "106");  // UTF-8
  part.Add("cd", "null");
  part.Add("fn", "null");
  part.Add("cid", "<text_0>");
  part.Add("cl", "text_0.txt");
  part.Add("ctt_s", "null");
  part.Add("ctt_t", "null");
  part.Add("text", XmlCarries(text));
  return part;
}

BackupAttributes Address(const std::string& address, std::string_view type) {
  BackupAttributes attributes;
  attributes.Add("address", address.empty() ? "insert-address-token" : XmlCarries(address));
  attributes.Add("type", type);
  attributes.Add("charset", "106");
  return attributes;
}

BackupElement MmsElement(const TextMessage& message) {
  BackupElement element;
  BackupAttributes& to = element.attributes;
  to.Add("date", MillisecondsText(message.time));
  to.Add("msg_box", TypeText(message));
  to.Add("address", AddressText(message));
  to.Add("m_type", message.flags.fromMe ? "128" : "132");
  to.Add("sub", "null");
  to.Add("ct_t", "application/vnd.wap.multipart.related");
  to.Add("text_only", "1");
  to.Add("read", message.flags.read ? "1" : "0");
  to.Add("locked", "0");
  to.Add("date_sent", "0");
  AddWhenAndWho(to, message);
  if (!message.text.empty()) element.parts.push_back(TextPart(message.text));
  element.addresses.push_back(Address(message.from.address, kFrom));
  for (const MessageParty& party : message.to) {
    element.addresses.push_back(Address(party.address, kTo));
  }
  return element;
}

}  // namespace

TextMessage SmsFromElement(const BackupElement& element, NoticeTally& tally) {
  TextMessage message = Begin(element, "type", tally);
  const std::string_view address = element.attributes["address"];
  std::vector<std::string> addresses;
  if (message.flags.fromMe) {
    addresses = SplitAt(address, "~");
  } else if (!address.empty() || !element.attributes["contact_name"].empty()) {
    addresses.emplace_back(address);
  }
  TakeAddresses(element, addresses, message, tally);
  message.text = element.attributes["body"];
  NoteWhatSmsLoses(element, tally);
  Finish(element, message, tally);
  return message;
}

TextMessage MmsFromElement(const BackupElement& element, NoticeTally& tally) {
  TextMessage message = Begin(element, "msg_box", tally);
  message.messageClass = MessageClass::kMms;
  TakeMmsAddresses(element, message, tally);
  message.text = MmsText(element, tally);
  Finish(element, message, tally);
  return message;
}

BackupElement ToElement(const TextMessage& message) {
  const bool mms = message.messageClass == MessageClass::kMms;
  BackupElement element = mms ? MmsElement(message) : SmsElement(message);
  NoticeTally unread;
  const TextMessage read = mms ? MmsFromElement(element, unread) : SmsFromElement(element, unread);
  const std::string rest = DifferenceAsJson(message, read);
  if (!rest.empty()) element.attributes.Add(kHandheldAttribute, rest);
  return element;
}

}  // namespace formats
