#include "agent/pim_import/record_decision.h"

#include <utility>

#include "agent/core/corvane_stream.h"
#include "agent/log/log.h"
#include "agent/pim_import/record_tags.h"
#include "platform/com_ptr.h"
#include "platform/status.h"

namespace corvane {

using namespace ce;

namespace {

// The kind's items, or why they cannot be had.
struct FolderOfKind {
  HRESULT status;
  ComPtr<IPOutlookItemCollection> items;
};

FolderOfKind OpenFolder(IPOutlookApp* app, INT number) {
  ComPtr<IFolder> folder;
  HRESULT status = app->GetDefaultFolder(number, folder.put());
  ComPtr<IPOutlookItemCollection> items;
  if (Succeeded(status)) status = folder->get_Items(items.put());
  return {status, std::move(items)};
}

// Null also for an identifier of another kind's item.
ComPtr<IUnknown> FindItem(const RecordRules& rules, IPOutlookApp* app, LONG oid) {
  ComPtr<IDispatch> found;
  if (Failed(app->GetItemFromOid(oid, found.put()))) return nullptr;
  return ItemAs(found.get(), *rules.itemInterface);
}

HRESULT AddItem(const RecordRules& rules, const FolderOfKind& folder, ComPtr<IUnknown>* item) {
  RETURN_IF_FAILED(folder.status);
  ComPtr<IDispatch> added;
  RETURN_IF_FAILED(folder.items->Add(added.put()));
  *item = ItemAs(added.get(), *rules.itemInterface);
  return *item ? S_OK : E_NOINTERFACE;
}

HRESULT DeleteFound(const RecordRules& rules, IUnknown* item) {
  const HRESULT status = rules.deleteItem(item);
  if (Failed(status)) {
    LOG(u"Delete failed hr = %ld (0x%08X)", status, status);
  } else {
    LOG(u"Deleted item");
  }
  return status;
}

HRESULT FillAndSave(const RecordRules& rules, IXMLDOMNode* record, IUnknown* item, LONG* oid,
                    bool* saved) {
  const HRESULT status = rules.fillAndSave(record, item, saved);
  if (!*saved) return status;
  LOG(u"Save must have worked");
  return rules.getOid(item, oid);
}

HRESULT AddOrModify(const RecordRules& rules, IXMLDOMNode* record, const FolderOfKind& folder,
                    ComPtr<IUnknown> item, LONG* oid) {
  const bool hadOid = *oid != 0;
  HRESULT status = S_OK;
  if (item) {
    LOG(u"Found something to Modify");
  } else {
    LOG(rules.addTrace);
    status = AddItem(rules, folder, &item);
  }
  bool saved = false;
  if (Succeeded(status)) status = FillAndSave(rules, record, item.get(), oid, &saved);
  if (!saved || Failed(status)) {
    *oid = 0;
    if (item && !hadOid && rules.deletesFailedItem) static_cast<void>(rules.deleteItem(item.get()));
  }
  return status;
}

HRESULT Decide(const RecordRules& rules, IXMLDOMNode* record, IPOutlookApp* app, LONG* oid) {
  const FolderOfKind folder = OpenFolder(app, rules.folder);
  if (rules.needsFolder) RETURN_IF_FAILED(folder.status);

  LONG deleteFlag = 0;
  RETURN_IF_FAILED(ReadRecordTags(record, oid, &deleteFlag));
  ComPtr<IUnknown> item;
  if (*oid != 0) {
    item = FindItem(rules, app, *oid);
    if (!item) LOG(u"Didn't find item by OID");
  }
  if (deleteFlag) return item ? DeleteFound(rules, item.get()) : S_OK;
  return AddOrModify(rules, record, folder, std::move(item), oid);
}

void WriteRecordReply(CorvaneStream* stream, LONG oid, HRESULT result) {
  LOG(u"Writing oid 0x%08lX, hr = %ld", oid, result);
  static_cast<void>(WriteWord(stream, static_cast<DWORD>(oid)));
  static_cast<void>(WriteWord(stream, static_cast<DWORD>(result)));
}

}  // namespace

HRESULT ApplyRecord(const RecordRules& rules, IXMLDOMNode* record, IPOutlookApp* app,
                    CorvaneStream* stream) {
  LOG(rules.enteringTrace);
  LONG oid = 0;
  const HRESULT status = Decide(rules, record, app, &oid);
  WriteRecordReply(stream, oid, status);
  LOG(rules.exitingTrace, status, status);
  return status;
}

void AnswerUnstored(IXMLDOMNode* record, CorvaneStream* stream, HRESULT result) {
  LONG oid = 0;
  LONG deleteFlag = 0;
  if (Failed(ReadRecordTags(record, &oid, &deleteFlag)) || !deleteFlag) oid = 0;
  WriteRecordReply(stream, oid, result);
}

}  // namespace corvane
