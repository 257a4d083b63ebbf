#include "handheld/store/store_error.h"

#include <sqlite3.h>

#include <cstdio>

namespace ce::host {
namespace {

struct CodeRow {
  int code;
  HRESULT status;
};

// Extended codes stand before the plain code that they belong to.
constexpr CodeRow kCodes[] = {
    {SQLITE_OK, S_OK},
    {SQLITE_ROW, S_OK},
    {SQLITE_DONE, S_OK},
    {SQLITE_IOERR_READ, kStoreReadFault},
    {SQLITE_IOERR_SHORT_READ, kStoreReadFault},
    {SQLITE_IOERR_NOMEM, E_OUTOFMEMORY},
    {SQLITE_IOERR_CORRUPTFS, kStoreDamaged},
    {SQLITE_IOERR, kStoreWriteFault},
    {SQLITE_PERM, E_ACCESSDENIED},
    {SQLITE_AUTH, E_ACCESSDENIED},
    {SQLITE_READONLY, E_ACCESSDENIED},
    {SQLITE_BUSY, kStoreBusy},
    {SQLITE_LOCKED, kStoreBusy},
    {SQLITE_NOMEM, E_OUTOFMEMORY},
    {SQLITE_CORRUPT, kStoreDamaged},
    {SQLITE_NOTADB, kStoreDamaged},
    {SQLITE_FULL, kStoreDiskFull},
    {SQLITE_CANTOPEN, kStoreCannotOpen},
    {SQLITE_TOOBIG, E_INVALIDARG},
};

struct StatusText {
  HRESULT status;
  const char* text;
};

constexpr StatusText kTexts[] = {
    {kStoreMissing,
     "is missing or empty although this handheld had one. Put back a copy of the file; or, to "
     "begin "
     "with an empty store whose identifiers start anew, delete the value StoreCreated of the key "
     "Handheld in registry.reg"},
    {kStoreCannotOpen, "cannot be opened"},
    {kStoreDiskFull, "cannot grow: the disk is full"},
    {kStoreBusy, "is in use by another program"},
    {kStoreReadFault, "cannot be read: the disk reports an error"},
    {kStoreWriteFault, "cannot be written: the disk reports an error"},
    {kStoreNewerFormat, "was written by a newer version of this program"},
    {kStoreDamaged, "is damaged or not a store"},
    {kStoreNoMoreOids, "has given away every identifier"},
    {E_ACCESSDENIED, "cannot be written: permission denied"},
    {E_OUTOFMEMORY, "cannot be opened: out of memory"},
};

}  // namespace

HRESULT StoreStatus(int sqliteCode) {
  for (const CodeRow& row : kCodes) {
    if (row.code == sqliteCode || row.code == (sqliteCode & 0xFF)) return row.status;
  }
  return E_FAIL;
}

std::string StoreStatusText(HRESULT status) {
  for (const StatusText& row : kTexts) {
    if (row.status == status) return row.text;
  }
  char text[32];
  std::snprintf(text, sizeof(text), "fails with 0x%08X", static_cast<unsigned>(status));
  return text;
}

}  // namespace ce::host
