// The kinds of records that a request can ask for, and what is particular to each.
#pragma once

#include "platform/pocket_outlook.h"
#include "platform/xml_dom.h"

namespace corvane {

inline constexpr ce::DWORD kPIMDataAppointment = 0;
inline constexpr ce::DWORD kPIMDataContact = 1;
inline constexpr ce::DWORD kPIMDataTask = 2;
inline constexpr ce::DWORD kPIMDataContact2 = 3;  // contacts in their second form
inline constexpr ce::DWORD kPIMDataCallLog = 4;
inline constexpr ce::DWORD kPIMDataTextMessage = 5;

// Records that travel together, except the first of a download of chosen records, which travels
// alone.
inline constexpr ce::DWORD kRecordsPerDocument = 5;

// A kind that lives in a folder of Pocket Outlook. `item` below is the kind's interface.
struct RecordKind {
  ce::DWORD kind;
  ce::INT folder;
  const ce::GUID* itemInterface;
  ce::HRESULT (*exportItem)(ce::IXMLDOMDocument* document, ce::IXMLDOMNode* parent,
                            ce::IUnknown* item);
  ce::HRESULT (*deleteItem)(ce::IUnknown* item);
  // Logged after exportItem with its status: in a download of all, and of chosen records.
  const ce::WCHAR* allTrace;
  const ce::WCHAR* specificTrace;
};

// Null for the kinds that live in no folder and for unknown ones.
const RecordKind* FindRecordKind(ce::DWORD kind);

}  // namespace corvane
