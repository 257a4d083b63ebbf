// The functions of "Phone.dll", found as a program finds them.
#include <gmock/gmock.h>

#include "handheld/base/fault.h"
#include "handheld/store/store_error.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "platform/modules.h"
#include "platform/phone.h"
#include "platform/status.h"
#include "tests/support/call_filler.h"
#include "tests/support/fault_runs.h"
#include "tests/support/test_handheld.h"

namespace corvane {
namespace {

using namespace ce;
using host::FaultPlan;
using host::StoredCall;
using testing::CallFiller;
using ::testing::ElementsAre;
using testing::kMinute;
using testing::kSampleStart;
using testing::SampleCall;

constexpr HRESULT kInvalidHandle = static_cast<HRESULT>(0x80070006);

std::optional<std::u16string> TakeText(WCHAR* text) {
  if (!text) return std::nullopt;
  std::u16string copy = text;
  EXPECT_EQ(LocalFree(text), nullptr);
  return copy;
}

std::int64_t Ticks(const FILETIME& time) {
  return static_cast<std::int64_t>(std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime);
}

// Takes over its strings.
StoredCall TakeCall(const CALLLOGENTRY& entry) {
  StoredCall call;
  call.startTime = Ticks(entry.ftStartTime);
  call.endTime = Ticks(entry.ftEndTime);
  call.kind = entry.iom;
  call.flags = entry.dwFlags;
  call.callerIdType = entry.cidt;
  call.number = TakeText(entry.pszNumber);
  call.name = TakeText(entry.pszName);
  call.nameType = TakeText(entry.pszNameType);
  call.note = TakeText(entry.pszNote);
  return call;
}

class PhoneCalls : public testing::HandheldTest {
 protected:
  void SetUp() override {
    filler_ = std::make_unique<CallFiller>(*handheld_);
    module_ = LoadLibraryW(u"Phone.dll");
    ASSERT_NE(module_, nullptr);
    open_ = Find<PhoneOpenCallLogFn>(u"PhoneOpenCallLog");
    seek_ = Find<PhoneSeekCallLogFn>(u"PhoneSeekCallLog");
    read_ = Find<PhoneGetCallLogEntryFn>(u"PhoneGetCallLogEntry");
    close_ = Find<PhoneCloseCallLogFn>(u"PhoneCloseCallLog");
    ASSERT_TRUE(open_ && seek_ && read_ && close_);
  }
  void TearDown() override {
    EXPECT_TRUE(FreeLibrary(module_));
    filler_.reset();
    HandheldTest::TearDown();
  }
  template <typename Function>
  Function Find(const WCHAR* name) {
    return reinterpret_cast<Function>(GetProcAddressW(module_, name));
  }

  HANDLE Open() {
    HANDLE log = 0;
    EXPECT_EQ(open_(&log), S_OK);
    EXPECT_NE(log, 0u);
    return log;
  }
  HRESULT Read(HANDLE log, CALLLOGENTRY& entry) {
    entry = {};
    entry.cbSize = sizeof(entry);
    return read_(log, &entry);
  }
  // The rest of the log.
  std::vector<StoredCall> Rest(HANDLE log) {
    std::vector<StoredCall> calls;
    CALLLOGENTRY entry;
    HRESULT status = S_OK;
    while ((status = Read(log, entry)) == S_OK) calls.push_back(TakeCall(entry));
    EXPECT_EQ(status, S_FALSE);
    return calls;
  }
  std::vector<std::u16string> RestNumbers(HANDLE log) {
    std::vector<std::u16string> numbers;
    for (const StoredCall& call : Rest(log)) numbers.push_back(call.number.value_or(u"-"));
    return numbers;
  }
  DWORD Seek(HANDLE log, DWORD offset) {
    DWORD record = 99;
    EXPECT_EQ(seek_(log, CALLLOGSEEK_BEGINNING, offset, &record), S_OK);
    return record;
  }

