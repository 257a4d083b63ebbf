#include "handheld/store/call_log.h"

#include <gmock/gmock.h>

#include <functional>
#include <limits>

#include "handheld/base/fault.h"
#include "handheld/store/store_error.h"
#include "tests/support/call_filler.h"
#include "tests/support/fault_runs.h"
#include "tests/support/store_sql.h"
#include "tests/support/test_handheld.h"

namespace ce::host::testing {
namespace {

using corvane::testing::CallFiller;
using corvane::testing::FailEachCall;
using corvane::testing::kMinute;
using corvane::testing::kSampleStart;
using corvane::testing::QuerySql;
using corvane::testing::RunSql;
using corvane::testing::SampleCall;
using ::testing::ElementsAre;

class CallLogTest : public corvane::testing::HandheldTest {
 protected:
  CallLogTest() : filler_(std::make_unique<CallFiller>(*handheld_)) {}

  CallLog& box() { return filler_->box(); }
  void Reopen() {
    filler_.reset();
    handheld_.Reopen();
    filler_ = std::make_unique<CallFiller>(*handheld_);
  }
  // Of the numbers that AddMany gives, and others.
  std::vector<std::u16string> Numbers() {
    std::vector<std::u16string> numbers;
    for (const StoredCall& call : filler_->Calls()) numbers.push_back(call.number.value_or(u"-"));
    return numbers;
  }
  static StoredCall CallAt(std::int64_t start, std::u16string number) {
    StoredCall call = SampleCall();
    call.startTime = start;
    call.number = std::move(number);
    return call;
  }

