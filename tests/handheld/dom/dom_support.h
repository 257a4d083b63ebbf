// What the tests of the document share: making, building, saving and loading one.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "handheld/base/com_object.h"
#include "platform/com_ptr.h"
#include "platform/xml_dom.h"

namespace ce::testing {

// Collects what is written to it. Lives on the stack; counts its references only to check them.
class BufferStream final : public IStream {
 public:
  ~BufferStream() { EXPECT_EQ(references_, 1u); }

  const std::string& content() const { return content_; }
  int writes() const { return writes_; }
  // From the n-th Write (1-based) on: answers this, taking nothing.
  void FailWrites(int n, HRESULT status) {
    failFrom_ = n;
    failure_ = status;
  }
  // Takes at most this many bytes a Write.
  void TakeAtMost(DWORD bytes) { most_ = bytes; }

  HRESULT QueryInterface(const GUID& iid, void** out) override {
    *out = iid == IStream::kIid || iid == IUnknown::kIid ? this : nullptr;
    if (!*out) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  DWORD AddRef() override { return ++references_; }
  DWORD Release() override { return --references_; }
  HRESULT Write(const void* buffer, DWORD bytes, DWORD* written) override {
    ++writes_;
    if (failFrom_ != 0 && writes_ >= failFrom_) return failure_;
    *written = bytes < most_ ? bytes : most_;
    content_.append(static_cast<const char*>(buffer), *written);
    return S_OK;
  }
  HRESULT Read(void*, DWORD, DWORD*) override { return E_FAIL; }
  HRESULT Seek(LONGLONG, DWORD, ULONGLONG*) override { return E_FAIL; }
  HRESULT SetSize(ULONGLONG) override { return E_FAIL; }
  HRESULT CopyTo(IStream*, ULONGLONG, ULONGLONG*, ULONGLONG*) override { return E_FAIL; }
  HRESULT Commit(DWORD) override { return E_FAIL; }
  HRESULT Revert() override { return E_FAIL; }
  HRESULT LockRegion(ULONGLONG, ULONGLONG, DWORD) override { return E_FAIL; }
  HRESULT UnlockRegion(ULONGLONG, ULONGLONG, DWORD) override { return E_FAIL; }
  HRESULT Stat(void*, DWORD) override { return E_FAIL; }
  HRESULT Clone(IStream**) override { return E_FAIL; }

 private:
  std::string content_;
  int writes_ = 0;
  int failFrom_ = 0;
  HRESULT failure_ = S_OK;
  DWORD most_ = 0xFFFFFFFF;
  DWORD references_ = 1;
};

using Document = ComPtr<IXMLDOMDocument>;
using Node = ComPtr<IXMLDOMNode>;

inline Document MakeDocument() {
  Document document;
  EXPECT_EQ(CoCreateInstance(CLSID_DOMDocument, nullptr, CLSCTX_INPROC_SERVER,
                             IXMLDOMDocument::kIid, document.put_void()),
            S_OK);
  return document;
}

inline HRESULT SaveTo(const Document& document, IStream* stream) {
  VARIANT target;
  target.vt = VT_UNKNOWN;
  target.punkVal = stream;
  return document->save(target);
}

inline std::string Saved(const Document& document) {
  BufferStream stream;
  EXPECT_EQ(SaveTo(document, &stream), S_OK);
  return stream.content();
}

// `piece` this many times.
std::string Repeated(std::string_view piece, int times);
// The units of `text` as bytes.
std::string Utf16(std::u16string_view text, bool bigEndian);

// Checks that `successful` tells the same as the result.
HRESULT LoadInto(const Document& document, std::string_view bytes);

// The document that these bytes hold; they must load.
Document Loaded(std::string_view bytes, bool preserveWhiteSpace = false);

// Null when it fails.
inline ComPtr<IXMLDOMElement> MakeElement(const Document& document, std::u16string_view name) {
  ComPtr<IXMLDOMElement> element;
  document->createElement(Bstr(name).get(), element.put());
  return element;
}
inline ComPtr<IXMLDOMText> MakeText(const Document& document, std::u16string_view data) {
  ComPtr<IXMLDOMText> text;
  document->createTextNode(Bstr(data).get(), text.put());
  return text;
}
inline ComPtr<IXMLDOMProcessingInstruction> MakeInstruction(const Document& document,
                                                            std::u16string_view target,
                                                            std::u16string_view data) {
  ComPtr<IXMLDOMProcessingInstruction> instruction;
  document->createProcessingInstruction(Bstr(target).get(), Bstr(data).get(), instruction.put());
  return instruction;
}
ComPtr<IXMLDOMAttribute> MakeAttribute(const Document& document, std::u16string_view name,
                                       std::u16string_view value);

// Appends, which must succeed.
template <typename Parent, typename Child>
void Append(const ComPtr<Parent>& parent, const ComPtr<Child>& child) {
  ASSERT_EQ(parent->appendChild(child.get(), nullptr), S_OK);
}

// Sets a new attribute on the element, which must succeed.
void SetAttribute(const Document& document, const ComPtr<IXMLDOMElement>& element,
                  std::u16string_view name, std::u16string_view value);

// Those of an element; they must be there.
ComPtr<IXMLDOMNamedNodeMap> AttributesOf(IXMLDOMNode* element);
Node AttributeOf(IXMLDOMNode* element, std::u16string_view name);

// A VT_BSTR that borrows the text.
VARIANT Borrowed(const Bstr& text);

// Appends a chain of `count` elements "d", one within the other.
void AppendChain(const Document& document, const ComPtr<IXMLDOMElement>& parent, int count);

// Null when absent.
Node FirstChild(IXMLDOMNode* node);
Node NextSibling(IXMLDOMNode* node);
ComPtr<IXMLDOMElement> Root(const Document& document);

std::u16string NameOf(IXMLDOMNode* node);
// "(null)" for VT_NULL.
std::u16string ValueOf(IXMLDOMNode* node);

// The tree from a node down, in one line, without attributes: "a(#text=t,b())".
std::u16string Outline(IXMLDOMNode* node);

// Fails a test that leaves a COM object alive.
class DomTest : public ::testing::Test {
 protected:
  void TearDown() override { EXPECT_EQ(host::LiveComObjects(), 0); }
};

}  // namespace ce::testing
