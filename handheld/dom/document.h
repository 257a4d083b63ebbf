// The document: it makes all nodes, is the root of the tree, loads and saves it.
#pragma once

#include <memory>
#include <vector>

#include "handheld/base/upload_memory.h"
#include "handheld/dom/arena.h"
#include "handheld/dom/node_object.h"

namespace ce::host::dom {

class Document final : public NodeObject<IXMLDOMDocument>, public IObjectSafety {
 public:
  Document() : NodeObject(NodeKind::kDocument, this) {}

  // Where its nodes and their texts lie.
  Arena& arena() { return arena_; }
  // Those that live.
  ObjectGroup& nodes() { return nodes_; }
  // Begins to make its nodes, of which it has none, of a tape.
  void Play(std::unique_ptr<const Tape> tape);

  std::u16string_view Name() const override { return u"#document"; }

  // Both interfaces are one object. Nodes that are held from outside count among its references.
  HRESULT QueryInterface(const GUID& iid, void** out) override {
    return NodeObject::QueryInterface(iid, out);
  }
  DWORD AddRef() override { return UncountedObject::AddRef(); }
  DWORD Release() override { return UncountedObject::Release(); }

  HRESULT get_documentElement(IXMLDOMElement** element) override;
  HRESULT createElement(BSTR name, IXMLDOMElement** element) override;
  HRESULT createTextNode(BSTR data, IXMLDOMText** text) override;
  HRESULT createProcessingInstruction(BSTR target, BSTR data,
                                      IXMLDOMProcessingInstruction** instruction) override;
  HRESULT createAttribute(BSTR name, IXMLDOMAttribute** attribute) override;
  HRESULT load(VARIANT source, VARIANT_BOOL* successful) override;
  HRESULT save(VARIANT target) override;
  // There is no validation, and nothing outside a document is ever read: both are accepted only.
  HRESULT put_validateOnParse(VARIANT_BOOL on) override;
  HRESULT put_resolveExternals(VARIANT_BOOL on) override;
  HRESULT put_preserveWhiteSpace(VARIANT_BOOL on) override;

  HRESULT GetInterfaceSafetyOptions(const GUID& iid, DWORD* supported, DWORD* enabled) override;
  HRESULT SetInterfaceSafetyOptions(const GUID& iid, DWORD mask, DWORD enabled) override;

 protected:
  void* ExtraInterface(const GUID& iid) override;

 private:
  ~Document() override { AbandonChildren(); }

  // Lets go of the tree.
  void Empty();

  CountedAlive counted_;
  UploadMemory::Share memory_;
  Arena arena_;
  ObjectGroup nodes_;
  // The last one is played; nodes that are held from outside lie on the others.
  std::vector<std::unique_ptr<const Tape>> tapes_;
  bool preserveWhiteSpace_ = false;
  DWORD safety_ = 0;
};

}  // namespace ce::host::dom
