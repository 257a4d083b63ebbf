#include "agent/pim_import/category_list.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "agent/log/log.h"
#include "agent/pim_import/field_values.h"
#include "agent/vocabulary/contact_fields.h"
#include "platform/pocket_outlook.h"
#include "platform/status.h"

namespace corvane {

using namespace ce;

namespace {

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

HRESULT ParseXMLCategoriesList(IXMLDOMNode* container, BSTR* categories) {
  LOG(u"ParseXMLCategoriesList called");
  *categories = nullptr;
  CategoriesText names;
  HRESULT status = CollectCategories(container, &names);
  if (Succeeded(status) && !names.view().empty()) {
    Bstr text(names.view());
    if (!text) status = LastErrorStatus();
    *categories = text.detach();
  }
  LOG(u"returning %ld", status);
  return status;
}

}  // namespace corvane
