// Any bytes: what loads can be walked and saved, and what was saved loads and saves again the same.
#include <cstdint>
#include <cstring>
#include <string>

#include "fuzz/require.h"
#include "handheld/base/com_object.h"
#include "platform/com_ptr.h"
#include "platform/xml_dom.h"

namespace {

using ce::ComPtr;
using fuzz::Require;

class StringStream final : public ce::IStream {
 public:
  ~StringStream() = default;
  std::string content;

  ce::HRESULT QueryInterface(const ce::GUID&, void** out) override {
    *out = this;
    return ce::S_OK;
  }
  ce::DWORD AddRef() override { return 1; }
  ce::DWORD Release() override { return 1; }
  ce::HRESULT Write(const void* data, ce::DWORD bytes, ce::DWORD* written) override {
    content.append(static_cast<const char*>(data), bytes);
    *written = bytes;
    return ce::S_OK;
  }
  ce::HRESULT Read(void*, ce::DWORD, ce::DWORD*) override { return ce::E_FAIL; }
  ce::HRESULT Seek(ce::LONGLONG, ce::DWORD, ce::ULONGLONG*) override { return ce::E_FAIL; }
  ce::HRESULT SetSize(ce::ULONGLONG) override { return ce::E_FAIL; }
  ce::HRESULT CopyTo(IStream*, ce::ULONGLONG, ce::ULONGLONG*, ce::ULONGLONG*) override {
    return ce::E_FAIL;
  }
  ce::HRESULT Commit(ce::DWORD) override { return ce::E_FAIL; }
  ce::HRESULT Revert() override { return ce::E_FAIL; }
  ce::HRESULT LockRegion(ce::ULONGLONG, ce::ULONGLONG, ce::DWORD) override { return ce::E_FAIL; }
  ce::HRESULT UnlockRegion(ce::ULONGLONG, ce::ULONGLONG, ce::DWORD) override { return ce::E_FAIL; }
  ce::HRESULT Stat(void*, ce::DWORD) override { return ce::E_FAIL; }
  ce::HRESULT Clone(IStream**) override { return ce::E_FAIL; }
};

ComPtr<ce::IXMLDOMDocument> Load(const std::string& bytes, ce::VARIANT_BOOL preserve) {
  ComPtr<ce::IXMLDOMDocument> document;
  ce::CoCreateInstance(ce::CLSID_DOMDocument, nullptr, ce::CLSCTX_INPROC_SERVER,
                       ce::IXMLDOMDocument::kIid, document.put_void());
  document->put_preserveWhiteSpace(preserve);
  ce::Variant source;
  ce::VARIANT* value = source.put();
  value->vt = ce::VT_ARRAY | ce::VT_UI1;
  value->parray = ce::SafeArrayCreateVector(ce::VT_UI1, 0, static_cast<ce::DWORD>(bytes.size()));
  void* data = nullptr;
  ce::SafeArrayAccessData(value->parray, &data);
  std::memcpy(data, bytes.data(), bytes.size());
  ce::SafeArrayUnaccessData(value->parray);
  ce::VARIANT_BOOL successful = ce::VARIANT_FALSE;
  const ce::HRESULT status = document->load(source.get(), &successful);
  Require(ce::Failed(status) == (successful == ce::VARIANT_FALSE),
          "a load's status is its success");
  if (ce::Failed(status)) {
    ComPtr<ce::IXMLDOMNode> child;
    Require(document->get_firstChild(child.put()) == ce::S_FALSE, "a failed load leaves no nodes");
    return nullptr;
  }
  return document;
}

void Walk(ce::IXMLDOMNode* node) {
  ce::Bstr name;
  Require(node->get_nodeName(name.put()) == ce::S_OK && !name.empty(), "a node has a name");
  ce::Variant value;
  Require(ce::Succeeded(node->get_nodeValue(value.put())), "a value can be read");
  ComPtr<ce::IXMLDOMNode> child;
  node->get_firstChild(child.put());
  while (child) {
    Walk(child.get());
    ComPtr<ce::IXMLDOMNode> next;
    child->get_nextSibling(next.put());
    child = next;
  }
}

std::string Save(const ComPtr<ce::IXMLDOMDocument>& document) {
  StringStream stream;
  ce::VARIANT target;
  target.vt = ce::VT_UNKNOWN;
  target.punkVal = &stream;
  Require(document->save(target) == ce::S_OK, "a document can be saved");
  return stream.content;
}

// As a reader sees them.
std::string WithLineFeeds(const std::string& text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\r') {
      result += text[i];
    } else if (i + 1 == text.size() || text[i + 1] != '\n') {
      result += '\n';
    }
  }
  return result;
}

void RoundTrip(const std::string& bytes, ce::VARIANT_BOOL preserve) {
  const auto document = Load(bytes, preserve);
  if (!document) return;
  Walk(document.get());
  const std::string saved = Save(document);
  const auto again = Load(saved, preserve);
  Require(static_cast<bool>(again), "what was saved loads");
  Require(Save(again) == WithLineFeeds(saved), "what was saved saves the same");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  RoundTrip(bytes, ce::VARIANT_FALSE);
  RoundTrip(bytes, ce::VARIANT_TRUE);
  Require(ce::host::LiveComObjects() == 0, "no object stays alive");
  return 0;
}
