// The telephone's library for the time of one use, and what it hands out.
#pragma once

#include <utility>

#include "platform/memory.h"
#include "platform/modules.h"
#include "platform/phone.h"

namespace corvane {

class PhoneLibrary {
 public:
  PhoneLibrary() = default;
  PhoneLibrary(const PhoneLibrary&) = delete;
  PhoneLibrary& operator=(const PhoneLibrary&) = delete;
  // Frees the library.
  ~PhoneLibrary();

  // E_NOTIMPL when the handheld has no telephone, or its library lacks one of the functions. The
  // others may be called once this has succeeded.
  [[nodiscard]] ce::HRESULT Load();

  ce::PhoneOpenCallLogFn open = nullptr;
  ce::PhoneCloseCallLogFn close = nullptr;
  ce::PhoneSeekCallLogFn seek = nullptr;
  ce::PhoneGetCallLogEntryFn read = nullptr;

 private:
  ce::HMODULE module_ = nullptr;
};

// An open call log, closed before its library goes.
class CallLog {
 public:
  explicit CallLog(const PhoneLibrary& phone) : phone_(phone) {}
  CallLog(const CallLog&) = delete;
  CallLog& operator=(const CallLog&) = delete;
  ~CallLog();

  // Stands at the first entry afterwards.
  [[nodiscard]] ce::HRESULT Open();
  // S_FALSE behind the last.
  [[nodiscard]] ce::HRESULT Read(ce::CALLLOGENTRY* entry) const;

 private:
  const PhoneLibrary& phone_;
  ce::HANDLE log_ = 0;
};

// A cleared record, whose strings are freed with it.
class CallEntry {
 public:
  CallEntry() { entry_.cbSize = sizeof(entry_); }
  CallEntry(const CallEntry&) = delete;
  CallEntry& operator=(const CallEntry&) = delete;
  ~CallEntry() {
    for (ce::WCHAR* text : {entry_.pszNumber, entry_.pszName, entry_.pszNameType, entry_.pszNote}) {
      if (text) ce::LocalFree(text);
    }
  }
  ce::CALLLOGENTRY* get() { return &entry_; }

 private:
  ce::CALLLOGENTRY entry_;
};

}  // namespace corvane
