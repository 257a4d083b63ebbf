// What a logged-on application, its folders, collections and items share.
#pragma once

#include <memory>
#include <string>
#include <utility>

#include "platform/host/handheld.h"
#include "platform/host/outlook/store.h"

namespace ce::host {

// More of the handheld's own settings.
namespace setting {
inline constexpr char16_t kMaxSubject[] = u"MaxSubject";            // DWORD, characters (4095)
inline constexpr char16_t kMaxCalendarText[] = u"MaxCalendarText";  // DWORD, characters (1023)
inline constexpr char16_t kReminderSet[] = u"ReminderSet";          // DWORD, 0: not set (1)
inline constexpr char16_t kReminderMinutes[] = u"ReminderMinutes";  // DWORD (15)
}  // namespace setting

// The handheld's settings that items obey, as they were at Logon.
struct ItemLimits {
  std::size_t text = 1023;          // characters, of a contact's texts
  std::size_t subject = 4095;       // characters
  std::size_t calendarText = 1023;  // characters, of other texts of appointments and tasks
  std::size_t body = 60 * 1024;     // bytes of UTF-16
  bool yomiFields = true;
  bool reminderSet = true;  // of a new appointment
  LONG reminderMinutes = 15;
};
ItemLimits ReadItemLimits(const Handheld& handheld);

// Lives from Logon as long as anything of it is held; without a store after Logoff.
class Session {
 public:
  Session(std::unique_ptr<Store> store, const ItemLimits& limits)
      : store_(std::move(store)), limits_(limits) {}

  // Null after Logoff.
  Store* store() const { return store_.get(); }
  const ItemLimits& limits() const { return limits_; }

  // Commits what is pending, reports how that went, and closes the store in any case.
  HRESULT Close();

 private:
  std::unique_ptr<Store> store_;
  const ItemLimits limits_;
};

using SessionPtr = std::shared_ptr<Session>;

}  // namespace ce::host
