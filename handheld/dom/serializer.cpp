#include "handheld/dom/serializer.h"

#include "handheld/dom/nodes.h"
#include "handheld/dom/utf8_writer.h"

namespace ce::host::dom {
namespace {

void WriteName(Utf8Writer& out, const Name& name) {
  if (name.utf8.empty()) {
    out.Text(name.text, Escape::kNone);
  } else {
    out.Written(name.utf8);
  }
}

void OpenElement(Utf8Writer& out, Element& element) {
  out.Written("<");
  WriteName(out, element.name());
  for (const Node* node = element.firstAttribute(); node; node = node->next()) {
    const auto& attribute = static_cast<const Attribute&>(*node);
    out.Written(" ");
    WriteName(out, attribute.name());
    out.Written("=\"");
    out.Text(attribute.Value(), Escape::kAttribute);
    out.Written("\"");
  }
  out.Written(element.firstChild() ? ">" : "/>");
}

void CloseElement(Utf8Writer& out, const Element& element) {
  out.Written("</");
  WriteName(out, element.name());
  out.Written(">");
}

void WriteInstruction(Utf8Writer& out, const Node& instruction) {
  out.Written("<?");
  out.Text(instruction.Name(), Escape::kNone);
  if (!instruction.Value().empty()) {
    out.Written(" ");
    out.TextWithout(instruction.Value(), u'?', u'>');
  }
  out.Written("?>");
}

void WriteComment(Utf8Writer& out, const Node& comment) {
  out.Written("<!--");
  out.TextWithout(comment.Value(), u'-', u'-');
  out.Written("-->");
}

// The whole node, or the start of one that has children.
void Open(Utf8Writer& out, Node& node) {
  switch (node.kind()) {
    case NodeKind::kElement:
      return OpenElement(out, static_cast<Element&>(node));
    case NodeKind::kText:
      return out.Text(node.Value(), Escape::kText);
    case NodeKind::kCdata:
      out.Written("<![CDATA[");
      out.Text(node.Value(), Escape::kNone);
      return out.Written("]]>");
    case NodeKind::kComment:
      return WriteComment(out, node);
    case NodeKind::kInstruction:
      return WriteInstruction(out, node);
    case NodeKind::kDocument:
    case NodeKind::kAttribute:
      return;
  }
}

}  // namespace

HRESULT Save(Node& document, ISequentialStream* stream) {
  Utf8Writer out(stream);
  // A walk by the tree's own links: depth costs no stack.
  Node* node = document.firstChild();
  while (node) {
    Open(out, *node);
    if (node->firstChild()) {
      node = node->firstChild();
      continue;
    }
    while (node != &document && !node->next()) {
      node = node->owner();
      if (node != &document) CloseElement(out, static_cast<const Element&>(*node));
    }
    node = node == &document ? nullptr : node->next();
  }
  return out.Finish();
}

}  // namespace ce::host::dom
