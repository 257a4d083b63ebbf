#include "common/formats/json/message_json_fields.h"

#include <algorithm>

#include "common/formats/json/message_json_values.h"
#include "common/text/text.h"

namespace formats {
namespace {

template <typename Item>
struct Field {
  const char* name;
  bool always;  // written also when it is as in a new item
  bool (*same)(const Item& a, const Item& b);
  Json (*json)(const Item& item);
  bool (*take)(const Json& json, Item& item);
};

template <typename Item, auto member>
constexpr Field<Item> FieldOf(const char* name, bool always = false) {
  return {name, always, [](const Item& a, const Item& b) { return a.*member == b.*member; },
          [](const Item& item) { return JsonOf(item.*member); },
          [](const Json& json, Item& item) { return TakeValue(json, item.*member); }};
}

constexpr Field<TextMessage> kMessageFields[] = {
    FieldOf<TextMessage, &TextMessage::folder>("folder", true),
    FieldOf<TextMessage, &TextMessage::messageClass>("class", true),
    FieldOf<TextMessage, &TextMessage::time>("time"),
    FieldOf<TextMessage, &TextMessage::flags>("flags"),
    FieldOf<TextMessage, &TextMessage::from>("from"),
    FieldOf<TextMessage, &TextMessage::to>("to"),
    FieldOf<TextMessage, &TextMessage::text>("text"),
};

constexpr Field<Call> kCallFields[] = {
    FieldOf<Call, &Call::number>("number"),
    FieldOf<Call, &Call::name>("name"),
    FieldOf<Call, &Call::numberType>("type"),
    FieldOf<Call, &Call::start>("start"),
    FieldOf<Call, &Call::end>("end"),
    FieldOf<Call, &Call::outgoing>("outgoing", true),
    FieldOf<Call, &Call::connected>("connected", true),
    FieldOf<Call, &Call::missed>("missed", true),
    FieldOf<Call, &Call::roaming>("roaming", true),
    FieldOf<Call, &Call::ended>("ended", true),
    {"callerId", true, [](const Call& a, const Call& b) { return a.callerId == b.callerId; },
     [](const Call& call) { return CallerIdJson(call.callerId); },
     [](const Json& json, Call& call) { return TakeCallerId(json, call.callerId); }},
    FieldOf<Call, &Call::note>("note"),
};

template <typename Item, std::size_t count>
Json Written(const Item& item, const Field<Item> (&fields)[count]) {
  const Item none;
  Json object = Json::object();
  for (const Field<Item>& field : fields) {
    if (field.always || !field.same(item, none)) object[field.name] = field.json(item);
  }
  return object;
}

template <typename Item, std::size_t count>
std::string Difference(const Item& item, const Item& other, const Field<Item> (&fields)[count]) {
  Json object = Json::object();
  for (const Field<Item>& field : fields) {
    if (!field.same(item, other)) object[field.name] = field.json(item);
  }
  // In ASCII: it stands in documents that cannot carry every character.
  return object.empty() ? std::string()
                        : object.dump(-1, ' ', true, Json::error_handler_t::replace);
}

template <typename Item, std::size_t count>
bool Take(const Json& object, Item& item, const Field<Item> (&fields)[count],
          const ProblemSink& problem) {
  bool any = false;
  for (const auto& [name, value] : object.items()) {
    const std::string_view key = name;
    if (key == "oid") continue;
    const auto* const field =
        std::find_if(fields, fields + count, [&](const auto& f) { return f.name == key; });
    if (field == fields + count) {
      problem(text::Excerpt(key) + ": not a known name");
      continue;
    }
    any = true;
    if (!field->take(value, item)) {
      problem(std::string(key) + ": this value does not fit: " + text::Excerpt(OnOneLine(value)));
    }
  }
  return any;
}

}  // namespace

Json ToJsonObject(const TextMessage& message) {
  return Written(message, kMessageFields);
}

Json ToJsonObject(const Call& call) {
  return Written(call, kCallFields);
}

// Writing is recursive, so that the depth must have a bound.
Json ParseJson(std::string_view text) {
  constexpr int kDeepest = 8;
  const auto keep = [](int depth, Json::parse_event_t, Json&) { return depth <= kDeepest; };
  return Json::parse(text, keep, false);
}

std::string OnOneLine(const Json& object) {
  return object.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string DifferenceAsJson(const TextMessage& item, const TextMessage& other) {
  return Difference(item, other, kMessageFields);
}

std::string DifferenceAsJson(const Call& item, const Call& other) {
  return Difference(item, other, kCallFields);
}

bool TakeFields(const Json& object, TextMessage& message, const ProblemSink& problem) {
  return Take(object, message, kMessageFields, problem);
}

bool TakeFields(const Json& object, Call& call, const ProblemSink& problem) {
  return Take(object, call, kCallFields, problem);
}

bool IsCallFieldAlone(std::string_view name) {
  return std::ranges::any_of(kCallFields, [&](const auto& field) { return field.name == name; });
}

}  // namespace formats
