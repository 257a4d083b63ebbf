#include "agent/messages/sms_folder.h"

#include "agent/log/log.h"
#include "agent/messages/folder_messages.h"
#include "agent/messages/named_rows.h"
#include "platform/com_ptr.h"
#include "platform/status.h"

namespace corvane {

using namespace ce;

FolderPath::FolderPath(const WCHAR* parent, const WCHAR* name) {
  Append(parent);
  Append(u"/");
  if (name) Append(name);
}

void FolderPath::Append(const WCHAR* text) {
  for (; *text && length_ + 1 < text_.size(); ++text) text_[length_++] = *text;
}

HRESULT OpenFolder(IMsgStore* store, const SBinary& entryId, IMAPIFolder** folder) {
  *folder = nullptr;
  ComPtr<IUnknown> entry;
  RETURN_IF_FAILED(store->OpenEntry(entryId.cb, entryId.lpb, nullptr, 0, nullptr, entry.put()));
  if (!entry) return E_UNEXPECTED;
  return entry->QueryInterface(IMAPIFolder::kIid, reinterpret_cast<void**>(folder));
}

HRESULT ProcessSMSFolder(IMsgStore* store, const WCHAR* path, DWORD entryIdBytes,
                         const BYTE* entryId, CorvaneStream* stream) {
  LOG(u"ProcessSMSFolder %s", path);
  ComPtr<IMAPIFolder> folder;
  RETURN_IF_FAILED(OpenFolder(store, {entryIdBytes, const_cast<BYTE*>(entryId)}, folder.put()));
  ComPtr<IMAPITable> contents;
  RETURN_IF_FAILED(folder->GetContentsTable(0, contents.put()));
  RETURN_IF_FAILED(stream ? AddFolderMessagesToXML(store, contents.get(), path, stream)
                          : DeleteFolderMessages(store, folder.get(), contents.get()));
  ComPtr<IMAPITable> subfolders;
  RETURN_IF_FAILED(folder->GetHierarchyTable(0, subfolders.put()));
  return ForEachNamedRow(subfolders.get(), [&](const NamedRow& child) {
    const FolderPath childPath(path, child.name);
    return ProcessSMSFolder(store, childPath.text(), child.entryId.cb, child.entryId.lpb, stream);
  });
}

}  // namespace corvane
