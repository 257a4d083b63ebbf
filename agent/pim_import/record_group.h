// Records that are stored together, and answered once they are.
#pragma once

#include <array>
#include <cstddef>

#include "platform/com_ptr.h"
#include "platform/pocket_outlook.h"
#include "platform/xml_dom.h"

namespace corvane {

class CorvaneStream;

// Applies a record and writes its reply.
using RecordReader = ce::HRESULT (*)(ce::IXMLDOMNode* record, ce::IPOutlookApp* app,
                                     CorvaneStream* stream);

// No reply leaves before what it speaks of is on the disk, which costs one synchronisation for many
// records: they share a transaction, and the stream holds their replies back until it is committed.
// Each record is stored as a whole or not at all. When a transaction cannot be committed, its
// records are applied once more, each in one of its own, so that every reply says what became of
// its record.
class RecordGroup {
 public:
  // Others wait no longer than this to write: for so many records, or the one during which so many
  // milliseconds have passed.
  static constexpr std::size_t kMostRecords = 64;
  static constexpr ce::LONGLONG kLongestWait = 50;

  RecordGroup(ce::IPOutlookTransactions* app, CorvaneStream* stream) : app_(app), stream_(stream) {}
  RecordGroup(const RecordGroup&) = delete;
  RecordGroup& operator=(const RecordGroup&) = delete;
  // Forgets the replies to what was not finished. Logoff undoes that.
  ~RecordGroup();

  void Apply(ce::IXMLDOMNode* record, RecordReader read);
  // Stores and answers what has been applied.
  void Finish();

 private:
  struct Applied {
    ce::ComPtr<ce::IXMLDOMNode> record;
    RecordReader read = nullptr;
  };

  void Begin();
  bool IsOld() const;
  void ApplyAlone(const Applied& applied);

  ce::IPOutlookTransactions* const app_;
  CorvaneStream* const stream_;
  std::array<Applied, kMostRecords> applied_;
  std::size_t count_ = 0;
  ce::HRESULT begun_ = ce::S_OK;
  ce::LONGLONG beginning_ = 0;
};

}  // namespace corvane
