#include "agent/messages/folder_messages.h"

#include <algorithm>

#include "agent/messages/mapi_memory.h"
#include "agent/messages/message_to_xml.h"
#include "agent/xml/record_document.h"
#include "platform/status.h"

namespace corvane {

using namespace ce;

namespace {

// The first message travels alone: the desktop counts on it.
constexpr DocumentSizes kMessageSizes{1, 40};

HRESULT DeleteRow(IMAPIFolder* folder, const SRow& row) {
  SPropValue* const end = row.lpProps + row.cValues;
  SPropValue* const found = std::find_if(
      row.lpProps, end, [](const SPropValue& value) { return value.ulPropTag == PR_ENTRYID; });
  if (found == end) return S_OK;
  const ENTRYLIST list{1, &found->Value.bin};
  return folder->DeleteMessages(&list, 0, nullptr, 0);
}

}  // namespace

HRESULT AddFolderMessagesToXML(IMsgStore* store, IMAPITable* contents, const WCHAR* path,
                               CorvaneStream* stream) {
  // One for the folder: a message without a text goes out with that of the one before.
  MessageText text{};
  return SendRecords(stream, kMessageSizes, [&](RecordDocument& document, bool* more) -> HRESULT {
    SingleRow row;
    RETURN_IF_FAILED(contents->QueryRows(1, 0, row.put()));
    *more = row.get() != nullptr;
    if (!*more) return S_OK;
    RETURN_IF_FAILED(document.Open());
    return AddMessageToXML(document.document(), document.root(), store, path, *row.get(), &text);
  });
}

HRESULT DeleteFolderMessages(IMsgStore*, IMAPIFolder* folder, IMAPITable* contents) {
  DWORD count = 0;
  RETURN_IF_FAILED(contents->GetRowCount(0, &count));
  if (count == 0) return S_OK;
  BulkRows rows;
  RETURN_IF_FAILED(contents->QueryRows(static_cast<LONG>(count), 0, rows.put()));
  if (!rows.get()) return S_OK;
  for (DWORD index = 0; index < rows.get()->cRows; ++index) {
    RETURN_IF_FAILED(DeleteRow(folder, rows.get()->aRow[index]));
  }
  return S_OK;
}

}  // namespace corvane
