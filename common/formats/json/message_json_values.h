// The kinds of value that the fields of messages and calls have, as JSON.
#pragma once

#include <nlohmann/json.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "common/formats/items/message.h"

namespace formats {

using Json = nlohmann::ordered_json;

Json JsonOf(const std::string& text);
Json JsonOf(bool truth);
Json JsonOf(const std::optional<MessageTime>& time);  // null for none
Json JsonOf(const MessageFlags& flags);
Json JsonOf(MessageClass messageClass);
Json JsonOf(const MessageParty& party);
Json JsonOf(const std::vector<MessageParty>& parties);
Json CallerIdJson(std::int32_t callerId);

// False, and the value as it was, for JSON that does not fit.
bool TakeValue(const Json& json, std::string& text);
bool TakeValue(const Json& json, bool& truth);
bool TakeValue(const Json& json, std::optional<MessageTime>& time);
bool TakeValue(const Json& json, MessageFlags& flags);
bool TakeValue(const Json& json, MessageClass& messageClass);
bool TakeValue(const Json& json, MessageParty& party);
bool TakeValue(const Json& json, std::vector<MessageParty>& parties);
bool TakeCallerId(const Json& json, std::int32_t& callerId);

}  // namespace formats
