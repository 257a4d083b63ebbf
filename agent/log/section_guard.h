// Holds a critical section for a scope.
#pragma once

#include "platform/threads.h"

namespace corvane {

class SectionGuard {
 public:
  explicit SectionGuard(ce::CRITICAL_SECTION* section) : section_(section) {
    ce::EnterCriticalSection(section_);
  }
  SectionGuard(const SectionGuard&) = delete;
  SectionGuard& operator=(const SectionGuard&) = delete;
  ~SectionGuard() { ce::LeaveCriticalSection(section_); }

 private:
  ce::CRITICAL_SECTION* section_;
};

}  // namespace corvane