  std::unique_ptr<CallFiller> filler_;
};

TEST_F(CallLogTest, GivesBackWhatWasInserted) {
  StoredCall call = SampleCall();
  call.note = u"\\My Documents\\call.pwi";
  filler_->Add(call);
  EXPECT_THAT(filler_->Calls(), ElementsAre(call));
  Reopen();
  EXPECT_THAT(filler_->Calls(), ElementsAre(call));
}

TEST_F(CallLogTest, TellsAMissingTextFromAnEmptyOne) {
  StoredCall missing;
  missing.startTime = 2;
  StoredCall empty;
  empty.startTime = 1;
  empty.number = empty.name = empty.nameType = empty.note = u"";
  filler_->Add(missing);
  filler_->Add(empty);
  EXPECT_THAT(filler_->Calls(), ElementsAre(missing, empty));
}

TEST_F(CallLogTest, KeepsEveryTextAndEveryNumber) {
  StoredCall call = SampleCall();
  call.name = u"Ada \u00E9 \u65E5\u672C \U0001F600 " + std::u16string(1, u'\xD83D') + u"|";
  call.number = std::u16string(5000, u'1');
  call.startTime = std::numeric_limits<std::int64_t>::max();
  call.endTime = std::numeric_limits<std::int64_t>::min();
  call.kind = call.flags = call.callerIdType = 0xFFFFFFFF;
  filler_->Add(call);
  EXPECT_THAT(filler_->Calls(), ElementsAre(call));
}

TEST_F(CallLogTest, ReadsTheNewestFirst) {
  for (const std::int64_t start : {5, 9, 1, 7}) {
    filler_->Add(CallAt(start, std::u16string(1, static_cast<char16_t>(u'0' + start))));
  }
  EXPECT_THAT(Numbers(), ElementsAre(u"9", u"7", u"5", u"1"));
}

TEST_F(CallLogTest, ReadsTheLastInsertedFirstOfCallsAtTheSameTime) {
  for (const char16_t* number : {u"a", u"b", u"c"}) filler_->Add(CallAt(kSampleStart, number));
  EXPECT_THAT(Numbers(), ElementsAre(u"c", u"b", u"a"));
}

TEST_F(CallLogTest, IsReadInPieces) {
  filler_->AddMany(5);
  for (const char16_t* number : {u"a", u"b"}) filler_->Add(CallAt(kSampleStart - kMinute, number));
  std::vector<std::u16string> numbers;
  CallPosition position;
  std::vector<NumberedCall> piece;
  do {
    ASSERT_EQ(box().Read(position, 2, piece), S_OK);
    for (const NumberedCall& call : piece) numbers.push_back(*call.call.number);
    if (!piece.empty()) position = piece.back().position();
  } while (!piece.empty());
  EXPECT_THAT(numbers, ElementsAre(u"b", u"a", u"1", u"2", u"3", u"4", u"5"));
  EXPECT_EQ(box().Read({}, 0, piece), S_OK);
  EXPECT_TRUE(piece.empty());
}

TEST_F(CallLogTest, Counts) {
  EXPECT_EQ(filler_->Count(), 0);
  filler_->AddMany(3);
  EXPECT_EQ(filler_->Count(), 3);
}

TEST_F(CallLogTest, DeletesOneCall) {
  const std::int64_t first = filler_->Add(CallAt(1, u"first"));
  filler_->Add(CallAt(2, u"second"));
  bool found = false;
  EXPECT_EQ(box().Delete(first, found), S_OK);
  EXPECT_TRUE(found);
  EXPECT_THAT(Numbers(), ElementsAre(u"second"));
  EXPECT_EQ(box().Delete(first, found), S_OK);
  EXPECT_FALSE(found);
}

TEST_F(CallLogTest, NeverGivesANumberAwayAgain) {
  filler_->AddMany(2);
  const std::int64_t last = filler_->Add(SampleCall());
  EXPECT_EQ(box().Clear(), S_OK);
  EXPECT_EQ(filler_->Count(), 0);
  Reopen();
  EXPECT_GT(filler_->Add(SampleCall()), last);
}

TEST_F(CallLogTest, FindsACallThatIsTheSameInEverything) {
  const StoredCall call = SampleCall();
  filler_->Add(call);
  const auto contains = [this](const StoredCall& asked) {
    bool found = false;
    EXPECT_EQ(box().Contains(asked, found), S_OK);
    return found;
  };
  EXPECT_TRUE(contains(call));
  const std::function<void(StoredCall&)> changes[] = {
      [](StoredCall& c) { ++c.startTime; },    [](StoredCall& c) { ++c.endTime; },
      [](StoredCall& c) { ++c.kind; },         [](StoredCall& c) { ++c.flags; },
      [](StoredCall& c) { --c.callerIdType; }, [](StoredCall& c) { c.number = u"+4912346"; },
      [](StoredCall& c) { c.name.reset(); },   [](StoredCall& c) { c.nameType = u"w"; },
      [](StoredCall& c) { c.note = u""; },
  };
  for (std::size_t index = 0; index < std::size(changes); ++index) {
    StoredCall other = call;
    changes[index](other);
    EXPECT_FALSE(contains(other)) << "change " << index;
  }
}

TEST_F(CallLogTest, StoresABatchTogetherOrNotAtAll) {
  box().Begin();
  filler_->Add(SampleCall());
  filler_->Add(SampleCall());
  box().Abandon();
  EXPECT_EQ(filler_->Count(), 0);
  box().Begin();
  filler_->Add(SampleCall());
  EXPECT_EQ(box().Commit(), S_OK);
  Reopen();
  EXPECT_EQ(filler_->Count(), 1);
}

TEST_F(CallLogTest, UndoesABatchThatIsLeftOpen) {
  box().Begin();
  filler_->Add(SampleCall());
  Reopen();
  EXPECT_EQ(filler_->Count(), 0);
}

TEST_F(CallLogTest, UndoesAWholeBatchWithItsFirstFailure) {
  box().Begin();
  filler_->Add(SampleCall());
  {
    const auto plan = FaultPlan::FailNthCall("CallLog::Insert", 1, ERROR_DISK_FULL);
    EXPECT_EQ(box().Insert(SampleCall()), kStoreDiskFull);
  }
  EXPECT_EQ(box().Insert(SampleCall()), kStoreDiskFull) << "the batch has failed";
  EXPECT_EQ(box().Commit(), kStoreDiskFull);
  EXPECT_EQ(filler_->Count(), 0);
  filler_->Add(SampleCall());
  EXPECT_EQ(filler_->Count(), 1) << "what comes behind it is stored";
}

TEST_F(CallLogTest, ComesToAStoreThatIsOlderThanTheCallLog) {
  filler_->Add(SampleCall());
  filler_.reset();
  corvane::testing::TakeBackToTheFirstFormat(*handheld_);
  EXPECT_TRUE(RunSql(*handheld_, "UPDATE oid_counter SET next_oid = 77"));
  filler_ = std::make_unique<CallFiller>(*handheld_);
  EXPECT_EQ(filler_->Count(), 0);
  filler_->Add(SampleCall());
  EXPECT_EQ(filler_->Count(), 1);
  EXPECT_EQ(QuerySql(*handheld_, "SELECT next_oid FROM oid_counter"), "77");
}

TEST_F(CallLogTest, TellsWhyItCannotBeOpened) {
  const std::filesystem::path path = handheld_->storePath();
  filler_.reset();
  std::filesystem::remove_all(path);
  std::unique_ptr<CallLog> opened;
  std::string problem;
  EXPECT_EQ(CallLog::Open(*handheld_, opened, problem), kStoreMissing);
  EXPECT_FALSE(opened);
  EXPECT_NE(problem, "");
}

TEST_F(CallLogTest, StoresAllOfABatchOrNothingWhicheverCallFails) {
  const auto calls = FailEachCall(
      ERROR_DISK_FULL,
      [this] {
        std::unique_ptr<CallLog> opened;
        std::string problem;
        HRESULT status = CallLog::Open(*handheld_, opened, problem);
        if (Failed(status)) return status;
        opened->Begin();
        for (int index = 0; index < 3; ++index) status = opened->Insert(SampleCall());
        const HRESULT committed = opened->Commit();
        EXPECT_FALSE(Failed(status) && Succeeded(committed)) << "a failure was forgotten";
        return committed;
      },
      [this](HRESULT status, const std::string& call) {
        EXPECT_EQ(filler_->Count(), Succeeded(status) ? 3 : 0);
        EXPECT_EQ(status, call.empty() ? S_OK : kStoreDiskFull);
        EXPECT_EQ(box().Clear(), S_OK);
      });
  EXPECT_GT(calls, 10u);
}

TEST_F(CallLogTest, ReportsEveryCallThatFails) {
  const auto calls = FailEachCall(
      ERROR_READ_FAULT,
      [this] {
        std::int64_t id = 0;
        bool found = false;
        std::int64_t count = 0;
        std::vector<NumberedCall> read;
        HRESULT status = box().Insert(SampleCall(), &id);
        if (Succeeded(status)) status = box().Contains(SampleCall(), found);
        if (Succeeded(status)) status = box().Read({}, 10, read);
        if (Succeeded(status)) status = box().Count(count);
        if (Succeeded(status)) status = box().Delete(id, found);
        if (Succeeded(status)) status = box().Clear();
        return status;
      },
      [this](HRESULT status, const std::string& call) {
        EXPECT_EQ(status, call.empty() ? S_OK : kStoreReadFault);
        EXPECT_EQ(box().Clear(), S_OK);
        filler_ = std::make_unique<CallFiller>(*handheld_);  // prepares its statements anew
      });
  EXPECT_GT(calls, 15u);
}

}  // namespace
}  // namespace ce::host::testing
