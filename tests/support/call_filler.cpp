#include "tests/support/call_filler.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "common/text/unicode.h"

namespace corvane::testing {

using namespace ce;
using host::CallLog;
using host::NumberedCall;
using host::StoredCall;

StoredCall SampleCall() {
  StoredCall call;
  call.startTime = kSampleStart;
  call.endTime = kSampleStart + kMinute;
  call.kind = IOM_INCOMING;
  call.flags = CALLLOG_CONNECTED | CALLLOG_ENDED;
  call.callerIdType = CALLERIDTYPE_AVAILABLE;
  call.number = u"+4912345";
  call.name = u"Ada Lovelace";
  call.nameType = u"m";
  return call;
}

CallFiller::CallFiller(host::Handheld& handheld) {
  std::string problem;
  if (Failed(CallLog::Open(handheld, box_, problem))) throw std::runtime_error(problem);
}

std::int64_t CallFiller::Add(const StoredCall& call) {
  std::int64_t id = 0;
  EXPECT_EQ(box_->Insert(call, &id), S_OK);
  return id;
}

void CallFiller::AddMany(int count) {
  StoredCall call = SampleCall();
  box_->Begin();
  for (int index = 1; index <= count; ++index) {
    call.number = text::FromUtf8Lossy(std::to_string(index));
    call.startTime -= kMinute;
    EXPECT_EQ(box_->Insert(call), S_OK);
  }
  EXPECT_EQ(box_->Commit(), S_OK);
}

std::vector<StoredCall> CallFiller::Calls() {
  std::vector<NumberedCall> read;
  EXPECT_EQ(box_->Read({}, SIZE_MAX, read), S_OK);
  std::vector<StoredCall> calls;
  for (NumberedCall& call : read) calls.push_back(std::move(call.call));
  return calls;
}

std::int64_t CallFiller::Count() {
  std::int64_t count = -1;
  EXPECT_EQ(box_->Count(count), S_OK);
  return count;
}

}  // namespace corvane::testing
