// Walks the children of a node.
#pragma once

#include <utility>

#include "agent/pim_import/record_status.h"
#include "platform/com_ptr.h"
#include "platform/status.h"
#include "platform/xml_dom.h"

namespace corvane {

// Calls `visit(child, name)` for every child. A visit that answers anything but S_OK ends the walk.
// The status of the last step: S_FALSE behind the last child.
template <typename Visitor>
ce::HRESULT ForEachChild(ce::IXMLDOMNode* node, Visitor visit) {
  ce::ComPtr<ce::IXMLDOMNode> child;
  ce::HRESULT status = node->get_firstChild(child.put());
  while (ce::Succeeded(status) && child) {
    ce::Bstr name;
    RETURN_IF_FAILED(child->get_nodeName(name.put()));
    RETURN_UNLESS_OK(visit(child.get(), name));
    ce::ComPtr<ce::IXMLDOMNode> next;
    status = child->get_nextSibling(next.put());
    child = std::move(next);
  }
  return status;
}

}  // namespace corvane
