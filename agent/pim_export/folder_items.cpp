#include "agent/pim_export/folder_items.h"

#include "agent/log/log.h"
#include "platform/status.h"

namespace corvane {

using namespace ce;

HRESULT FolderItems::Open(const RecordKind* kind) {
  kind_ = kind;
  RETURN_IF_FAILED(session_.Create());
  LOG(u"Before Logon");
  RETURN_IF_FAILED(session_.Logon());
  const HRESULT status = OpenFolder(kind);
  LOG(u"After get_Count hr = %X, nItems = %d", status, count_);
  return status;
}

HRESULT FolderItems::OpenFolder(const RecordKind* kind) {
  if (!kind) return E_INVALIDARG;
  ComPtr<IFolder> folder;
  RETURN_IF_FAILED(session_.app()->GetDefaultFolder(kind->folder, folder.put()));
  ComPtr<IPOutlookItemCollection> items;
  RETURN_IF_FAILED(folder->get_Items(items.put()));
  RETURN_IF_FAILED(items->QueryInterface(IPOutlookItemCollection2::kIid, items_.put_void()));
  return items_->get_Count(&count_);
}

HRESULT FolderItems::Item(INT index, ComPtr<IUnknown>* item) const {
  ComPtr<IDispatch> found;
  RETURN_IF_FAILED(items_->Item(index, found.put()));
  *item = ItemAs(found.get(), *kind_->itemInterface);
  return *item ? S_OK : kWrongItemKind;
}

}  // namespace corvane
