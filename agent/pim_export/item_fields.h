// What the fields of appointments and tasks have in common.
#pragma once

#include "agent/log/log.h"
#include "agent/pim_export/categories_to_xml.h"
#include "agent/pim_export/ink_to_xml.h"
#include "agent/pim_export/recurrence_to_xml.h"
#include "agent/vocabulary/calendar_words.h"
#include "agent/xml/values.h"
#include "platform/com_ptr.h"
#include "platform/pocket_outlook_calendar.h"
#include "platform/status.h"
#include "platform/xml_dom.h"

namespace corvane {

// A record that is being written, and its item. All borrowed.
template <typename Item>
struct ItemRecord {
  ce::IXMLDOMDocument* document;
  ce::IXMLDOMElement* element;
  Item* item;
};

template <typename Item, typename Value>
using ItemGetter = ce::HRESULT (Item::*)(Value*);

template <typename Item>
ce::HRESULT AddItemText(const ItemRecord<Item>& record, const ce::WCHAR* name,
                        ItemGetter<Item, ce::BSTR> get) {
  ce::Bstr text;
  RETURN_IF_FAILED((record.item->*get)(text.put()));
  return AddBSTRElement(record.document, record.element, name, text.address());
}

template <typename Item>
ce::HRESULT AddItemSubject(const ItemRecord<Item>& record) {
  ce::Bstr text;
  RETURN_IF_FAILED(record.item->get_Subject(text.put()));
  LOG(u"Got Subject %s", text);
  return AddBSTRElement(record.document, record.element, kSubjectElement, text.address());
}

template <typename Item>
ce::HRESULT AddItemCategories(const ItemRecord<Item>& record) {
  ce::Bstr names;
  RETURN_IF_FAILED(record.item->get_Categories(names.put()));
  return AddCategoriesToXML(record.document, record.element, kCategoriesElement, names.address());
}

// TRUE or no element. `*flag` receives the value.
template <typename Item>
ce::HRESULT AddItemFlag(const ItemRecord<Item>& record, const ce::WCHAR* name,
                        ItemGetter<Item, ce::VARIANT_BOOL> get, bool* flag) {
  ce::VARIANT_BOOL value = ce::VARIANT_FALSE;
  RETURN_IF_FAILED((record.item->*get)(&value));
  *flag = value != ce::VARIANT_FALSE;
  return *flag ? AddBoolElement(record.document, record.element, name, ce::TRUE) : ce::S_OK;
}

template <typename Item>
ce::HRESULT AddItemLong(const ItemRecord<Item>& record, const ce::WCHAR* name,
                        ItemGetter<Item, ce::LONG> get) {
  ce::LONG value = 0;
  RETURN_IF_FAILED((record.item->*get)(&value));
  return AddLongElement(record.document, record.element, name, value);
}

template <typename Item>
ce::HRESULT AddItemPrivacy(const ItemRecord<Item>& record) {
  ce::LONG sensitivity = ce::olNormal;
  RETURN_IF_FAILED(record.item->get_Sensitivity(&sensitivity));
  if (sensitivity != ce::olPrivate) return ce::S_OK;
  return AddBoolElement(record.document, record.element, kPrivateElement, ce::TRUE);
}

template <typename Item>
ce::HRESULT AddItemRecurrence(const ItemRecord<Item>& record, bool withExceptions) {
  ce::ComPtr<ce::IRecurrencePattern> pattern;
  RETURN_IF_FAILED(record.item->GetRecurrencePattern(pattern.put()));
  return AddRecurrenceToChild(record.document, record.element, pattern.get(), withExceptions);
}

template <typename Item>
ce::HRESULT AddItemInk(const ItemRecord<Item>& record) {
  ce::DWORD bytes = 0;
  const ce::BYTE* block = nullptr;
  const ce::HRESULT read = record.item->get_BodyInk(&bytes, &block);
  return AddInkToXML(record.document, record.element, kBodyInkElement, read, bytes, block);
}

}  // namespace corvane
