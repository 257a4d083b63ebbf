#include "pim_import/contact_lists.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "base/status.h"
#include "log/log.h"
#include "pim_import/field_values.h"
#include "platform/com_ptr.h"
#include "platform/last_error.h"
#include "vocabulary/contact_fields.h"

namespace corvane {

using namespace ce;

namespace {

// Calls `visit(child, name)` for every child; the first failure ends the walk.
template <typename Visitor>
HRESULT ForEachChild(IXMLDOMNode* node, Visitor visit) {
  ComPtr<IXMLDOMNode> child;
  HRESULT status = node->get_firstChild(child.put());
  while (Succeeded(status) && child) {
    Bstr name;
    RETURN_IF_FAILED(child->get_nodeName(name.put()));
    RETURN_IF_FAILED(visit(child.get(), name));
    ComPtr<IXMLDOMNode> next;
    status = child->get_nextSibling(next.put());
    child = std::move(next);
  }
  return status;
}

HRESULT StoreAddress(IContact* contact, std::u16string_view type, const Bstr& address) {
  for (const ContactEmailSlot& slot : ContactEmailSlots()) {
    if (type == slot.type) return (contact->*slot.put)(address.get());
  }
  return S_OK;
}

// A node without text changes nothing.
HRESULT TakeText(IXMLDOMNode* node, Bstr* text) {
  VARIANT value;
  const HRESULT status = GetNodeText(node, &value);
  if (status == E_FAIL) return S_OK;
  RETURN_IF_FAILED(status);
  text->attach(value.bstrVal);
  return S_OK;
}

HRESULT ParseEmailAddress(IXMLDOMNode* entry, IContact* contact) {
  Bstr address;
  Bstr type;
  RETURN_IF_FAILED(ForEachChild(entry, [&](IXMLDOMNode* child, const Bstr& name) {
    if (name.view() == kEmailNameElement) return TakeText(child, &address);
    if (name.view() == kEmailTypeElement) return TakeText(child, &type);
    return S_OK;
  }));
  return address && type ? StoreAddress(contact, type.view(), address) : S_OK;
}

// The joined names, in the room that the device gives them.
class CategoriesText {
 public:
  HRESULT Append(std::u16string_view name) {
    const std::size_t comma = length_ > 0 ? 1 : 0;
    if (name.size() + comma > text_.size() - length_) return kTextTooLong;
    if (comma) text_[length_++] = u',';
    std::ranges::copy(name, text_.begin() + static_cast<std::ptrdiff_t>(length_));
    length_ += name.size();
    return S_OK;
  }
  std::u16string_view view() const { return {text_.data(), length_}; }

 private:
  std::array<WCHAR, kMaxCategoriesText> text_;
  std::size_t length_ = 0;
};

HRESULT CollectCategories(IXMLDOMNode* container, CategoriesText* names) {
  return ForEachChild(container, [&](IXMLDOMNode* child, const Bstr& elementName) {
    HRESULT status = S_OK;
    if (elementName.view() == kCategoryElement) {
      Variant name;
      status = GetChildValue(child, kCategoryNameElement, name.put());
      if (Succeeded(status)) status = names->Append(name.text());
    }
    LOG(u"bstrCntrName = %s", elementName);
    return status;
  });
}

}  // namespace

HRESULT ParseXMLEmailAddresses(IXMLDOMNode* container, IContact* contact) {
  LOG(u"ParseXMLEmailAddresses called");
  const HRESULT status = ForEachChild(container, [&](IXMLDOMNode* child, const Bstr& name) {
    HRESULT parsed = S_OK;
    if (name.view() == kEmailElement) {
      LOG(u"Found an email address container");
      parsed = ParseEmailAddress(child, contact);
    }
    LOG(u"bstrCntrName = %s", name);
    return parsed;
  });
  LOG(u"returning %ld", status);
  return status;
}

HRESULT ParseXMLCategoriesList(IXMLDOMNode* container, BSTR* categories) {
  LOG(u"ParseXMLCategoriesList called");
  *categories = nullptr;
  CategoriesText names;
  HRESULT status = CollectCategories(container, &names);
  if (Succeeded(status) && !names.view().empty()) {
    Bstr text(names.view());
    if (!text) status = static_cast<HRESULT>(GetLastError());
    *categories = text.detach();
  }
  LOG(u"returning %ld", status);
  return status;
}

}  // namespace corvane
