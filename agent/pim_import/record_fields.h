// The rules by which the fields of every kind of record are read: a field that is missing, or has
// no text, is read as the value that clears its property.
//
// The answer is S_OK or why the record fails (RETURN_UNLESS_OK).
#pragma once

#include "agent/pim_import/field_values.h"
#include "agent/vocabulary/calendar_words.h"
#include "platform/com_ptr.h"
#include "platform/xml_dom.h"

namespace corvane {

// Otherwise the empty text.
ce::HRESULT ReadText(const ChildElements& record, const ce::WCHAR* element, ce::Bstr* text);
// The same with every bare line feed turned into carriage return and line feed.
ce::HRESULT ReadMultilineText(const ChildElements& record, const ce::WCHAR* element,
                              ce::Bstr* text);
// The names of the container, joined; otherwise the empty text.
ce::HRESULT ReadCategories(const ChildElements& record, const ce::WCHAR* element, ce::Bstr* names);
// As the date stands; otherwise kNoDate.
ce::HRESULT ReadDate(const ChildElements& record, const ce::WCHAR* element, ce::DATE* date);
// From UTC to a date of the handheld's zone; otherwise kNoDate.
ce::HRESULT ReadDateTime(const ChildElements& record, const ce::WCHAR* element, ce::DATE* date);
// VARIANT_TRUE for exactly "TRUE". Always S_OK.
ce::HRESULT ReadFlag(const ChildElements& record, const ce::WCHAR* element, ce::VARIANT_BOOL* flag);

template <typename Item>
ce::HRESULT PutText(const ChildElements& record, const ce::WCHAR* element, Item* item,
                    ce::HRESULT (Item::*put)(ce::BSTR)) {
  ce::Bstr text;
  RETURN_UNLESS_OK(ReadText(record, element, &text));
  return (item->*put)(text.get());
}

template <typename Item>
ce::HRESULT PutCategories(const ChildElements& record, const ce::WCHAR* element, Item* item,
                          ce::HRESULT (Item::*put)(ce::BSTR)) {
  ce::Bstr names;
  RETURN_UNLESS_OK(ReadCategories(record, element, &names));
  return (item->*put)(names.get());
}

// `*flag` receives what is put.
template <typename Item>
ce::HRESULT PutFlag(const ChildElements& record, const ce::WCHAR* element, Item* item,
                    ce::HRESULT (Item::*put)(ce::VARIANT_BOOL), ce::VARIANT_BOOL* flag) {
  RETURN_UNLESS_OK(ReadFlag(record, element, flag));
  return (item->*put)(*flag);
}

template <typename Item>
ce::HRESULT PutPrivacy(const ChildElements& record, Item* item) {
  ce::VARIANT_BOOL isPrivate = ce::VARIANT_FALSE;
  RETURN_UNLESS_OK(ReadFlag(record, kPrivateElement, &isPrivate));
  return item->put_Sensitivity(isPrivate ? ce::olPrivate : ce::olNormal);
}

// What a present note that cannot be read means: the record fails, or there is none.
enum class UnreadableNotes { kFail, kNone };

// An unchanged note is not written back: the device may hold it in a form of its own.
template <typename Item>
ce::HRESULT PutNotes(const ChildElements& record, const ce::WCHAR* element, Item* item,
                     ce::HRESULT (Item::*get)(ce::BSTR*), ce::HRESULT (Item::*put)(ce::BSTR),
                     UnreadableNotes unreadable) {
  ce::Bstr text;
  RETURN_UNLESS_OK(ReadMultilineText(record, element, &text));
  ce::Bstr present;
  const ce::HRESULT status = (item->*get)(present.put());
  if (status != ce::S_OK) {
    if (unreadable == UnreadableNotes::kFail) return status;
    static_cast<void>(present.put());
  }
  return text.view() == present.view() ? ce::S_OK : (item->*put)(text.get());
}

}  // namespace corvane