  std::unique_ptr<CallFiller> filler_;
  HMODULE module_ = nullptr;
  PhoneOpenCallLogFn open_ = nullptr;
  PhoneSeekCallLogFn seek_ = nullptr;
  PhoneGetCallLogEntryFn read_ = nullptr;
  PhoneCloseCallLogFn close_ = nullptr;
};

TEST_F(PhoneCalls, AreLackingOnAHandheldSetToHaveNoTelephone) {
  handheld_->Set(u"Phone", DWORD{0});
  EXPECT_EQ(LoadLibraryW(u"Phone.dll"), nullptr);
  EXPECT_EQ(GetLastError(), ERROR_MOD_NOT_FOUND);
}

TEST_F(PhoneCalls, AreFoundByTheirExactNames) {
  EXPECT_EQ(GetProcAddressW(module_, u"phoneopencalllog"), nullptr);
  EXPECT_EQ(GetProcAddressW(module_, u"PhoneMakeCall"), nullptr);
  EXPECT_EQ(GetLastError(), ERROR_PROC_NOT_FOUND);
}

TEST_F(PhoneCalls, GiveBackEverythingThatACallHas) {
  StoredCall call = SampleCall();
  call.name = u"Ada \u65E5 \U0001F600";
  call.note = u"\\call.pwi";
  call.startTime = (std::int64_t{0x12345678} << 32) + 0x9ABCDEF0;
  filler_->Add(call);
  const HANDLE log = Open();
  EXPECT_THAT(Rest(log), ElementsAre(call));
  EXPECT_EQ(close_(log), S_OK);
}

TEST_F(PhoneCalls, GiveNullForATextThatIsMissingAndAnEmptyOneForAnEmpty) {
  StoredCall call;
  call.number = u"";
  filler_->Add(call);
  const HANDLE log = Open();
  CALLLOGENTRY entry;
  ASSERT_EQ(Read(log, entry), S_OK);
  ASSERT_NE(entry.pszNumber, nullptr);
  EXPECT_EQ(entry.pszNumber[0], 0);
  EXPECT_EQ(entry.pszName, nullptr);
  EXPECT_EQ(entry.pszNameType, nullptr);
  EXPECT_EQ(entry.pszNote, nullptr);
  LocalFree(entry.pszNumber);
  close_(log);
}

TEST_F(PhoneCalls, ReadTheNewestFirst) {
  filler_->AddMany(3);
  StoredCall newest = SampleCall();
  newest.startTime += kMinute;
  newest.number = u"newest";
  filler_->Add(newest);
  const HANDLE log = Open();
  EXPECT_THAT(RestNumbers(log), ElementsAre(u"newest", u"1", u"2", u"3"));
  close_(log);
}

TEST_F(PhoneCalls, AnswerFalseBehindTheLastAndLeaveTheRecord) {
  const HANDLE log = Open();
  for (int time = 0; time < 2; ++time) {
    CALLLOGENTRY entry;
    EXPECT_EQ(Read(log, entry), S_FALSE);
    EXPECT_EQ(entry.pszNumber, nullptr);
    EXPECT_EQ(entry.dwFlags, 0u);
  }
  close_(log);
}

TEST_F(PhoneCalls, SeekCountsFromTheNewest) {
  filler_->AddMany(4);
  const HANDLE log = Open();
  EXPECT_EQ(Seek(log, 0), 0u);
  EXPECT_THAT(RestNumbers(log), ElementsAre(u"1", u"2", u"3", u"4"));
  EXPECT_EQ(Seek(log, 2), 2u);
  EXPECT_THAT(RestNumbers(log), ElementsAre(u"3", u"4"));
  EXPECT_EQ(Seek(log, 4), 4u);
  EXPECT_THAT(RestNumbers(log), ElementsAre());
  EXPECT_EQ(Seek(log, 0xFFFFFFFF), 4u);
  EXPECT_THAT(RestNumbers(log), ElementsAre());
  EXPECT_EQ(Seek(log, 0), 0u);
  EXPECT_THAT(RestNumbers(log), ElementsAre(u"1", u"2", u"3", u"4"));
  close_(log);
}

TEST_F(PhoneCalls, SeekKnowsTheBeginningOnly) {
  const HANDLE log = Open();
  DWORD record = 0;
  for (const DWORD from : {0u, 1u, 3u, 4u}) EXPECT_EQ(seek_(log, from, 0, &record), E_INVALIDARG);
  EXPECT_EQ(seek_(log, CALLLOGSEEK_BEGINNING, 0, nullptr), E_INVALIDARG);
  close_(log);
}

TEST_F(PhoneCalls, RefuseARecordOfAnotherSize) {
  filler_->AddMany(1);
  const HANDLE log = Open();
  for (const std::size_t size : {std::size_t{0}, sizeof(CALLLOGENTRY) - 1}) {
    CALLLOGENTRY entry;
    entry.cbSize = static_cast<DWORD>(size);
    EXPECT_EQ(read_(log, &entry), E_INVALIDARG);
  }
  EXPECT_EQ(read_(log, nullptr), E_INVALIDARG);
  EXPECT_THAT(RestNumbers(log), ElementsAre(u"1"));
  close_(log);
}

TEST_F(PhoneCalls, KnowOnlyAnOpenCallLog) {
  const HANDLE closed = Open();
  EXPECT_EQ(close_(closed), S_OK);
  const HANDLE file =
      CreateFileW(u"a.txt", GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, 0);
  for (const HANDLE log : {HANDLE{0}, INVALID_HANDLE_VALUE, closed, file}) {
    CALLLOGENTRY entry;
    DWORD record = 0;
    EXPECT_EQ(Read(log, entry), kInvalidHandle);
    EXPECT_EQ(seek_(log, CALLLOGSEEK_BEGINNING, 0, &record), kInvalidHandle);
    EXPECT_EQ(close_(log), kInvalidHandle);
  }
  EXPECT_TRUE(CloseHandle(file)) << "it was left open";
  EXPECT_EQ(open_(nullptr), E_INVALIDARG);
}

TEST_F(PhoneCalls, ReadOneSnapshot) {
  filler_->AddMany(3);
  const HANDLE log = Open();
  EXPECT_EQ(Seek(log, 1), 1u);
  filler_->Add(SampleCall());
  std::vector<host::NumberedCall> calls;
  ASSERT_EQ(filler_->box().Read({}, 10, calls), S_OK);
  bool found = false;
  EXPECT_EQ(filler_->box().Delete(calls.back().id, found), S_OK);
  EXPECT_THAT(RestNumbers(log), ElementsAre(u"2", u"3"));
  EXPECT_EQ(Seek(log, 0), 0u);
  EXPECT_THAT(RestNumbers(log), ElementsAre(u"1", u"2", u"3"));
  const HANDLE later = Open();
  EXPECT_THAT(RestNumbers(later), ElementsAre(u"+4912345", u"1", u"2"));
  EXPECT_EQ(close_(later), S_OK);
  EXPECT_EQ(close_(log), S_OK);
}

TEST_F(PhoneCalls, WalkALongLogInOrder) {
  constexpr int kCalls = 10'000;
  filler_->AddMany(kCalls);
  const HANDLE log = Open();
  std::int64_t last = INT64_MAX;
  int read = 0;
  CALLLOGENTRY entry;
  for (; Read(log, entry) == S_OK; ++read) {
    const StoredCall call = TakeCall(entry);
    ASSERT_LT(call.startTime, last);
    last = call.startTime;
  }
  EXPECT_EQ(read, kCalls);
  close_(log);
}

TEST_F(PhoneCalls, AFailedReadHandsOutNothingAndCanBeRepeated) {
  StoredCall call = SampleCall();
  call.note = u"n";
  filler_->Add(call);
  filler_->AddMany(1);
  const HANDLE log = Open();
  for (std::uint64_t n = 1; n <= 4; ++n) {
    const auto plan = FaultPlan::FailNthCall("LocalAlloc", n, ERROR_NOT_ENOUGH_MEMORY);
    CALLLOGENTRY entry;
    EXPECT_EQ(Read(log, entry), E_OUTOFMEMORY);
    for (const WCHAR* text : {entry.pszNumber, entry.pszName, entry.pszNameType, entry.pszNote}) {
      EXPECT_EQ(text, nullptr);
    }
  }
  EXPECT_THAT(RestNumbers(log), ElementsAre(u"+4912345", u"1"));
  close_(log);
}

TEST_F(PhoneCalls, AnswerWhatTheStoreAnswers) {
  const auto plan = FaultPlan::FailCalls("sqlite3_open", ERROR_READ_FAULT);
  HANDLE log = 5;
  EXPECT_EQ(open_(&log), host::kStoreReadFault);
  EXPECT_EQ(log, 0u);
}

TEST_F(PhoneCalls, CannotOpenTheLogWithoutAHandheld) {
  host::Handheld::MakeCurrent(nullptr);
  HANDLE log = 0;
  EXPECT_EQ(open_(&log), static_cast<HRESULT>(0x80070015));
  host::Handheld::MakeCurrent(&*handheld_);
}

TEST_F(PhoneCalls, ReportEveryCallThatFails) {
  filler_->AddMany(2);
  struct Outcome {
    HRESULT status = S_OK;
    std::size_t calls = 0;
  };
  const auto calls = testing::FailEachCall(
      ERROR_READ_FAULT,
      [this] {
        Outcome outcome;
        HANDLE log = 0;
        DWORD record = 0;
        outcome.status = open_(&log);
        if (Succeeded(outcome.status)) {
          outcome.status = seek_(log, CALLLOGSEEK_BEGINNING, 1, &record);
        }
        if (Succeeded(outcome.status)) {
          outcome.status = seek_(log, CALLLOGSEEK_BEGINNING, 9, &record);
        }
        if (Succeeded(outcome.status)) {
          outcome.status = seek_(log, CALLLOGSEEK_BEGINNING, 0, &record);
        }
        while (outcome.status == S_OK) {
          CALLLOGENTRY entry;
          outcome.status = Read(log, entry);
          if (outcome.status == S_OK) ++outcome.calls;
          TakeCall(entry);
        }
        if (log != 0) {
          const HRESULT closed = close_(log);
          if (Failed(closed)) {
            outcome.status = closed;
            EXPECT_TRUE(Failed(close_(log))) << "it is closed all the same";
          }
        }
        return outcome;
      },
      [](const Outcome& outcome, const std::string& call) {
        if (call.empty()) {
          EXPECT_EQ(outcome.status, S_FALSE);
          EXPECT_EQ(outcome.calls, 2u);
        } else if (call == "LocalAlloc") {
          EXPECT_EQ(outcome.status, E_OUTOFMEMORY);
        } else {
          EXPECT_EQ(outcome.status, host::kStoreReadFault);
        }
      });
  EXPECT_GT(calls, 15u);
}

}  // namespace
}  // namespace corvane
