// Values of a record's fields. A field is the child element of its name, its value the text of that
// element's first child node. A node converts to its ChildElements.
//
// The convention of all readers: S_OK, the value was read; E_FAIL, the field is missing or has no
// text, so the reader of the record clears the property; E_INVALIDARG, the text is no date; any
// other code comes from below. Out-parameters are left alone unless a value was read.
#pragma once

#include <utility>

#include "agent/pim_import/child_elements.h"
#include "platform/com_ptr.h"
#include "platform/status.h"
#include "platform/xml_dom.h"

// Early return of a record's readers. A record fails with every code but S_OK, the positive ones
// included: a date that was sent and does not exist must not get lost behind a success.
#define RETURN_UNLESS_OK(expression)                                                   \
  do {                                                                                 \
    if (const ce::HRESULT status_ = (expression); status_ != ce::S_OK) return status_; \
  } while (false)

namespace corvane {

// Calls `visit(child, name)` for every child. A visit that answers anything but S_OK ends the walk.
// The status of the last step: S_FALSE behind the last child.
template <typename Visitor>
ce::HRESULT ForEachChild(ce::IXMLDOMNode* node, Visitor visit) {
  ce::ComPtr<ce::IXMLDOMNode> child;
  ce::HRESULT status = node->get_firstChild(child.put());
  while (ce::Succeeded(status) && child) {
    ce::Bstr name;
    RETURN_IF_FAILED(child->get_nodeName(name.put()));
    RETURN_UNLESS_OK(visit(child.get(), name));
    ce::ComPtr<ce::IXMLDOMNode> next;
    status = child->get_nextSibling(next.put());
    child = std::move(next);
  }
  return status;
}

// As ChildElements::Find.
ce::HRESULT FindChildElement(const ChildElements& parent, const ce::WCHAR* name,
                             ce::IXMLDOMNode** child);

// `value`, an empty variant, receives a VT_BSTR that the caller clears.
ce::HRESULT GetChildValue(const ChildElements& parent, const ce::WCHAR* name, ce::VARIANT* value);

// The same for a node itself instead of its child of a name.
ce::HRESULT GetNodeText(ce::IXMLDOMNode* node, ce::VARIANT* value);

// With every bare line feed turned into carriage return and line feed. The caller owns the text.
ce::HRESULT GetChildMultilineText(const ChildElements& parent, const ce::WCHAR* name,
                                  ce::BSTR* text);

// "20080215", whatever follows it, as the date stands. A date that does not exist gives the last
// error, which is positive, and no date.
ce::HRESULT GetChildDate(const ChildElements& parent, const ce::WCHAR* name, ce::DATE* date);
ce::HRESULT GetDateFromString(const ce::WCHAR* text, ce::DATE* date);

// "20080215T134501" in UTC, as a date of the handheld's zone.
ce::HRESULT GetChildDateTime(const ChildElements& parent, const ce::WCHAR* name, ce::DATE* date);

// 1 for exactly "TRUE", 0 for exactly "FALSE", otherwise the default. Always S_OK.
ce::HRESULT GetChildBool(const ChildElements& parent, const ce::WCHAR* name, ce::LONG* value,
                         ce::LONG defaultValue);

// Always S_OK.
ce::HRESULT GetChildLongDefault(const ChildElements& parent, const ce::WCHAR* name, ce::LONG* value,
                                ce::LONG defaultValue);
ce::HRESULT GetChildLong(const ChildElements& parent, const ce::WCHAR* name, ce::LONG* value);

}  // namespace corvane
