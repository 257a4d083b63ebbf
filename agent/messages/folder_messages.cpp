#include "agent/messages/folder_messages.h"

#include "agent/messages/mapi_memory.h"
#include "agent/messages/message_to_xml.h"
#include "agent/xml/record_document.h"
#include "platform/status.h"

namespace corvane {

using namespace ce;

namespace {

// The first message travels alone: the desktop counts on it.
constexpr DocumentSizes kSizes{1, 40};

}  // namespace

HRESULT AddFolderMessagesToXML(IMsgStore* store, IMAPITable* contents, const WCHAR* path,
                               CorvaneStream* stream) {
  // One for the folder: a message without a text goes out with that of the one before.
  MessageText text{};
  return SendRecords(stream, kSizes, [&](RecordDocument& document, bool* more) -> HRESULT {
    SingleRow row;
    RETURN_IF_FAILED(contents->QueryRows(1, 0, row.put()));
    *more = row.get() != nullptr;
    if (!*more) return S_OK;
    RETURN_IF_FAILED(document.Open());
    return AddMessageToXML(document.document(), document.root(), store, path, *row.get(), &text);
  });
}

}  // namespace corvane
