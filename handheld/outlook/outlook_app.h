// The application object's way in for the handheld's own tools.
#pragma once

#include "handheld/outlook/session.h"
#include "platform/pocket_outlook.h"

namespace ce::host {

struct IHostOutlookApp : IPOutlookTransactions {
  static constexpr GUID kIid{
      0x05F6F1F0, 0x6C4D, 0x4C1B, {0x9A, 0x2D, 0x1E, 0x1F, 0x6B, 0x84, 0x53, 0x11}};
  // Null when not logged on.
  virtual SessionPtr HostSession() = 0;

 protected:
  ~IHostOutlookApp() = default;
};

// The open session of an application object that CreateOutlookApp made; E_FAIL and null when it is
// not logged on.
[[nodiscard]] HRESULT SessionOf(IPOutlookApp* app, SessionPtr& session);

// Many saves in few transactions, for tools that fill a store. From Begin to its end, everything
// that is saved, deleted or remembered through the application object joins a transaction that is
// committed after `writesPerCommit` writes and by Commit. Success of a single Save then means
// "accepted": it is on the disk when its commit has succeeded. After a failed commit nothing since
// the last good one is stored, and items saved in between are to be thrown away. What is pending
// when the batch goes is undone.
//
// One batch for an application object at a time, on its thread; it must be logged on.
class StoreBatch {
 public:
  static constexpr int kWritesPerCommit = 1000;

  explicit StoreBatch(int writesPerCommit = kWritesPerCommit) : group_(writesPerCommit) {}
  ~StoreBatch();
  StoreBatch(const StoreBatch&) = delete;
  StoreBatch& operator=(const StoreBatch&) = delete;

  // E_FAIL when the application is not logged on.
  [[nodiscard]] HRESULT Begin(IPOutlookApp* app);
  // E_FAIL before Begin, and when the application has logged off since.
  [[nodiscard]] HRESULT Commit();

 private:
  SessionPtr session_;
  WriteGroup group_;
};

}  // namespace ce::host
