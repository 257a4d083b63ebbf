#include "tests/handheld/dom/dom_support.h"

#include <cstring>

namespace ce::testing {

std::string Repeated(std::string_view piece, int times) {
  std::string text;
  for (int i = 0; i < times; ++i) text += piece;
  return text;
}

std::string Utf16(std::u16string_view text, bool bigEndian) {
  std::string bytes;
  for (const char16_t unit : text) {
    const char low = static_cast<char>(unit & 0xFF);
    const char high = static_cast<char>(unit >> 8);
    bytes += bigEndian ? high : low;
    bytes += bigEndian ? low : high;
  }
  return bytes;
}

HRESULT LoadInto(const Document& document, std::string_view bytes) {
  Variant source;
  VARIANT* value = source.put();
  value->parray = SafeArrayCreateVector(VT_UI1, 0, static_cast<DWORD>(bytes.size()));
  if (!value->parray) return E_OUTOFMEMORY;
  value->vt = VT_ARRAY | VT_UI1;
  void* data = nullptr;
  HRESULT status = SafeArrayAccessData(value->parray, &data);
  if (Failed(status)) return status;
  std::memcpy(data, bytes.data(), bytes.size());
  status = SafeArrayUnaccessData(value->parray);
  if (Failed(status)) return status;
  VARIANT_BOOL successful = 42;
  status = document->load(source.get(), &successful);
  EXPECT_EQ(successful, Succeeded(status) ? VARIANT_TRUE : VARIANT_FALSE);
  return status;
}

Document Loaded(std::string_view bytes, bool preserveWhiteSpace) {
  Document document = MakeDocument();
  EXPECT_EQ(document->put_preserveWhiteSpace(preserveWhiteSpace ? VARIANT_TRUE : VARIANT_FALSE),
            S_OK);
  EXPECT_EQ(LoadInto(document, bytes), S_OK) << bytes.substr(0, 200);
  return document;
}

ComPtr<IXMLDOMAttribute> MakeAttribute(const Document& document, std::u16string_view name,
                                       std::u16string_view value) {
  ComPtr<IXMLDOMAttribute> attribute;
  if (Failed(document->createAttribute(Bstr(name).get(), attribute.put()))) return nullptr;
  const Bstr text(value);
  return Succeeded(attribute->put_value(Borrowed(text))) ? attribute : nullptr;
}

void SetAttribute(const Document& document, const ComPtr<IXMLDOMElement>& element,
                  std::u16string_view name, std::u16string_view value) {
  const ComPtr<IXMLDOMAttribute> attribute = MakeAttribute(document, name, value);
  ASSERT_TRUE(attribute);
  Node set;
  ASSERT_EQ(AttributesOf(element.get())->setNamedItem(attribute.get(), set.put()), S_OK);
  EXPECT_EQ(set.get(), attribute.get());
}

ComPtr<IXMLDOMNamedNodeMap> AttributesOf(IXMLDOMNode* element) {
  ComPtr<IXMLDOMNamedNodeMap> map;
  EXPECT_EQ(element->get_attributes(map.put()), S_OK);
  return map;
}

Node AttributeOf(IXMLDOMNode* element, std::u16string_view name) {
  Node attribute;
  EXPECT_EQ(AttributesOf(element)->getNamedItem(Bstr(name).get(), attribute.put()), S_OK);
  return attribute;
}

VARIANT Borrowed(const Bstr& text) {
  VARIANT value;
  value.vt = VT_BSTR;
  value.bstrVal = text.get();
  return value;
}

void AppendChain(const Document& document, const ComPtr<IXMLDOMElement>& parent, int count) {
  ComPtr<IXMLDOMElement> deepest = parent;
  for (int i = 0; i < count; ++i) {
    auto child = MakeElement(document, u"d");
    Append(deepest, child);
    deepest = child;
  }
}

Node FirstChild(IXMLDOMNode* node) {
  Node child;
  const HRESULT status = node->get_firstChild(child.put());
  EXPECT_EQ(status, child ? S_OK : S_FALSE);
  return child;
}

Node NextSibling(IXMLDOMNode* node) {
  Node sibling;
  const HRESULT status = node->get_nextSibling(sibling.put());
  EXPECT_EQ(status, sibling ? S_OK : S_FALSE);
  return sibling;
}

ComPtr<IXMLDOMElement> Root(const Document& document) {
  ComPtr<IXMLDOMElement> root;
  const HRESULT status = document->get_documentElement(root.put());
  EXPECT_EQ(status, root ? S_OK : S_FALSE);
  return root;
}

std::u16string NameOf(IXMLDOMNode* node) {
  Bstr name;
  EXPECT_EQ(node->get_nodeName(name.put()), S_OK);
  return std::u16string(name.view());
}

std::u16string ValueOf(IXMLDOMNode* node) {
  Variant value;
  const HRESULT status = node->get_nodeValue(value.put());
  if (value.get().vt == VT_NULL) {
    EXPECT_EQ(status, S_FALSE);
    return u"(null)";
  }
  EXPECT_EQ(status, S_OK);
  EXPECT_EQ(value.get().vt, VT_BSTR);
  return std::u16string(value.text());
}

std::u16string Outline(IXMLDOMNode* node) {
  std::u16string outline = NameOf(node);
  const std::u16string value = ValueOf(node);
  if (value != u"(null)") return outline + u"=" + value;
  outline += u"(";
  for (Node child = FirstChild(node); child; child = NextSibling(child.get())) {
    if (outline.back() != u'(') outline += u",";
    outline += Outline(child.get());
  }
  return outline + u")";
}

}  // namespace ce::testing
