// The fields of messages and calls as the members of a JSON object.
#pragma once

#include <nlohmann/json.hpp>

#include <functional>
#include <string>
#include <string_view>

#include "common/formats/items/call.h"
#include "common/formats/items/message.h"

namespace formats {

using ProblemSink = std::function<void(const std::string& problem)>;

// Those that are to be written.
nlohmann::ordered_json ToJsonObject(const TextMessage& message);
nlohmann::ordered_json ToJsonObject(const Call& call);
std::string OnOneLine(const nlohmann::ordered_json& object);

// The fields in which `item` is not as `other`, also those that are empty, on one line of
// ASCII; an empty text when there are none.
std::string DifferenceAsJson(const TextMessage& item, const TextMessage& other);
std::string DifferenceAsJson(const Call& item, const Call& other);

// Sets the fields that the object has; false when it has none. What cannot be used stays as it was
// and is a problem.
bool TakeFields(const nlohmann::ordered_json& object, TextMessage& message,
                const ProblemSink& problem);
bool TakeFields(const nlohmann::ordered_json& object, Call& call, const ProblemSink& problem);

// Discarded for a text that is no JSON. What is nested more deeply than any item is left out of it.
nlohmann::ordered_json ParseJson(std::string_view text);

// From its text; any but an object is a problem.
template <typename Item>
void TakeJson(std::string_view text, Item& item, const ProblemSink& problem) {
  const nlohmann::ordered_json object = ParseJson(text);
  if (object.is_object()) {
    TakeFields(object, item, problem);
  } else {
    problem("it is not a JSON object");
  }
}

// Whether only a call has such a field.
bool IsCallFieldAlone(std::string_view name);

}  // namespace formats
