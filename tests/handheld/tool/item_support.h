// Records stored as items of a handheld and read back.
#pragma once

#include <ostream>

#include "common/formats/items/item_json.h"
#include "tests/handheld/tool/maintenance_support.h"

namespace formats {

// What a failed comparison shows.
inline void PrintTo(const Appointment& appointment, std::ostream* stream) {
  *stream << AppointmentToJson(appointment, 0);
}
inline void PrintTo(const Task& task, std::ostream* stream) {
  *stream << TaskToJson(task, 0);
}

}  // namespace formats

namespace tool::testing {

inline formats::local_days Day(int year, unsigned month, unsigned day) {
  return formats::local_days{std::chrono::year{year} / std::chrono::month{month} /
                             std::chrono::day{day}};
}
inline formats::local_seconds At(formats::local_days day, int hour, int minute = 0) {
  return day + std::chrono::hours{hour} + std::chrono::minutes{minute};
}

// Stores the record as the item; what was not kept.
template <typename Record>
NotKept StoreIn(const Record& record, ItemOf<Record>& item) {
  NotKept notKept = WriteItem(record, item);
  EXPECT_EQ(item.Save(), ce::S_OK);
  return notKept;
}
inline NotKept StoreIn(const formats::Appointment& record, ce::IAppointment& item) {
  NotKept notKept = WriteItem(record, item);
  EXPECT_EQ(item.Save(), ce::S_OK);
  for (std::string& line : WriteExceptions(record, item)) notKept.push_back(std::move(line));
  return notKept;
}

// The stored item of that kind; there is exactly one.
template <typename Record>
Record OnlyRecord(Session& session) {
  std::vector<Record> records;
  ForEachRecord<Record>(session,
                        [&](std::int64_t, const Record& record) { records.push_back(record); });
  EXPECT_EQ(records.size(), 1u);
  return records.empty() ? Record{} : records.front();
}

// A handheld in use.
class ItemTest : public MaintenanceTest {
 protected:
  explicit ItemTest(const InitOptions& options = {}) {
    Init(options);
    session_.emplace(HandheldPath());
  }

  template <typename Record>
  ce::ComPtr<ItemOf<Record>> New() {
    return NewItemOf<Record>(*session_);
  }
  // Stores the record as a new item and reads it back from the store.
  template <typename Record>
  Record StoreAndRead(const Record& record) {
    notKept_ = StoreIn(record, *New<Record>().get());
    return OnlyRecord<Record>(*session_);
  }

  std::optional<Session> session_;
  NotKept notKept_;  // of what was stored last
};

}  // namespace tool::testing
