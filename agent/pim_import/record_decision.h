// What becomes of an uploaded record: added, modified or deleted. The same for every kind.
#pragma once

#include <cstddef>

#include "agent/vocabulary/outlook_session.h"
#include "platform/pocket_outlook.h"
#include "platform/xml_dom.h"

namespace corvane {

class CorvaneStream;

// What is particular to a kind. `item` is the kind's interface.
struct RecordRules {
  ce::INT folder;
  const ce::GUID* itemInterface;
  bool needsFolder;        // a folder that cannot be opened fails every record, not only new ones
  bool deletesFailedItem;  // an item that was new and could not be filled is deleted again
  // Sets every field and saves the item; tells whether it was saved. A record can fail with a
  // positive code: that of a date which does not exist.
  ce::HRESULT (*fillAndSave)(ce::IXMLDOMNode* record, ce::IUnknown* item, bool* saved);
  ce::HRESULT (*deleteItem)(ce::IUnknown* item);
  ce::HRESULT (*getOid)(ce::IUnknown* item, ce::LONG* oid);
  const ce::WCHAR* enteringTrace;
  const ce::WCHAR* addTrace;
  const ce::WCHAR* exitingTrace;  // with the status, twice
};

// Applies one record and writes the two words of its reply: the identifier (as sent for a deletion,
// 0 for a failure, otherwise of the saved item) and the result, which is also the answer.
ce::HRESULT ApplyRecord(const RecordRules& rules, ce::IXMLDOMNode* record, ce::IPOutlookApp* app,
                        CorvaneStream* stream);

inline constexpr std::size_t kRecordReplyBytes = 8;

// Writes the reply to a record of which nothing could be stored.
void AnswerUnstored(ce::IXMLDOMNode* record, CorvaneStream* stream, ce::HRESULT result);

}  // namespace corvane
