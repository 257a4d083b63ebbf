#include "handheld/dom/document.h"

#include <algorithm>
#include <new>
#include <span>
#include <utility>

#include "common/text/xml_text.h"
#include "handheld/automation/com_classes.h"
#include "handheld/base/guarded.h"
#include "handheld/dom/known_names.h"
#include "handheld/dom/loader.h"
#include "handheld/dom/nodes.h"
#include "handheld/dom/serializer.h"

namespace ce::host {
namespace dom {
namespace {

using methods::HandOutNew;
using methods::View;

// Safe for scripts' callers (1) and for untrusted data (2).
constexpr DWORD kSafetyOptions = 3;

// What a document may cost beside its own bytes, whatever it holds: more than any does.
std::size_t MostMemory(std::size_t bytes) {
  constexpr std::size_t kTimes = 7;
  constexpr std::size_t kLeast = 4096;
  return kTimes * bytes + kLeast;
}

// False for what is no name.
bool KeepName(Document& document, BSTR name, Name& kept) {
  kept = KnownName(View(name));
  if (!kept.text.empty()) return true;
  if (!text::IsXmlName(View(name))) return false;
  kept = {document.arena().Keep(View(name))};
  return true;
}

}  // namespace

void Document::Empty() {
  DropChildren();
  memory_.GiveBack();
  // Nodes that are held from outside stay, and their memory with them.
  if (nodes_.count() > 0) return;
  arena_.Clear();
  tapes_.clear();
}

void Document::Play(std::unique_ptr<const Tape> tape) {
  tapes_.push_back(std::move(tape));
  memory_.Keep(tapes_.back()->bytes());
  LieOn(*tapes_.back(), Tape::kDocument);
}

void* Document::ExtraInterface(const GUID& iid) {
  return iid == IObjectSafety::kIid ? static_cast<IObjectSafety*>(this) : nullptr;
}

HRESULT Document::get_documentElement(IXMLDOMElement** element) {
  return Guarded("IXMLDOMDocument::get_documentElement", element, [&] {
    auto* const root = static_cast<Element*>(MakeAnyChildElement());
    if (!root) return S_FALSE;
    *element = root;
    root->AddRef();
    return S_OK;
  });
}

HRESULT Document::createElement(BSTR name, IXMLDOMElement** element) {
  return Guarded("IXMLDOMDocument::createElement", element, [&] {
    dom::Name kept;
    if (!KeepName(*this, name, kept)) return E_INVALIDARG;
    return HandOutNew(new (*this) Element(this, kept), element);
  });
}

HRESULT Document::createTextNode(BSTR data, IXMLDOMText** text) {
  return Guarded("IXMLDOMDocument::createTextNode", text, [&] {
    return HandOutNew(new (*this) Text(NodeKind::kText, this, arena_.Keep(View(data))), text);
  });
}

HRESULT Document::createProcessingInstruction(BSTR target, BSTR data,
                                              IXMLDOMProcessingInstruction** instruction) {
  return Guarded("IXMLDOMDocument::createProcessingInstruction", instruction, [&] {
    dom::Name kept;
    if (!KeepName(*this, target, kept)) return E_INVALIDARG;
    return HandOutNew(new (*this) Instruction(this, kept.text, arena_.Keep(View(data))),
                      instruction);
  });
}

HRESULT Document::createAttribute(BSTR name, IXMLDOMAttribute** attribute) {
  return Guarded("IXMLDOMDocument::createAttribute", attribute, [&] {
    dom::Name kept;
    if (!KeepName(*this, name, kept)) return E_INVALIDARG;
    return HandOutNew(new (*this) Attribute(this, kept), attribute);
  });
}

HRESULT Document::load(VARIANT source, VARIANT_BOOL* successful) {
  return Guarded("IXMLDOMDocument::load", successful, [&] {
    if (source.vt == VT_EMPTY) {
      Empty();
      return S_FALSE;
    }
    if (source.vt != (VT_ARRAY | VT_UI1) || !source.parray) return E_INVALIDARG;
    void* data = nullptr;
    RETURN_IF_FAILED(SafeArrayAccessData(source.parray, &data));
    Empty();
    const std::span bytes(static_cast<const BYTE*>(data), SafeArrayGetCount(source.parray));
    memory_ = *SharedUploadMemory().Take(UploadMemory::Use::kTree, MostMemory(bytes.size()));
    HRESULT status = Load(*this, bytes, preserveWhiteSpace_,
                          std::min<std::size_t>(kMaxTreeBytes, memory_.bytes()));
    const HRESULT unaccess = SafeArrayUnaccessData(source.parray);
    if (Succeeded(status)) status = unaccess;
    if (Failed(status)) {
      Empty();
      return status;
    }
    *successful = VARIANT_TRUE;
    return S_OK;
  });
}

HRESULT Document::save(VARIANT target) {
  return Guarded("IXMLDOMDocument::save", [&] {
    if (target.vt != VT_UNKNOWN || !target.punkVal) return E_INVALIDARG;
    ComPtr<IStream> stream;
    const HRESULT status = target.punkVal->QueryInterface(IStream::kIid, stream.put_void());
    if (Failed(status)) return status == E_NOINTERFACE ? E_INVALIDARG : status;
    return Save(*this, stream.get());
  });
}

HRESULT Document::put_validateOnParse(VARIANT_BOOL) {
  return FaultStatus("IXMLDOMDocument::put_validateOnParse");
}

HRESULT Document::put_resolveExternals(VARIANT_BOOL) {
  return FaultStatus("IXMLDOMDocument::put_resolveExternals");
}

HRESULT Document::put_preserveWhiteSpace(VARIANT_BOOL on) {
  return Guarded("IXMLDOMDocument::put_preserveWhiteSpace", [&] {
    preserveWhiteSpace_ = on != VARIANT_FALSE;
    return S_OK;
  });
}

HRESULT Document::GetInterfaceSafetyOptions(const GUID&, DWORD* supported, DWORD* enabled) {
  if (!supported || !enabled) return E_POINTER;
  *supported = 0;
  *enabled = 0;
  return Guarded("IObjectSafety::GetInterfaceSafetyOptions", [&] {
    *supported = kSafetyOptions;
    *enabled = safety_;
    return S_OK;
  });
}

HRESULT Document::SetInterfaceSafetyOptions(const GUID&, DWORD mask, DWORD enabled) {
  return Guarded("IObjectSafety::SetInterfaceSafetyOptions", [&] {
    if (mask & ~kSafetyOptions) return E_FAIL;
    safety_ = (safety_ & ~mask) | (enabled & mask);
    return S_OK;
  });
}

}  // namespace dom

HRESULT CreateDomDocument(const GUID& iid, void** out) {
  *out = nullptr;
  auto* document = new (std::nothrow) dom::Document();
  if (!document) return E_OUTOFMEMORY;
  const HRESULT status = document->QueryInterface(iid, out);
  document->Release();
  return status;
}

}  // namespace ce::host
