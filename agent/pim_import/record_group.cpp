#include "agent/pim_import/record_group.h"

#include <span>

#include "agent/core/corvane_stream.h"
#include "agent/pim_import/record_decision.h"
#include "platform/clock.h"
#include "platform/status.h"

namespace corvane {

using namespace ce;

namespace {

constexpr LONGLONG kMillisecondsPerSecond = 1000;

static_assert(RecordGroup::kMostRecords * kRecordReplyBytes <= CorvaneStream::kMostHeld);

}  // namespace

RecordGroup::~RecordGroup() {
  stream_->DropHeld();
}

void RecordGroup::Apply(IXMLDOMNode* record, RecordReader read) {
  if (count_ == 0) Begin();
  applied_[count_++] = {ComPtr(record), read};
  if (Succeeded(begun_)) static_cast<void>(read(record, app_, stream_));
  if (count_ == kMostRecords || IsOld()) Finish();
}

void RecordGroup::Begin() {
  stream_->Hold();
  begun_ = app_->BeginTransaction();
  if (!QueryPerformanceCounter(&beginning_)) beginning_ = 0;
}

bool RecordGroup::IsOld() const {
  LONGLONG now = 0;
  LONGLONG frequency = 0;
  if (!QueryPerformanceCounter(&now) || !QueryPerformanceFrequency(&frequency)) return true;
  return (now - beginning_) * kMillisecondsPerSecond >= kLongestWait * frequency;
}

void RecordGroup::Finish() {
  if (count_ == 0) return;
  const HRESULT status = Succeeded(begun_) ? app_->CommitTransaction() : begun_;
  if (Succeeded(status)) {
    static_cast<void>(stream_->SendHeld());
  } else {
    stream_->DropHeld();
    for (const Applied& applied : std::span(applied_).first(count_)) ApplyAlone(applied);
  }
  for (Applied& applied : std::span(applied_).first(count_)) applied.record.reset();
  count_ = 0;
}

void RecordGroup::ApplyAlone(const Applied& applied) {
  stream_->Hold();
  HRESULT status = app_->BeginTransaction();
  if (Succeeded(status)) {
    static_cast<void>(applied.read(applied.record.get(), app_, stream_));
    status = app_->CommitTransaction();
  }
  if (Succeeded(status)) {
    static_cast<void>(stream_->SendHeld());
  } else {
    stream_->DropHeld();
    AnswerUnstored(applied.record.get(), stream_, status);
  }
}

}  // namespace corvane
