#include "platform/threads.h"

#include <gtest/gtest.h>

#include <array>
#include <latch>
#include <set>
#include <stdexcept>
#include <thread>
#include <vector>

#include "handheld/base/fault.h"
#include "handheld/system/threads.h"
#include "platform/files.h"
#include "platform/status.h"

namespace ce {
namespace {

using host::FaultPlan;
using host::WaitForRequestThreads;

struct Report {
  DWORD id = 0;
  DWORD lastError = 99;
};

DWORD WriteReport(void* parameter) {
  auto* report = static_cast<Report*>(parameter);
  report->id = GetCurrentThreadId();
  report->lastError = GetLastError();
  return 0;
}

TEST(CreateThread, RunsTheRoutineOnAThreadOfItsOwn) {
  SetLastError(5);
  Report report;
  DWORD id = 0;
  EXPECT_NE(CreateThread(nullptr, 0, WriteReport, &report, 0, &id), HANDLE{0});
  WaitForRequestThreads();
  EXPECT_EQ(report.id, id);
  EXPECT_NE(id, GetCurrentThreadId());
  EXPECT_EQ(report.lastError, ERROR_SUCCESS) << "the last error is each thread's own";
  EXPECT_EQ(GetLastError(), 5u);
}

TEST(CreateThread, GivesEachThreadAnIdThatIsNot0) {
  std::array<Report, 20> reports;
  for (Report& report : reports) CreateThread(nullptr, 0, WriteReport, &report, 0, nullptr);
  WaitForRequestThreads();
  std::set<DWORD> ids{GetCurrentThreadId()};
  for (const Report& report : reports) ids.insert(report.id);
  EXPECT_EQ(ids.size(), 21u);
  EXPECT_FALSE(ids.contains(0));
}

TEST(CreateThread, GivesAHandleThatCanBeClosed) {
  std::latch go(1);
  const HANDLE thread = CreateThread(
      nullptr, 0,
      [](void* latch) -> DWORD {
        static_cast<std::latch*>(latch)->wait();
        return 0;
      },
      &go, 0, nullptr);
  EXPECT_TRUE(CloseHandle(thread));
  go.count_down();
  WaitForRequestThreads();
}

TEST(CreateThread, ClosesTheHandleOfAThreadThatIsOver) {
  Report report;
  const HANDLE thread = CreateThread(nullptr, 0, WriteReport, &report, 0, nullptr);
  WaitForRequestThreads();
  EXPECT_FALSE(CloseHandle(thread));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
}

TEST(CreateThread, EndsTheThreadWhenItsRoutineThrows) {
  const HANDLE thread = CreateThread(
      nullptr, 0, [](void*) -> DWORD { throw std::runtime_error("unexpected"); }, nullptr, 0,
      nullptr);
  EXPECT_NE(thread, HANDLE{0});
  WaitForRequestThreads();
}

TEST(CreateThread, NeedsARoutine) {
  EXPECT_EQ(CreateThread(nullptr, 0, nullptr, nullptr, 0, nullptr), HANDLE{0});
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

TEST(CreateThread, FailsOnPurpose) {
  Report report;
  DWORD id = 7;
  const FaultPlan plan = FaultPlan::FailCalls("CreateThread", ERROR_NOT_ENOUGH_MEMORY);
  EXPECT_EQ(CreateThread(nullptr, 0, WriteReport, &report, 0, &id), HANDLE{0});
  EXPECT_EQ(GetLastError(), ERROR_NOT_ENOUGH_MEMORY);
  EXPECT_EQ(id, 7u);
  WaitForRequestThreads();
  EXPECT_EQ(report.id, 0u);
}

// Says when the thread-local objects of a thread go.
struct AtThreadExit {
  std::atomic<bool>* gone = nullptr;
  ~AtThreadExit() {
    if (gone) *gone = true;
  }
};
thread_local AtThreadExit t_atThreadExit;

TEST(WaitForRequestThreads, WaitsForThreadLocalObjectsToo) {
  for (int i = 0; i < 50; ++i) {
    std::atomic<bool> gone{false};
    CreateThread(
        nullptr, 0,
        [](void* parameter) -> DWORD {
          t_atThreadExit.gone = static_cast<std::atomic<bool>*>(parameter);
          return 0;
        },
        &gone, 0, nullptr);
    WaitForRequestThreads();
    EXPECT_TRUE(gone);
  }
}

TEST(WaitForRequestThreads, ReturnsAtOnceWithoutThreads) {
  WaitForRequestThreads();
  EXPECT_NE(GetCurrentThreadId(), 0u);
}

TEST(Interlocked, CountsAcrossThreads) {
  std::atomic<LONG> count{0};
  for (int i = 0; i < 8; ++i) {
    CreateThread(
        nullptr, 0,
        [](void* parameter) -> DWORD {
          auto* counter = static_cast<std::atomic<LONG>*>(parameter);
          for (int step = 0; step < 1000; ++step) InterlockedIncrement(counter);
          return static_cast<DWORD>(InterlockedDecrement(counter));
        },
        &count, 0, nullptr);
  }
  WaitForRequestThreads();
  EXPECT_EQ(count, 8 * 999);
}

TEST(Tls, HoldsAValueForEachThread) {
  const DWORD slot = TlsAlloc();
  ASSERT_NE(slot, TLS_OUT_OF_INDEXES);
  int own = 0;
  EXPECT_EQ(TlsGetValue(slot), nullptr);
  EXPECT_TRUE(TlsSetValue(slot, &own));
  void* seen = &own;
  std::thread([&] {
    seen = TlsGetValue(slot);
    TlsSetValue(slot, &seen);
  }).join();
  EXPECT_EQ(seen, nullptr);
  EXPECT_EQ(TlsGetValue(slot), &own);
  EXPECT_TRUE(TlsFree(slot));
}

TEST(Tls, IsNullInASlotThatIsAllocatedAgain) {
  const DWORD slot = TlsAlloc();
  int value = 0;
  TlsSetValue(slot, &value);
  TlsFree(slot);
  ASSERT_EQ(TlsAlloc(), slot);
  EXPECT_EQ(TlsGetValue(slot), nullptr);
  TlsFree(slot);
}

TEST(Tls, RefusesASlotThatIsNotAllocated) {
  const DWORD freed = TlsAlloc();
  TlsFree(freed);
  for (const DWORD slot : {freed, DWORD{64}, TLS_OUT_OF_INDEXES}) {
    SetLastError(0);
    EXPECT_EQ(TlsGetValue(slot), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    EXPECT_FALSE(TlsSetValue(slot, nullptr));
    EXPECT_FALSE(TlsFree(slot));
  }
}

TEST(Tls, RunsOutOfSlots) {
  std::vector<DWORD> slots;
  DWORD slot = 0;
  while ((slot = TlsAlloc()) != TLS_OUT_OF_INDEXES) slots.push_back(slot);
  EXPECT_EQ(GetLastError(), ERROR_NOT_ENOUGH_MEMORY);
  EXPECT_GE(slots.size(), 32u);
  for (const DWORD allocated : slots) EXPECT_TRUE(TlsFree(allocated));
}

TEST(Tls, FailsOnPurpose) {
  const DWORD slot = TlsAlloc();
  int value = 0;
  TlsSetValue(slot, &value);
  {
    const FaultPlan plan = FaultPlan::FailCalls("TlsAlloc", ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(TlsAlloc(), TLS_OUT_OF_INDEXES);
  }
  {
    const FaultPlan plan = FaultPlan::FailCalls("TlsGetValue", ERROR_INVALID_PARAMETER);
    EXPECT_EQ(TlsGetValue(slot), nullptr);
  }
  {
    const FaultPlan plan = FaultPlan::FailCalls("TlsSetValue", ERROR_INVALID_PARAMETER);
    EXPECT_FALSE(TlsSetValue(slot, nullptr));
  }
  EXPECT_EQ(TlsGetValue(slot), &value);
  {
    const FaultPlan plan = FaultPlan::FailCalls("TlsFree", ERROR_INVALID_PARAMETER);
    EXPECT_FALSE(TlsFree(slot));
  }
  EXPECT_TRUE(TlsFree(slot));
}

}  // namespace
}  // namespace ce
