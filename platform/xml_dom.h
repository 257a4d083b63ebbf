// The XML document object model, as far as the agent uses it (MSXML's DOM interfaces).
//
// "Absent" is S_FALSE with a null out-parameter (get_firstChild, get_nextSibling, getNamedItem,
// selectSingleNode, get_documentElement). Nodes keep their document alive.
#pragma once

#include "platform/automation.h"
#include "platform/com.h"

namespace ce {

inline constexpr GUID CLSID_DOMDocument{
    0x2933BF90, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};

struct IXMLDOMNode;
struct IXMLDOMElement;
struct IXMLDOMText;
struct IXMLDOMAttribute;
struct IXMLDOMProcessingInstruction;

struct IXMLDOMNamedNodeMap : IDispatch {
  static constexpr GUID kIid{
      0x2933BF83, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};
  virtual HRESULT getNamedItem(BSTR name, IXMLDOMNode** item) = 0;
  // Replaces an attribute of the same name. `nameItem` receives the node that was set.
  virtual HRESULT setNamedItem(IXMLDOMNode* newItem, IXMLDOMNode** nameItem) = 0;

 protected:
  ~IXMLDOMNamedNodeMap() = default;
};

struct IXMLDOMNode : IDispatch {
  static constexpr GUID kIid{
      0x2933BF80, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};
  virtual HRESULT get_nodeName(BSTR* name) = 0;
  // VT_NULL and S_FALSE for elements and documents; VT_BSTR otherwise.
  virtual HRESULT get_nodeValue(VARIANT* value) = 0;
  virtual HRESULT get_firstChild(IXMLDOMNode** child) = 0;
  virtual HRESULT get_nextSibling(IXMLDOMNode** sibling) = 0;
  // S_FALSE and null for nodes other than elements.
  virtual HRESULT get_attributes(IXMLDOMNamedNodeMap** attributes) = 0;
  // `appended` may be null.
  virtual HRESULT appendChild(IXMLDOMNode* child, IXMLDOMNode** appended) = 0;
  // Only plain element names are understood: the first child element of that name. Anything else
  // is E_INVALIDARG.
  virtual HRESULT selectSingleNode(BSTR query, IXMLDOMNode** node) = 0;

 protected:
  ~IXMLDOMNode() = default;
};

struct IXMLDOMElement : IXMLDOMNode {
  static constexpr GUID kIid{
      0x2933BF86, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};

 protected:
  ~IXMLDOMElement() = default;
};

struct IXMLDOMText : IXMLDOMNode {
  static constexpr GUID kIid{
      0x2933BF87, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};

 protected:
  ~IXMLDOMText() = default;
};

struct IXMLDOMAttribute : IXMLDOMNode {
  static constexpr GUID kIid{
      0x2933BF85, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};
  // A VT_BSTR, borrowed; any other type is E_INVALIDARG.
  virtual HRESULT put_value(VARIANT value) = 0;

 protected:
  ~IXMLDOMAttribute() = default;
};

struct IXMLDOMProcessingInstruction : IXMLDOMNode {
  static constexpr GUID kIid{
      0x2933BF89, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};

 protected:
  ~IXMLDOMProcessingInstruction() = default;
};

struct IXMLDOMDocument : IXMLDOMNode {
  static constexpr GUID kIid{
      0x2933BF81, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};
  virtual HRESULT get_documentElement(IXMLDOMElement** element) = 0;
  virtual HRESULT createElement(BSTR name, IXMLDOMElement** element) = 0;
  virtual HRESULT createTextNode(BSTR data, IXMLDOMText** text) = 0;
  virtual HRESULT createProcessingInstruction(BSTR target, BSTR data,
                                              IXMLDOMProcessingInstruction** instruction) = 0;
  virtual HRESULT createAttribute(BSTR name, IXMLDOMAttribute** attribute) = 0;
  // A borrowed VT_ARRAY | VT_UI1 holding one document. Ill-formed input: a negative code and an
  // empty document. Replaces what was loaded before, also by nothing (VT_EMPTY: S_FALSE).
  virtual HRESULT load(VARIANT source, VARIANT_BOOL* successful) = 0;
  // A borrowed VT_UNKNOWN that answers IStream; UTF-8.
  virtual HRESULT save(VARIANT target) = 0;
  virtual HRESULT put_validateOnParse(VARIANT_BOOL on) = 0;
  virtual HRESULT put_resolveExternals(VARIANT_BOOL on) = 0;
  virtual HRESULT put_preserveWhiteSpace(VARIANT_BOOL on) = 0;

 protected:
  ~IXMLDOMDocument() = default;
};

struct IObjectSafety : IUnknown {
  static constexpr GUID kIid{
      0xCB5BDC81, 0x93C1, 0x11CF, {0x8F, 0x20, 0x00, 0x80, 0x5F, 0x2C, 0xD0, 0x64}};
  virtual HRESULT GetInterfaceSafetyOptions(const GUID& iid, DWORD* supported, DWORD* enabled) = 0;
  virtual HRESULT SetInterfaceSafetyOptions(const GUID& iid, DWORD mask, DWORD enabled) = 0;

 protected:
  ~IObjectSafety() = default;
};

}  // namespace ce
