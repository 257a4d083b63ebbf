#include "desktop/sync/kept_item.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "desktop/wire/error.h"

namespace desktop {
namespace {

using std::chrono::year_month_day;

[[noreturn]] void RefuseKept() {
  throw Error("an item that is remembered cannot be understood");
}

// Hands the members of an item to the visitor, in the order in which they are kept.
template <typename Type, typename Visitor>
void VisitMembers(Type& item, Visitor& visit);

// Numbers in groups of seven bits, the lowest first and the sign in front of it; texts and lists
// behind their length.
class KeptWriter {
 public:
  explicit KeptWriter(std::string& bytes) : bytes_(bytes) {}

  template <typename... Values>
  void operator()(const Values&... values) {
    (Put(values), ...);
  }

 private:
  void PutNumber(std::int64_t number) {
    auto left =
        (static_cast<std::uint64_t>(number) << 1) ^ static_cast<std::uint64_t>(number >> 63);
    for (; left >= 0x80; left >>= 7) bytes_ += static_cast<char>(0x80 | (left & 0x7F));
    bytes_ += static_cast<char>(left);
  }

  void Put(const std::string& text) {
    PutNumber(static_cast<std::int64_t>(text.size()));
    bytes_ += text;
  }

  template <typename Type>
  void Put(const Type& value) {
    if constexpr (std::is_arithmetic_v<Type> || std::is_enum_v<Type>) {
      PutNumber(static_cast<std::int64_t>(value));
    } else if constexpr (std::is_same_v<Type, year_month_day>) {
      PutNumber(static_cast<int>(value.year()));
      PutNumber(static_cast<unsigned>(value.month()));
      PutNumber(static_cast<unsigned>(value.day()));
    } else if constexpr (requires { value.time_since_epoch(); }) {
      PutNumber(value.time_since_epoch().count());
    } else if constexpr (requires { value.has_value(); }) {
      PutNumber(value ? 1 : 0);
      if (value) Put(*value);
    } else if constexpr (requires { value.size(); }) {
      PutNumber(static_cast<std::int64_t>(value.size()));
      for (const auto& each : value) Put(each);
    } else {
      VisitMembers(value, *this);
    }
  }

  std::string& bytes_;
};

class KeptReader {
 public:
  explicit KeptReader(std::string_view bytes) : left_(bytes) {}

  template <typename... Values>
  void operator()(Values&... values) {
    (Take(values), ...);
  }

  [[nodiscard]] bool atEnd() const { return left_.empty(); }

 private:
  std::int64_t Number() {
    std::uint64_t value = 0;
    for (unsigned shift = 0; shift < 64 && !left_.empty(); shift += 7) {
      const auto byte = static_cast<unsigned char>(left_.front());
      left_.remove_prefix(1);
      value |= std::uint64_t{byte & 0x7FU} << shift;
      if (byte >= 0x80) continue;
      const std::uint64_t sign = (value & 1) != 0 ? ~std::uint64_t{0} : 0;
      return static_cast<std::int64_t>((value >> 1) ^ sign);
    }
    RefuseKept();
  }

  // Of what takes a byte each, at the least.
  std::size_t Length() {
    const std::int64_t length = Number();
    if (length < 0 || static_cast<std::uint64_t>(length) > left_.size()) RefuseKept();
    return static_cast<std::size_t>(length);
  }

  void Take(std::string& text) {
    const std::size_t length = Length();
    text = left_.substr(0, length);
    left_.remove_prefix(length);
  }

  template <typename Type>
  void Take(Type& value) {
    if constexpr (std::is_arithmetic_v<Type> || std::is_enum_v<Type>) {
      value = static_cast<Type>(Number());
    } else if constexpr (std::is_same_v<Type, year_month_day>) {
      const std::chrono::year year{static_cast<int>(Number())};
      const std::chrono::month month{static_cast<unsigned>(Number())};
      value = {year, month, std::chrono::day{static_cast<unsigned>(Number())}};
    } else if constexpr (requires { value.time_since_epoch(); }) {
      value = Type{typename Type::duration{static_cast<typename Type::rep>(Number())}};
    } else if constexpr (requires { value.has_value(); }) {
      if (Number() != 0) Take(value.emplace());
    } else if constexpr (requires { value.emplace_back(); }) {
      for (std::size_t left = Length(); left > 0; --left) Take(value.emplace_back());
    } else if constexpr (requires { value.size(); }) {
      if (Length() != value.size()) RefuseKept();
      for (auto& each : value) Take(each);
    } else {
      VisitMembers(value, *this);
    }
  }

  std::string_view left_;
};

template <typename Type, typename Visitor>
void VisitOccurrence(Type& occurrence, Visitor& visit) {
  visit(occurrence.subject, occurrence.location, occurrence.body, occurrence.allDay,
        occurrence.start, occurrence.end, occurrence.busyStatus);
}

template <typename Type, typename Visitor>
void VisitMembers(Type& item, Visitor& visit) {
  using Plain = std::remove_const_t<Type>;
  if constexpr (std::is_same_v<Plain, calendar::Pattern>) {
    visit(item.type, item.interval, item.daysOfWeek, item.dayOfMonth, item.instance,
          item.monthOfYear, item.occurrences, item.until);
  } else if constexpr (std::is_same_v<Plain, formats::Occurrence>) {
    VisitOccurrence(item, visit);
  } else if constexpr (std::is_same_v<Plain, formats::ChangedOccurrence>) {
    visit(item.original, item.occurrence);
  } else if constexpr (std::is_same_v<Plain, formats::Series>) {
    visit(item.pattern, item.deleted, item.changed);
  } else if constexpr (std::is_same_v<Plain, formats::Contact>) {
    visit(item.uid, item.fields, item.categories, item.birthday, item.anniversary);
  } else if constexpr (std::is_same_v<Plain, formats::Appointment>) {
    VisitOccurrence(item, visit);
    visit(item.uid, item.categories, item.isPrivate, item.reminderMinutes, item.series);
  } else {
    static_assert(std::is_same_v<Plain, formats::Task>);
    visit(item.uid, item.subject, item.body, item.categories, item.start, item.due, item.reminder,
          item.isPrivate, item.complete, item.completed, item.importance, item.pattern);
  }
}

template <typename Type>
void TakeKept(KeptReader& reader, Item& item) {
  reader(item.emplace<Type>());
}

}  // namespace

std::string KeptItem(const Item& item) {
  std::string bytes;
  KeptWriter writer(bytes);
  writer(KindOf(item));
  std::visit(writer, item);
  return bytes;
}

Item ItemFromKept(std::string_view bytes) {
  KeptReader reader(bytes);
  ItemKind kind{};
  reader(kind);
  Item item;
  switch (kind) {
    case ItemKind::kContact:
      TakeKept<formats::Contact>(reader, item);
      break;
    case ItemKind::kAppointment:
      TakeKept<formats::Appointment>(reader, item);
      break;
    case ItemKind::kTask:
      TakeKept<formats::Task>(reader, item);
      break;
    default:
      RefuseKept();
  }
  if (!reader.atEnd()) RefuseKept();
  return item;
}

}  // namespace desktop
