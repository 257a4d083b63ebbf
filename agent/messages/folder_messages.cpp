#include "agent/messages/folder_messages.h"

#include "agent/messages/mapi_memory.h"
#include "agent/messages/message_to_xml.h"
#include "agent/xml/record_document.h"
#include "platform/status.h"

namespace corvane {

using namespace ce;

namespace {

constexpr DWORD kMessagesPerDocument = 40;

}  // namespace

HRESULT AddFolderMessagesToXML(IMsgStore* store, IMAPITable* contents, const WCHAR* path,
                               CorvaneStream* stream) {
  RecordDocument batch;
  // One for the folder: a message without a text goes out with that of the one before.
  MessageText text{};
  for (DWORD counter = 0;; ++counter) {
    SingleRow row;
    RETURN_IF_FAILED(contents->QueryRows(1, 0, row.put()));
    if (!row.get()) return batch.Send(stream);
    if (!batch.isOpen()) RETURN_IF_FAILED(batch.Open());
    RETURN_IF_FAILED(
        AddMessageToXML(batch.document(), batch.root(), store, path, *row.get(), &text));
    // Before it is increased, so the first message travels alone: the desktop counts on it.
    if (counter % kMessagesPerDocument == 0) RETURN_IF_FAILED(batch.Send(stream));
  }
}

}  // namespace corvane
