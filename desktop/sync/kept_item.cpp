#include "desktop/sync/kept_item.h"

#include <fmt/format.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <type_traits>

#include "desktop/wire/error.h"

namespace desktop {
namespace {

using nlohmann::json;
using std::chrono::year_month_day;

// Hands each member of an item to the visitor, with the name that it is kept under.
template <typename Type, typename Visitor>
void VisitMembers(Type& item, Visitor& visit);

json KeptValue(const std::string& text) {
  return text;
}

template <typename Type>
json KeptValue(const Type& value) {
  if constexpr (std::is_arithmetic_v<Type>) {
    return value;
  } else if constexpr (std::is_enum_v<Type>) {
    return static_cast<int>(value);
  } else if constexpr (std::is_same_v<Type, year_month_day>) {
    return {static_cast<int>(value.year()), static_cast<unsigned>(value.month()),
            static_cast<unsigned>(value.day())};
  } else if constexpr (requires { value.time_since_epoch(); }) {
    return value.time_since_epoch().count();
  } else if constexpr (requires { value.has_value(); }) {
    return value ? KeptValue(*value) : json();
  } else if constexpr (requires { value.size(); }) {
    json array = json::array();
    for (const auto& each : value) array.push_back(KeptValue(each));
    return array;
  } else {
    json object = json::object();
    const auto keep = [&](const char* name, const auto& member) {
      object[name] = KeptValue(member);
    };
    VisitMembers(value, keep);
    return object;
  }
}

void TakeKept(const json& kept, std::string& text) {
  kept.get_to(text);
}

template <typename Type>
void TakeKept(const json& kept, Type& value) {
  if constexpr (std::is_arithmetic_v<Type>) {
    kept.get_to(value);
  } else if constexpr (std::is_enum_v<Type>) {
    value = static_cast<Type>(kept.get<int>());
  } else if constexpr (std::is_same_v<Type, year_month_day>) {
    value = {std::chrono::year{kept.at(0).get<int>()},
             std::chrono::month{kept.at(1).get<unsigned>()},
             std::chrono::day{kept.at(2).get<unsigned>()}};
  } else if constexpr (requires { value.time_since_epoch(); }) {
    value = Type{typename Type::duration{kept.get<std::int64_t>()}};
  } else if constexpr (requires { value.has_value(); }) {
    if (!kept.is_null()) TakeKept(kept, value.emplace());
  } else if constexpr (requires { value.emplace_back(); }) {
    for (const json& each : kept) TakeKept(each, value.emplace_back());
  } else if constexpr (requires { value.size(); }) {
    for (std::size_t i = 0; i < value.size(); ++i) TakeKept(kept.at(i), value[i]);
  } else {
    const auto take = [&](const char* name, auto& member) { TakeKept(kept.at(name), member); };
    VisitMembers(value, take);
  }
}

template <typename Type, typename Visitor>
void VisitOccurrence(Type& occurrence, Visitor& visit) {
  visit("subject", occurrence.subject);
  visit("location", occurrence.location);
  visit("body", occurrence.body);
  visit("allDay", occurrence.allDay);
  visit("start", occurrence.start);
  visit("end", occurrence.end);
  visit("busy", occurrence.busyStatus);
}

template <typename Type, typename Visitor>
void VisitMembers(Type& item, Visitor& visit) {
  using Plain = std::remove_const_t<Type>;
  if constexpr (std::is_same_v<Plain, calendar::Pattern>) {
    visit("type", item.type);
    visit("interval", item.interval);
    visit("days", item.daysOfWeek);
    visit("day", item.dayOfMonth);
    visit("instance", item.instance);
    visit("month", item.monthOfYear);
    visit("occurrences", item.occurrences);
    visit("until", item.until);
  } else if constexpr (std::is_same_v<Plain, formats::Occurrence>) {
    VisitOccurrence(item, visit);
  } else if constexpr (std::is_same_v<Plain, formats::ChangedOccurrence>) {
    visit("original", item.original);
    visit("occurrence", item.occurrence);
  } else if constexpr (std::is_same_v<Plain, formats::Series>) {
    visit("pattern", item.pattern);
    visit("deleted", item.deleted);
    visit("changed", item.changed);
  } else if constexpr (std::is_same_v<Plain, formats::Contact>) {
    visit("uid", item.uid);
    visit("fields", item.fields);
    visit("categories", item.categories);
    visit("birthday", item.birthday);
    visit("anniversary", item.anniversary);
  } else if constexpr (std::is_same_v<Plain, formats::Appointment>) {
    VisitOccurrence(item, visit);
    visit("uid", item.uid);
    visit("categories", item.categories);
    visit("private", item.isPrivate);
    visit("reminder", item.reminderMinutes);
    visit("series", item.series);
  } else {
    static_assert(std::is_same_v<Plain, formats::Task>);
    visit("uid", item.uid);
    visit("subject", item.subject);
    visit("body", item.body);
    visit("categories", item.categories);
    visit("start", item.start);
    visit("due", item.due);
    visit("reminder", item.reminder);
    visit("private", item.isPrivate);
    visit("complete", item.complete);
    visit("completed", item.completed);
    visit("importance", item.importance);
    visit("pattern", item.pattern);
  }
}

template <typename Type>
Item TakeKeptItem(const json& kept) {
  Type item;
  TakeKept(kept, item);
  return item;
}

}  // namespace

// As CBOR, which takes text as it is.
std::string KeptItem(const Item& item) {
  const json kept = {item.index(),
                     std::visit([](const auto& each) { return KeptValue(each); }, item)};
  std::string bytes;
  json::to_cbor(kept, bytes);
  return bytes;
}

Item ItemFromKept(std::string_view bytes) {
  try {
    const json kept = json::from_cbor(bytes);
    switch (kept.at(0).get<int>()) {
      case 0:
        return TakeKeptItem<formats::Contact>(kept.at(1));
      case 1:
        return TakeKeptItem<formats::Appointment>(kept.at(1));
      case 2:
        return TakeKeptItem<formats::Task>(kept.at(1));
      default:
        throw Error("of no kind");
    }
  } catch (const std::exception& problem) {
    throw Error(fmt::format("an item that is remembered cannot be understood: {}", problem.what()));
  }
}

}  // namespace desktop
