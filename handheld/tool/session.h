// A handheld in use by corvane-device: locked, the process's current one, logged on to.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <utility>

#include "common/calendar/zone.h"
#include "handheld/directory/handheld.h"
#include "handheld/store/call_log.h"
#include "handheld/store/message_stores.h"
#include "platform/com_ptr.h"
#include "platform/pocket_outlook.h"

namespace tool {

// What a command does with a handheld. To look at one is possible while its agent serves.
enum class Use { kChange, kLook };

class Session {
 public:
  // Throws ce::host::HandheldError.
  explicit Session(const std::filesystem::path& directory, Use use = Use::kChange);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  ce::host::Handheld& handheld() { return *handheld_; }
  // Logs on at the first use. Throws ce::host::HandheldError, which says what is wrong with the
  // store.
  ce::ComPtr<ce::IPOutlookApp> Outlook();
  // Of a default folder (olFolder...). Throws StatusError as well.
  ce::ComPtr<ce::IPOutlookItemCollection> Items(ce::INT folder);
  // Opened at the first use. Throw ce::host::HandheldError, as above.
  ce::host::MessageStores& Messages();
  ce::host::CallLog& Calls();
  // From here on the walks of records.h visit these alone.
  void Choose(std::set<std::int64_t> numbers) { chosen_ = std::move(numbers); }
  const std::optional<std::set<std::int64_t>>& chosen() const { return chosen_; }
  // Throws ce::host::HandheldError when the zone database lacks the handheld's zone.
  calendar::Zone Zone() const;

 private:
  std::unique_ptr<ce::host::Handheld> handheld_;
  ce::ComPtr<ce::IPOutlookApp> outlook_;
  std::unique_ptr<ce::host::MessageStores> messages_;
  std::unique_ptr<ce::host::CallLog> calls_;
  std::optional<std::set<std::int64_t>> chosen_;
};

}  // namespace tool
