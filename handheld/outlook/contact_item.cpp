#include "handheld/outlook/contact_item.h"

#include <string>
#include <utility>

#include "common/text/unicode.h"
#include "handheld/base/com_object.h"
#include "handheld/base/guarded.h"
#include "handheld/outlook/item_list.h"
#include "handheld/outlook/item_property.h"
#include "handheld/store/contact_row.h"
#include "handheld/store/ole_date.h"
#include "platform/pocket_outlook.h"

namespace ce::host {
namespace {

// "Last, First", or the company; no longer than what put_FileAs takes.
std::u16string DerivedFileAs(const ContactTexts& texts, std::size_t limit) {
  std::u16string name = text::FromWtf8(texts[ContactText::kLastName]);
  const std::u16string first = text::FromWtf8(texts[ContactText::kFirstName]);
  if (!name.empty() && !first.empty()) name += u", ";
  name += first;
  if (name.empty()) name = text::FromWtf8(texts[ContactText::kCompanyName]);
  if (name.size() > limit) {
    const bool splitsPair = limit > 0 && (name[limit - 1] & 0xFC00) == 0xD800;
    name.resize(splitsPair ? limit - 1 : limit);
  }
  return name;
}

class ContactItem final : public ComObject<IContact> {
 public:
  ContactItem(SessionPtr session, std::weak_ptr<ItemList> list, std::uint32_t oid, ContactRow row)
      : session_(std::move(session)), list_(std::move(list)), row_(std::move(row)), oid_(oid) {}

#define CE_CONTACT_TEXT(Name, Kind)                                      \
  HRESULT get_##Name(BSTR* value) override {                             \
    return GetText("IContact::get_" #Name, ContactText::k##Name, value); \
  }                                                                      \
  HRESULT put_##Name(BSTR value) override {                              \
    return PutText("IContact::put_" #Name, ContactText::k##Name, value); \
  }
  CE_CONTACT_TEXTS(CE_CONTACT_TEXT)
#undef CE_CONTACT_TEXT

  HRESULT get_Birthday(DATE* value) override {
    return GetValue("IContact::get_Birthday", row_.birthday, value, kNoDate);
  }
  HRESULT put_Birthday(DATE value) override {
    return PutDate("IContact::put_Birthday", row_.birthday, value);
  }
  HRESULT get_Anniversary(DATE* value) override {
    return GetValue("IContact::get_Anniversary", row_.anniversary, value, kNoDate);
  }
  HRESULT put_Anniversary(DATE value) override {
    return PutDate("IContact::put_Anniversary", row_.anniversary, value);
  }

  HRESULT get_BodyInk(DWORD* bytes, const BYTE** block) override {
    return GetInk("IContact::get_BodyInk", row_.ink, bytes, block);
  }
  HRESULT put_BodyInk(DWORD bytes, const BYTE* block) override {
    return PutInk("IContact::put_BodyInk", changed_, row_.ink, bytes, block);
  }
  HRESULT get_Oid(LONG* oid) override {
    return GetValue("IContact::get_Oid", static_cast<LONG>(oid_), oid);
  }
  HRESULT Save() override;
  HRESULT Delete() override;

 private:
  ~ContactItem() override = default;

  HRESULT GetText(const char* call, ContactText text, BSTR* value);
  HRESULT PutText(const char* call, ContactText text, BSTR value);
  HRESULT PutDate(const char* call, DATE& date, DATE value) {
    return PutValue(call, changed_, [&] {
      if (!IsItemDate(value)) return false;
      date = value;
      return true;
    });
  }
  HRESULT StoreNew(Store& store);
  HRESULT StoreChanges(Store& store);

  const SessionPtr session_;
  const std::weak_ptr<ItemList> list_;
  ContactRow row_;
  std::uint32_t oid_;  // 0 until it is saved
  bool changed_ = false;
};

const TextRow& RowOf(ContactText text) {
  return kContactTexts[static_cast<std::size_t>(text)];
}

HRESULT ContactItem::GetText(const char* call, ContactText text, BSTR* value) {
  if (!value) return E_POINTER;
  *value = nullptr;
  return Guarded(call, [&] {
    const TextKind kind = RowOf(text).kind;
    if (kind == TextKind::kYomi && !session_->limits().yomiFields) return E_NOTIMPL;
    if (kind == TextKind::kFileAs && !row_.fileAsSet) {
      const std::u16string derived = DerivedFileAs(row_.texts, session_->limits().text);
      *value = SysAllocStringLen(derived.data(), static_cast<UINT>(derived.size()));
    } else {
      *value = BstrOf(row_.texts[text]);
    }
    return *value ? S_OK : E_OUTOFMEMORY;
  });
}

HRESULT ContactItem::PutText(const char* call, ContactText text, BSTR value) {
  return Guarded(call, [&] {
    const TextKind kind = RowOf(text).kind;
    const ItemLimits& limits = session_->limits();
    if (kind == TextKind::kYomi && !limits.yomiFields) return E_NOTIMPL;
    const std::size_t length = SysStringLen(value);
    if (length > LongestText(limits, kind)) return kTextTooLong;
    row_.texts.Set(static_cast<std::size_t>(text),
                   value ? std::u16string_view{value, length} : std::u16string_view{});
    if (kind == TextKind::kFileAs) row_.fileAsSet = true;
    changed_ = true;
    return S_OK;
  });
}

HRESULT ContactItem::Save() {
  return Guarded("IContact::Save", [&] {
    Store* store = session_->store();
    if (!store) return E_FAIL;
    const HRESULT status = oid_ == 0 ? StoreNew(*store) : StoreChanges(*store);
    if (Succeeded(status)) changed_ = false;
    return status;
  });
}

HRESULT ContactItem::StoreNew(Store& store) {
  std::uint32_t oid = 0;
  const HRESULT status = store.Write(nullptr, [&] { return InsertContact(store, row_, oid); });
  if (Succeeded(status)) oid_ = oid;
  return status;
}

HRESULT ContactItem::StoreChanges(Store& store) {
  bool found = false;
  const HRESULT status =
      changed_ ? store.Write(nullptr, [&] { return UpdateContact(store, oid_, row_, found); })
               : ContactExists(store, oid_, found);
  return Succeeded(status) && !found ? E_INVALIDARG : status;
}

HRESULT ContactItem::Delete() {
  return Guarded("IContact::Delete", [&] {
    Store* store = session_->store();
    if (!store) return E_FAIL;
    return DeleteStored(*store, list_, olContactItem, oid_);
  });
}

}  // namespace

HRESULT MakeContact(const SessionPtr& session, IDispatch** item) {
  *item = new ContactItem(session, {}, 0, {});
  return S_OK;
}

HRESULT LoadContact(const SessionPtr& session, const std::shared_ptr<ItemList>& list,
                    std::uint32_t oid, IDispatch** item) {
  ContactRow row;
  bool found = false;
  const HRESULT status = ReadContact(*session->store(), oid, row, found);
  if (Failed(status)) return status;
  // Another connection was quicker: what is left to delete is handed out without content.
  if (!found && !(list && list->HasDeleted())) return E_INVALIDARG;
  *item = new ContactItem(session, list, oid, std::move(row));
  return S_OK;
}

}  // namespace ce::host
