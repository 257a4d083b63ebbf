// The child elements of a node, found by name.
#pragma once

#include <array>
#include <cstddef>

#include "platform/xml_dom.h"

namespace corvane {

// Made of a node alone, it asks the node for each name. Index walks the children once instead: for
// a record, of which many fields are read. The node must outlive it.
class ChildElements {
 public:
  ChildElements(ce::IXMLDOMNode* node) : node_(node) {}
  ChildElements(const ChildElements&) = delete;
  ChildElements& operator=(const ChildElements&) = delete;
  ~ChildElements();

  [[nodiscard]] ce::HRESULT Index();
  // The first one of this name: S_OK, or E_FAIL and null when there is none. The caller owns the
  // reference.
  [[nodiscard]] ce::HRESULT Find(const ce::WCHAR* name, ce::IXMLDOMNode** child) const;

 private:
  // The name and the node are owned.
  struct Child {
    ce::BSTR name;
    ce::UINT length;
    ce::IXMLDOMNode* node;
  };
  // More than a record has fields. For what lies behind so many the node is asked.
  static constexpr std::size_t kMostIndexed = 64;

  [[nodiscard]] ce::HRESULT Ask(const ce::WCHAR* name, ce::IXMLDOMNode** child) const;

  ce::IXMLDOMNode* const node_;
  std::array<Child, kMostIndexed> children_;  // as far as they count
  std::size_t count_ = 0;
  bool complete_ = false;  // every child is among them
};

}  // namespace corvane
