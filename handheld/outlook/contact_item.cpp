#include <string>

#include "common/text/unicode.h"
#include "handheld/outlook/stored_item.h"

namespace ce::host {
namespace {

using ContactBase = ItemBase<IContact, ContactFields>;

// "Last, First", or the company; no longer than what put_FileAs takes.
std::u16string DerivedFileAs(const ContactFields& fields, std::size_t limit) {
  std::u16string name = text::FromWtf8(fields.texts[ContactText::kLastName]);
  const std::u16string first = text::FromWtf8(fields.texts[ContactText::kFirstName]);
  if (!name.empty() && !first.empty()) name += u", ";
  name += first;
  if (name.empty()) name = text::FromWtf8(fields.texts[ContactText::kCompanyName]);
  if (name.size() > limit) {
    const bool splitsPair = limit > 0 && (name[limit - 1] & 0xFC00) == 0xD800;
    name.resize(splitsPair ? limit - 1 : limit);
  }
  return name;
}

class ContactItem final : public StoredItem<ContactBase> {
 public:
  ContactItem(SessionPtr session, std::weak_ptr<ItemList> list, std::uint32_t oid, ContactRow row)
      : StoredItem(std::move(session), std::move(list), oid, std::move(row.fields)) {}

#define CE_CONTACT_TEXT(Name, Kind) CE_ITEM_TEXT(IContact, ContactText, Name)
  CE_CONTACT_TEXTS(CE_CONTACT_TEXT)
#undef CE_CONTACT_TEXT
  CE_ITEM_VALUE(IContact, Birthday, DATE, birthday, Take(fields.birthday, value, IsItemDate(value)))
  CE_ITEM_VALUE(IContact, Anniversary, DATE, anniversary,
                Take(fields.anniversary, value, IsItemDate(value)))

 private:
  ~ContactItem() override = default;

  HRESULT GetText(const char* call, ContactText text, BSTR* value);
  HRESULT PutText(const char* call, ContactText text, BSTR value);
  // One that this handheld does not have.
  bool IsMissing(ContactText text) const {
    return !session_->limits().yomiFields &&
           kContactTexts[static_cast<std::size_t>(text)].kind == TextKind::kYomi;
  }
};

HRESULT ContactItem::GetText(const char* call, ContactText text, BSTR* value) {
  const bool isDerived =
      text == ContactText::kFileAs && !fields_.texts.IsSet(static_cast<std::size_t>(text));
  if (!isDerived && !IsMissing(text)) return ContactBase::GetText(call, text, value);
  if (!value) return E_POINTER;
  *value = nullptr;
  return Guarded(call, [&] {
    if (!isDerived) return E_NOTIMPL;
    const std::u16string name = DerivedFileAs(fields_, session_->limits().text);
    *value = SysAllocStringLen(name.data(), static_cast<UINT>(name.size()));
    return *value ? S_OK : E_OUTOFMEMORY;
  });
}

HRESULT ContactItem::PutText(const char* call, ContactText text, BSTR value) {
  if (!IsMissing(text)) return ContactBase::PutText(call, text, value);
  return Guarded(call, [] { return E_NOTIMPL; });
}

HRESULT MakeContact(const SessionPtr& session, IDispatch** item) {
  *item = new ContactItem(session, {}, 0, {});
  return S_OK;
}

}  // namespace

const ItemKind kContacts{olFolderContacts, &ListItems<ContactFields>, &DeleteItem<ContactFields>,
                         &MakeContact, &LoadItem<ContactItem>};

}  // namespace ce::host
