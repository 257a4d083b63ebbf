// The contact vocabulary: one row a field, in the order of the wire.
#pragma once

#include <span>

#include "platform/pocket_outlook.h"

namespace corvane {

inline constexpr const ce::WCHAR* kContactElement = u"CONTACT";
inline constexpr const ce::WCHAR* kContact2Element = u"Contact2";

inline constexpr const ce::WCHAR* kEmailElement = u"EMAIL_ADDRESS";
inline constexpr const ce::WCHAR* kEmailNameElement = u"NAME";
inline constexpr const ce::WCHAR* kEmailTypeElement = u"TYPE";
inline constexpr const ce::WCHAR* kCategoryElement = u"CATEGORY";
inline constexpr const ce::WCHAR* kCategoryNameElement = u"Name";

enum class ContactFieldKind {
  kEmailList,      // a container; see ContactEmailSlots
  kText,           // one line
  kMultilineText,  // a bare line feed becomes CR LF on import
  kCategoryList,   // a container over one comma-separated property
  kNotes,          // multi-line; written on import only when it changes
  kInk,            // a flag on export, never imported
  kYomiText,       // on Japanese systems only; a handheld without it answers E_NOTIMPL
  kDate,
};

using ContactTextGetter = ce::HRESULT (ce::IContact::*)(ce::BSTR*);
using ContactTextSetter = ce::HRESULT (ce::IContact::*)(ce::BSTR);
using ContactDateGetter = ce::HRESULT (ce::IContact::*)(ce::DATE*);
using ContactDateSetter = ce::HRESULT (ce::IContact::*)(ce::DATE);

// The accessors are those of the kind's value; the others are null.
struct ContactField {
  const ce::WCHAR* element = nullptr;
  ContactFieldKind kind = ContactFieldKind::kText;
  ContactTextGetter getText = nullptr;
  ContactTextSetter putText = nullptr;
  ContactDateGetter getDate = nullptr;
  ContactDateSetter putDate = nullptr;
  // What the exporter logs once the value was read, with the text as the argument.
  const ce::WCHAR* valueTrace = nullptr;
  // What the exporter logs after the attempt to read, failed or not, with the status.
  const ce::WCHAR* statusTrace = nullptr;
  // How many rows further down the key list names the field.
  int keyShift = 0;
};

std::span<const ContactField> ContactFields();

// All of them, in the order of the key list.
std::span<const ContactField* const> ContactKeyFields();

struct ContactEmailSlot {
  const ce::WCHAR* type;  // the text of "TYPE"
  ContactTextGetter get;
  ContactTextSetter put;
};

std::span<const ContactEmailSlot> ContactEmailSlots();

}  // namespace corvane
