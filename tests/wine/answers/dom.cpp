#include "tests/wine/answers/dom.h"

#include <cstring>

#include "tests/wine/answers/answers.h"

namespace answers {
namespace {

// What has been handed out, freed.
Wide Taken(BSTR text) {
  const Wide taken(text ? text : Wide().c_str(), SysStringLen(text));
  SysFreeString(text);
  return taken;
}

std::string ValueOf(IXMLDOMNode& node) {
  VARIANT value{};
  VariantInit(&value);
  const HRESULT status = node.get_nodeValue(&value);
  if (status == S_FALSE && value.vt == VT_NULL) return "";
  if (status != S_OK || value.vt != VT_BSTR) return " has no value: " + Status(status);
  return "=" + Printable(Taken(value.bstrVal));
}

std::string AttributesOf(IXMLDOMNode& node) {
  const auto map = Given<IXMLDOMNamedNodeMap>([&](auto out) { node.get_attributes(out); });
  std::string outline;
  if (!map) return outline;
  for (const char* name : {"a", "b", "c", "xmlns", "p:a", "xml:lang"}) {
    const Text wide(FromUtf8(name));
    const auto item = Given<IXMLDOMNode>([&](auto out) { map->getNamedItem(wide, out); });
    if (item) outline += std::string(" @") + name + ValueOf(*item);
  }
  return outline;
}

}  // namespace

std::string Status(HRESULT status) {
  return status < 0 ? "failed" : Number(std::int64_t{status});
}

bool Load(IXMLDOMDocument& document, std::string_view bytes) {
  VARIANT source{};
  source.vt = VT_ARRAY | VT_UI1;
  source.parray = SafeArrayCreateVector(VT_UI1, 0, static_cast<DWORD>(bytes.size()));
  void* data = nullptr;
  SafeArrayAccessData(source.parray, &data);
  if (!bytes.empty()) std::memcpy(data, bytes.data(), bytes.size());
  SafeArrayUnaccessData(source.parray);
  VARIANT_BOOL successful = VARIANT_FALSE;
  const HRESULT status = document.load(source, &successful);
  VariantClear(&source);
  return status == S_OK && successful == VARIANT_TRUE;
}

std::string Outline(IXMLDOMNode& node) {
  BSTR name = nullptr;
  node.get_nodeName(&name);
  std::string outline = Printable(Taken(name)) + ValueOf(node) + AttributesOf(node);
  auto child = Given<IXMLDOMNode>([&](auto out) { node.get_firstChild(out); });
  if (!child) return outline;
  outline += "(";
  while (child) {
    outline += Outline(*child);
    child = Given<IXMLDOMNode>([&](auto out) { child->get_nextSibling(out); });
    if (child) outline += ", ";
  }
  return outline + ")";
}

}  // namespace answers
