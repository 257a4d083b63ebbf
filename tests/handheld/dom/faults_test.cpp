#include <string>

#include "handheld/base/fault.h"
#include "platform/status.h"
#include "tests/handheld/dom/dom_support.h"
#include "tests/support/fault_runs.h"

namespace ce::testing {
namespace {

using host::FaultPlan;

HRESULT Make(Document& document) {
  return CoCreateInstance(CLSID_DOMDocument, nullptr, CLSCTX_INPROC_SERVER, IXMLDOMDocument::kIid,
                          document.put_void());
}

HRESULT AddValue(const Document& document, const ComPtr<IXMLDOMElement>& parent) {
  const Bstr name(u"FileAs");
  const Bstr value(u"Smith");
  if (!name || !value) return E_OUTOFMEMORY;
  ComPtr<IXMLDOMElement> element;
  RETURN_IF_FAILED(document->createElement(name.get(), element.put()));
  ComPtr<IXMLDOMText> text;
  RETURN_IF_FAILED(document->createTextNode(value.get(), text.put()));
  RETURN_IF_FAILED(parent->appendChild(element.get(), nullptr));
  return element->appendChild(text.get(), nullptr);
}

HRESULT AddAttribute(const Document& document, const ComPtr<IXMLDOMElement>& element) {
  const Bstr name(u"Oid");
  ComPtr<IXMLDOMAttribute> attribute;
  RETURN_IF_FAILED(document->createAttribute(name.get(), attribute.put()));
  const Bstr text(u"7");
  if (!text) return E_OUTOFMEMORY;
  RETURN_IF_FAILED(attribute->put_value(Borrowed(text)));
  ComPtr<IXMLDOMNamedNodeMap> map;
  RETURN_IF_FAILED(element->get_attributes(map.put()));
  Node set;
  return map->setNamedItem(attribute.get(), set.put());
}

HRESULT BuildAndSave(std::string& saved) {
  Document document;
  RETURN_IF_FAILED(Make(document));
  const Bstr target(u"XML");
  const Bstr data(u"version=\"1.0\"");
  if (!target || !data) return E_OUTOFMEMORY;
  ComPtr<IXMLDOMProcessingInstruction> instruction;
  RETURN_IF_FAILED(
      document->createProcessingInstruction(target.get(), data.get(), instruction.put()));
  RETURN_IF_FAILED(document->appendChild(instruction.get(), nullptr));
  const Bstr name(u"root");
  ComPtr<IXMLDOMElement> root;
  RETURN_IF_FAILED(document->createElement(name.get(), root.put()));
  Node appended;
  RETURN_IF_FAILED(document->appendChild(root.get(), appended.put()));
  RETURN_IF_FAILED(AddAttribute(document, root));
  RETURN_IF_FAILED(AddValue(document, root));
  BufferStream stream;
  const HRESULT status = SaveTo(document, &stream);
  saved = stream.content();
  return status;
}

HRESULT Walk(IXMLDOMNode* node, std::u16string& text) {
  Bstr name;
  RETURN_IF_FAILED(node->get_nodeName(name.put()));
  Variant value;
  RETURN_IF_FAILED(node->get_nodeValue(value.put()));
  text += std::u16string(name.view()) + u'=' + std::u16string(value.text()) + u';';
  ComPtr<IXMLDOMNamedNodeMap> map;
  RETURN_IF_FAILED(node->get_attributes(map.put()));
  if (map) {
    const Bstr oid(u"Oid");
    if (!oid) return E_OUTOFMEMORY;
    Node item;
    RETURN_IF_FAILED(map->getNamedItem(oid.get(), item.put()));
    if (item) RETURN_IF_FAILED(Walk(item.get(), text));
  }
  Node child;
  RETURN_IF_FAILED(node->get_firstChild(child.put()));
  while (child) {
    RETURN_IF_FAILED(Walk(child.get(), text));
    Node next;
    RETURN_IF_FAILED(child->get_nextSibling(next.put()));
    child = next;
  }
  return S_OK;
}

HRESULT LoadAndWalk(std::u16string& text) {
  Document document;
  RETURN_IF_FAILED(Make(document));
  ComPtr<IObjectSafety> safety;
  RETURN_IF_FAILED(document->QueryInterface(IObjectSafety::kIid, safety.put_void()));
  DWORD supported = 0;
  DWORD enabled = 0;
  RETURN_IF_FAILED(safety->GetInterfaceSafetyOptions(IXMLDOMDocument::kIid, &supported, &enabled));
  RETURN_IF_FAILED(safety->SetInterfaceSafetyOptions(IXMLDOMDocument::kIid, supported, 0));
  RETURN_IF_FAILED(document->put_validateOnParse(VARIANT_FALSE));
  RETURN_IF_FAILED(document->put_resolveExternals(VARIANT_FALSE));
  RETURN_IF_FAILED(document->put_preserveWhiteSpace(VARIANT_FALSE));
  RETURN_IF_FAILED(
      LoadInto(document, "<root><CONTACT Oid='7'><FileAs>Smith</FileAs></CONTACT></root>"));
  ComPtr<IXMLDOMElement> root;
  RETURN_IF_FAILED(document->get_documentElement(root.put()));
  const Bstr name(u"CONTACT");
  if (!name) return E_OUTOFMEMORY;
  Node contact;
  RETURN_IF_FAILED(root->selectSingleNode(name.get(), contact.put()));
  return Walk(root.get(), text);
}

class DomFaults : public DomTest {
 protected:
  // Each failing call must be told and leave nothing behind.
  template <typename Result>
  static void ExpectTold(HRESULT (*run)(Result&), const Result& expected) {
    Result result;
    const auto check = [&](HRESULT status, const std::string& call) {
      EXPECT_EQ(host::LiveComObjects(), 0);
      if (call.empty()) {
        EXPECT_EQ(status, S_OK);
        EXPECT_EQ(result, expected);
        return;
      }
      // A name that could not be allocated is no name.
      EXPECT_TRUE(status == E_OUTOFMEMORY || status == static_cast<HRESULT>(0x80070008) ||
                  (status == E_INVALIDARG && call == "SysAllocString"))
          << std::hex << status;
    };
    const auto calls = corvane::testing::FailEachCall(
        ERROR_NOT_ENOUGH_MEMORY, [&] { return run(result = {}); }, check);
    EXPECT_GT(calls, 20u);
  }
};

TEST_F(DomFaults, BuildAndSave) {
  ExpectTold<std::string>(BuildAndSave,
                          "<?XML version=\"1.0\"?><root Oid=\"7\"><FileAs>Smith</FileAs></root>");
}

TEST_F(DomFaults, LoadAndWalk) {
  ExpectTold<std::u16string>(LoadAndWalk, u"root=;CONTACT=;Oid=7;FileAs=;#text=Smith;");
}

TEST_F(DomFaults, AFaultOfItsOwnReachesTheCaller) {
  const Document document = Loaded("<r/>");
  const auto plan =
      FaultPlan::FailCalls("IXMLDOMDocument::load", static_cast<DWORD>(E_ACCESSDENIED));
  EXPECT_EQ(LoadInto(document, "<s/>"), E_ACCESSDENIED);
}

}  // namespace
}  // namespace ce::testing
