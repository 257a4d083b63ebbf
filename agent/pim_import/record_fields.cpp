#include "agent/pim_import/record_fields.h"

#include "agent/pim_import/category_list.h"
#include "agent/pim_import/field_values.h"
#include "platform/status.h"

namespace corvane {

using namespace ce;

namespace {

HRESULT EmptyWhenMissing(HRESULT status, Bstr* text) {
  if (status != E_FAIL) return status;
  *text = Bstr(u"");
  return S_OK;
}

HRESULT NoDateWhenMissing(HRESULT status, DATE* date) {
  if (status != E_FAIL) return status;
  *date = kNoDate;
  return S_OK;
}

}  // namespace

HRESULT ReadText(const ChildElements& record, const WCHAR* element, Bstr* text) {
  VARIANT value;
  const HRESULT status = GetChildValue(record, element, &value);
  if (status == S_OK) text->attach(value.bstrVal);
  return EmptyWhenMissing(status, text);
}

HRESULT ReadMultilineText(const ChildElements& record, const WCHAR* element, Bstr* text) {
  return EmptyWhenMissing(GetChildMultilineText(record, element, text->put()), text);
}

HRESULT ReadCategories(const ChildElements& record, const WCHAR* element, Bstr* names) {
  ComPtr<IXMLDOMNode> list;
  const HRESULT status = FindChildElement(record, element, list.put());
  if (status != S_OK) return EmptyWhenMissing(status, names);
  const HRESULT parsed = ParseXMLCategoriesList(list.get(), names->put());
  if (parsed != S_OK && parsed != S_FALSE) return parsed;
  if (!*names) *names = Bstr(u"");
  return S_OK;
}

HRESULT ReadDate(const ChildElements& record, const WCHAR* element, DATE* date) {
  return NoDateWhenMissing(GetChildDate(record, element, date), date);
}

HRESULT ReadDateTime(const ChildElements& record, const WCHAR* element, DATE* date) {
  return NoDateWhenMissing(GetChildDateTime(record, element, date), date);
}

HRESULT ReadFlag(const ChildElements& record, const WCHAR* element, VARIANT_BOOL* flag) {
  LONG value = 0;
  const HRESULT status = GetChildBool(record, element, &value, 0);
  *flag = value ? VARIANT_TRUE : VARIANT_FALSE;
  return status;
}

}  // namespace corvane
