#include "common/formats/json/message_identity.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "common/formats/json/identity.h"
#include "common/formats/json/message_json.h"
#include "common/text/text.h"

namespace formats {
namespace {

// Each part with its length in front, so that nothing runs into what follows.
class Key {
 public:
  explicit Key(std::string_view kind) { Add(kind); }
  void Add(std::string_view part) {
    bytes_ += std::to_string(part.size());
    bytes_ += ':';
    bytes_ += part;
  }
  void Add(const std::optional<MessageTime>& time) {
    if (time) {
      const auto seconds = std::chrono::floor<std::chrono::seconds>(*time);
      Add(std::to_string(seconds.time_since_epoch().count()));
    } else {
      Add("none");
    }
  }
  std::string Hash() const { return ContentHash(std::string_view(bytes_)); }

 private:
  std::string bytes_;
};

// "+49 (171) 55-01" and "+491715501" are one. A word or an e-mail address stays as it is.
std::string BareNumber(const std::string& address) {
  constexpr std::string_view kNumberSigns = "0123456789+*# ()-./";
  if (address.find_first_not_of(kNumberSigns) != std::string::npos) return address;
  std::string bare;
  for (const char c : address) {
    if (std::string_view(" ()-./").find(c) == std::string_view::npos) bare += c;
  }
  return bare;
}

}  // namespace

std::string ContentHash(const TextMessage& message) {
  TextMessage plain = message;
  plain.text = NormalizeLineBreaks(std::move(plain.text));
  return ContentHash(std::string_view(MessageToJson(plain)));
}

std::string ContentHash(const Call& call) {
  Call plain = call;
  plain.note = NormalizeLineBreaks(std::move(plain.note));
  return ContentHash(std::string_view(CallToJson(plain)));
}

std::string IdentityOf(const TextMessage& message) {
  Key key(message.messageClass == MessageClass::kMms ? "mms" : "sms");
  key.Add(message.time);
  key.Add(NormalizeLineBreaks(message.text));
  if (message.flags.fromMe) {
    std::vector<std::string> numbers;
    for (const MessageParty& party : message.to) numbers.push_back(BareNumber(party.address));
    std::sort(numbers.begin(), numbers.end());
    key.Add("to");
    for (const std::string& number : numbers) key.Add(number);
  } else {
    key.Add("from");
    key.Add(BareNumber(message.from.address));
  }
  return key.Hash();
}

std::string IdentityOf(const Call& call) {
  Key key("call");
  key.Add(call.start);
  key.Add(call.outgoing ? "to" : "from");
  key.Add(BareNumber(call.number));
  return key.Hash();
}

}  // namespace formats
