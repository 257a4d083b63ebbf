#include "tests/handheld/dom/dom_support.h"

#include <cstring>

namespace ce::testing {

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
  VARIANT variant;
  variant.vt = VT_BSTR;
  variant.bstrVal = text.get();
  return Succeeded(attribute->put_value(variant)) ? attribute : nullptr;
}

void SetAttribute(const Document& document, const ComPtr<IXMLDOMElement>& element,
                  std::u16string_view name, std::u16string_view value) {
  const ComPtr<IXMLDOMAttribute> attribute = MakeAttribute(document, name, value);
  ASSERT_TRUE(attribute);
  ComPtr<IXMLDOMNamedNodeMap> map;
  ASSERT_EQ(element->get_attributes(map.put()), S_OK);
  Node set;
  ASSERT_EQ(map->setNamedItem(attribute.get(), set.put()), S_OK);
  EXPECT_EQ(set.get(), attribute.get());
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
