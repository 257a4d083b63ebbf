// CE MAPI: sessions, message stores, folders, tables of rows, messages.
//
// Objects belong to the thread that logged on and end with their session: after Logoff they answer
// E_FAIL. Entry identifiers are bytes that name a store, a folder or a message for good; one that
// names nothing is MAPI_E_NOT_FOUND, one of no bytes MAPI_E_INVALID_ENTRYID.
//
// A session reads one snapshot of the handheld's messages, from its first read on, until it
// deletes. Counted arrays hold a pointer where the device's have their elements in place.
#pragma once

#include "platform/com.h"
#include "platform/types.h"

namespace ce {

using ENTRYID = BYTE;

inline constexpr DWORD PT_LONG = 0x0003;
inline constexpr DWORD PT_ERROR = 0x000A;
inline constexpr DWORD PT_UNICODE = 0x001F;
inline constexpr DWORD PT_SYSTIME = 0x0040;
inline constexpr DWORD PT_BINARY = 0x0102;

// The identifier in the high word, the type in the low one.
constexpr DWORD PROP_TAG(DWORD type, DWORD id) {
  return id << 16 | type;
}
constexpr DWORD PROP_TYPE(DWORD tag) {
  return tag & 0xFFFF;
}
constexpr DWORD PROP_ID(DWORD tag) {
  return tag >> 16;
}

inline constexpr DWORD PR_MESSAGE_CLASS_W = 0x001A001F;
inline constexpr DWORD PR_SUBJECT_W = 0x0037001F;
inline constexpr DWORD PR_RECIPIENT_TYPE = 0x0C150003;
inline constexpr DWORD PR_SENDER_NAME_W = 0x0C1A001F;
inline constexpr DWORD PR_SENDER_EMAIL_ADDRESS_W = 0x0C1F001F;
inline constexpr DWORD PR_MESSAGE_DELIVERY_TIME = 0x0E060040;
inline constexpr DWORD PR_MESSAGE_FLAGS = 0x0E070003;
inline constexpr DWORD PR_MESSAGE_SIZE = 0x0E080003;
inline constexpr DWORD PR_MSG_STATUS = 0x0E170003;
inline constexpr DWORD PR_ENTRYID = 0x0FFF0102;
inline constexpr DWORD PR_DISPLAY_NAME_W = 0x3001001F;
inline constexpr DWORD PR_EMAIL_ADDRESS_W = 0x3003001F;
inline constexpr DWORD PR_LAST_MODIFICATION_TIME = 0x30080040;
inline constexpr DWORD PR_IPM_SUBTREE_ENTRYID = 0x35E00102;
inline constexpr DWORD PR_IPM_WASTEBASKET_ENTRYID = 0x35E30102;
// Of a message store: its Drafts folder.
inline constexpr DWORD PR_CE_IPM_DRAFTS_ENTRYID = 0x81040102;

inline constexpr LONG MSGFLAG_FROMME = 0x20;  // of PR_MESSAGE_FLAGS

inline constexpr DWORD MAPI_STORE = 1;
inline constexpr DWORD MAPI_FOLDER = 3;
inline constexpr DWORD MAPI_MESSAGE = 5;
inline constexpr LONG MAPI_TO = 1;
inline constexpr DWORD MAPI_UNICODE = 0x80000000;

inline constexpr HRESULT E_ABORT = static_cast<HRESULT>(0x80004004);
inline constexpr HRESULT MAPI_E_INVALID_ENTRYID = static_cast<HRESULT>(0x80040107);
inline constexpr HRESULT MAPI_E_NOT_FOUND = static_cast<HRESULT>(0x8004010F);
inline constexpr HRESULT MAPI_E_NOT_INITIALIZED = static_cast<HRESULT>(0x80040605);
inline constexpr HRESULT MAPI_E_NO_RECIPIENTS = static_cast<HRESULT>(0x80040607);
// Successes with a reservation.
inline constexpr HRESULT MAPI_W_ERRORS_RETURNED = 0x00040380;
inline constexpr HRESULT MAPI_W_PARTIAL_COMPLETION = 0x00040680;

struct SBinary {
  DWORD cb;
  BYTE* lpb;
};

struct SPropValue {
  DWORD ulPropTag;
  DWORD dwAlignPad;
  union {
    LONG l;        // PT_LONG
    HRESULT err;   // PT_ERROR
    WCHAR* lpszW;  // PT_UNICODE, zero-terminated
    FILETIME ft;   // PT_SYSTIME
    SBinary bin;   // PT_BINARY
  } Value;
};

struct SPropTagArray {
  DWORD cValues;
  const DWORD* aulPropTag;
};
struct SRow {
  DWORD ulAdrEntryPad;
  DWORD cValues;
  SPropValue* lpProps;
};
struct SRowSet {
  DWORD cRows;
  SRow* aRow;
};
struct ENTRYLIST {
  DWORD cValues;
  SBinary* lpbin;
};

struct IMAPIProp : IUnknown {
  static constexpr GUID kIid{0x00020303, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
  // One value for each tag, in their order. What the object lacks comes as PT_ERROR with
  // MAPI_E_NOT_FOUND, and the call answers MAPI_W_ERRORS_RETURNED. `tags` null (for "all") is
  // E_INVALIDARG. The values are freed with MAPIFreeBuffer.
  virtual HRESULT GetProps(const SPropTagArray* tags, DWORD flags, DWORD* count,
                           SPropValue** values) = 0;

 protected:
  ~IMAPIProp() = default;
};

// A position in a list of rows, at first before the first one. Positions are kept by identity: rows
// that others delete or add do not shift it.
struct IMAPITable : IUnknown {
  static constexpr GUID kIid{0x00020301, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
  // Names the values of the rows that are read from now on, and their order; a value that a row
  // lacks then comes as PT_ERROR with MAPI_E_NOT_FOUND. The position stays.
  virtual HRESULT SetColumns(const SPropTagArray* tags, DWORD flags) = 0;
  virtual HRESULT GetRowCount(DWORD flags, DWORD* count) = 0;
  // The next rows, at most `count`, which must be above 0; none at the end, as a row set without
  // rows. It is freed with FreeProws or with MAPIFreeBuffer.
  //
  // Until SetColumns, a row has the table's default columns, without those that it lacks. Of a
  // folder's contents these are, in this order: PR_ENTRYID, PR_MESSAGE_CLASS_W,
  // PR_MESSAGE_DELIVERY_TIME, PR_MESSAGE_FLAGS, PR_MSG_STATUS, PR_SUBJECT_W, PR_SENDER_NAME_W,
  // PR_MESSAGE_SIZE, PR_LAST_MODIFICATION_TIME - but PR_ENTRYID alone when more than one row is
  // asked for, so that a whole folder can be asked for at once.
  virtual HRESULT QueryRows(LONG count, DWORD flags, SRowSet** rows) = 0;

 protected:
  ~IMAPITable() = default;
};

struct IMAPIContainer : IMAPIProp {
  static constexpr GUID kIid{0x0002030B, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
  // The messages, in the order of their arrival in the store.
  virtual HRESULT GetContentsTable(DWORD flags, IMAPITable** table) = 0;
  // The subfolders, in the order of their making. Columns: PR_DISPLAY_NAME_W, PR_ENTRYID.
  virtual HRESULT GetHierarchyTable(DWORD flags, IMAPITable** table) = 0;

 protected:
  ~IMAPIContainer() = default;
};

struct IMAPIFolder : IMAPIContainer {
  static constexpr GUID kIid{0x0002030C, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
  // MAPI_W_PARTIAL_COMPLETION when an entry names no message of this folder; the others are
  // deleted. Deletions share disk synchronisations: they are on the disk once the session's next
  // other call has succeeded, which answers the failure of that. `progress` is not used.
  virtual HRESULT DeleteMessages(const ENTRYLIST* messages, DWORD uiParam, IUnknown* progress,
                                 DWORD flags) = 0;

 protected:
  ~IMAPIFolder() = default;
};

struct IMessage : IMAPIProp {
  static constexpr GUID kIid{0x00020307, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
  // MAPI_E_NO_RECIPIENTS and null for a message without any. Columns: PR_DISPLAY_NAME_W,
  // PR_EMAIL_ADDRESS_W, PR_RECIPIENT_TYPE.
  virtual HRESULT GetRecipientTable(DWORD flags, IMAPITable** table) = 0;

 protected:
  ~IMessage() = default;
};

struct IMsgStore : IMAPIProp {
  static constexpr GUID kIid{0x00020306, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
  // A folder or message of this store; `objectType` (MAPI_FOLDER, MAPI_MESSAGE) may be null.
  // `interfaceId` null asks for the object's own interface.
  virtual HRESULT OpenEntry(DWORD entryIdBytes, const ENTRYID* entryId, const GUID* interfaceId,
                            DWORD flags, DWORD* objectType, IUnknown** object) = 0;

 protected:
  ~IMsgStore() = default;
};

struct IMAPISession : IUnknown {
  static constexpr GUID kIid{0x00020300, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
  // Columns: PR_DISPLAY_NAME_W, PR_ENTRYID.
  virtual HRESULT GetMsgStoresTable(DWORD flags, IMAPITable** table) = 0;
  virtual HRESULT OpenMsgStore(DWORD uiParam, DWORD entryIdBytes, const ENTRYID* entryId,
                               const GUID* interfaceId, DWORD flags, IMsgStore** store) = 0;
  // Ends the session in any case; a failure is that of deletions which were still to be stored.
  virtual HRESULT Logoff(DWORD uiParam, DWORD flags, DWORD reserved) = 0;

 protected:
  ~IMAPISession() = default;
};

// Once before anything else on a thread; counted. Not 0, and the last error, on failure.
HRESULT MAPIInitialize(void* init);
void MAPIUninitialize();
// Not 0 on failure, and the last error, which is a positive system code. The handheld has one
// profile and no password: the names are not looked at. MAPI_E_NOT_INITIALIZED on a thread without
// MAPIInitialize.
HRESULT MAPILogonEx(DWORD uiParam, const WCHAR* profile, const WCHAR* password, DWORD flags,
                    IMAPISession** session);
// Frees what a call handed out, with all that it points to. Null is allowed. Always 0.
DWORD MAPIFreeBuffer(void* buffer);
void FreeProws(SRowSet* rows);

}  // namespace ce
