#include "common/formats/json/message_json_values.h"

#include <fmt/format.h>

#include <charconv>
#include <limits>
#include <utility>

#include "common/formats/items/call.h"
#include "common/text/text.h"

namespace formats {
namespace {

struct FlagWord {
  const char* word;
  bool MessageFlags::*flag;
};
constexpr FlagWord kFlagWords[] = {
    {"read", &MessageFlags::read},
    {"unmodified", &MessageFlags::unmodified},
    {"submitted", &MessageFlags::submitted},
    {"unsent", &MessageFlags::unsent},
    {"attachment", &MessageFlags::hasAttachment},
    {"from-me", &MessageFlags::fromMe},
};

constexpr const char* kCallerIdWords[] = {"unavailable", "blocked", "available"};

bool TakeWord(const std::string& word, MessageFlags& flags) {
  for (const FlagWord& row : kFlagWords) {
    if (!text::EqualsNoCase(word, row.word)) continue;
    flags.*row.flag = true;
    return true;
  }
  if (!text::StartsWithNoCase(word, "0x")) return false;
  std::uint32_t bits = 0;
  const char* const end = word.data() + word.size();
  const auto read = std::from_chars(word.data() + 2, end, bits, 16);
  if (read.ec != std::errc() || read.ptr != end) return false;
  flags = FromFlags(static_cast<std::int32_t>(bits | static_cast<std::uint32_t>(ToFlags(flags))));
  return true;
}

// Flags come as signed and as unsigned numbers, too.
bool TakeNumber(const Json& json, std::int32_t& number) {
  if (!json.is_number_integer()) return false;
  if (json.is_number_unsigned()) {
    const auto value = json.get<std::uint64_t>();
    if (value > std::numeric_limits<std::uint32_t>::max()) return false;
    number = static_cast<std::int32_t>(static_cast<std::uint32_t>(value));
    return true;
  }
  const auto value = json.get<std::int64_t>();
  if (value < std::numeric_limits<std::int32_t>::min()) return false;
  number = static_cast<std::int32_t>(value);
  return true;
}

}  // namespace

Json JsonOf(const std::string& text) {
  return text;
}

Json JsonOf(bool truth) {
  return truth;
}

Json JsonOf(const std::optional<MessageTime>& time) {
  if (!time || !IsKeepableTime(*time)) return nullptr;
  return FormatMessageTime(*time);
}

Json JsonOf(const MessageFlags& flags) {
  Json words = Json::array();
  for (const FlagWord& row : kFlagWords) {
    if (flags.*row.flag) words.push_back(row.word);
  }
  if (flags.others != 0) words.push_back(fmt::format("{:#x}", flags.others));
  return words;
}

Json JsonOf(MessageClass messageClass) {
  return messageClass == MessageClass::kMms ? "mms" : "sms";
}

Json JsonOf(const MessageParty& party) {
  Json object = Json::object();
  if (!party.address.empty()) object["address"] = party.address;
  if (!party.name.empty()) object["name"] = party.name;
  return object;
}

Json JsonOf(const std::vector<MessageParty>& parties) {
  Json array = Json::array();
  for (const MessageParty& party : parties) array.push_back(JsonOf(party));
  return array;
}

Json CallerIdJson(std::int32_t callerId) {
  if (callerId < 0 || callerId >= static_cast<std::int32_t>(std::size(kCallerIdWords))) {
    return callerId;
  }
  return kCallerIdWords[callerId];
}

bool TakeValue(const Json& json, std::string& text) {
  if (!json.is_string()) return false;
  text = json.get<std::string>();
  return true;
}

bool TakeValue(const Json& json, bool& truth) {
  if (!json.is_boolean()) return false;
  truth = json.get<bool>();
  return true;
}

bool TakeValue(const Json& json, std::optional<MessageTime>& time) {
  if (json.is_null()) {
    time.reset();
    return true;
  }
  if (!json.is_string()) return false;
  const std::optional<MessageTime> parsed = ParseMessageTime(json.get_ref<const std::string&>());
  if (!parsed) return false;
  time = parsed;
  return true;
}

bool TakeValue(const Json& json, MessageFlags& flags) {
  std::int32_t number = 0;
  if (TakeNumber(json, number)) {
    flags = FromFlags(number);
    return true;
  }
  if (!json.is_array()) return false;
  MessageFlags read;
  for (const Json& word : json) {
    if (!word.is_string() || !TakeWord(word.get_ref<const std::string&>(), read)) return false;
  }
  flags = read;
  return true;
}

bool TakeValue(const Json& json, MessageClass& messageClass) {
  if (!json.is_string()) return false;
  const auto& word = json.get_ref<const std::string&>();
  const bool mms = text::EqualsNoCase(word, "mms");
  if (!mms && !text::EqualsNoCase(word, "sms")) return false;
  messageClass = mms ? MessageClass::kMms : MessageClass::kSms;
  return true;
}

bool TakeValue(const Json& json, MessageParty& party) {
  MessageParty read;
  if (json.is_string()) {
    read.address = json.get<std::string>();
  } else if (json.is_object()) {
    if (json.contains("address") && !TakeValue(json["address"], read.address)) return false;
    if (json.contains("name") && !TakeValue(json["name"], read.name)) return false;
  } else {
    return false;
  }
  party = std::move(read);
  return true;
}

bool TakeValue(const Json& json, std::vector<MessageParty>& parties) {
  if (!json.is_array()) return false;
  std::vector<MessageParty> read(json.size());
  for (std::size_t i = 0; i < json.size(); ++i) {
    if (!TakeValue(json[i], read[i])) return false;
  }
  parties = std::move(read);
  return true;
}

bool TakeCallerId(const Json& json, std::int32_t& callerId) {
  if (TakeNumber(json, callerId)) return true;
  if (!json.is_string()) return false;
  const auto& word = json.get_ref<const std::string&>();
  for (std::size_t i = 0; i < std::size(kCallerIdWords); ++i) {
    if (!text::EqualsNoCase(word, kCallerIdWords[i])) continue;
    callerId = static_cast<std::int32_t>(i);
    return true;
  }
  return false;
}

}  // namespace formats
