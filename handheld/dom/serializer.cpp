#include "handheld/dom/serializer.h"

#include "handheld/dom/nodes.h"
#include "handheld/dom/utf8_writer.h"

namespace ce::host::dom {
namespace {

void OpenElement(Utf8Writer& out, const Element& element) {
  out.Ascii("<");
  out.Text(element.Name(), Escape::kNone);
  for (const Node* attribute = element.firstAttribute(); attribute; attribute = attribute->next()) {
    out.Ascii(" ");
    out.Text(attribute->Name(), Escape::kNone);
    out.Ascii("=\"");
    out.Text(attribute->Value(), Escape::kAttribute);
    out.Ascii("\"");
  }
  out.Ascii(element.firstChild() ? ">" : "/>");
}

void CloseElement(Utf8Writer& out, const Node& element) {
  out.Ascii("</");
  out.Text(element.Name(), Escape::kNone);
  out.Ascii(">");
}

void WriteInstruction(Utf8Writer& out, const Node& instruction) {
  out.Ascii("<?");
  out.Text(instruction.Name(), Escape::kNone);
  if (!instruction.Value().empty()) {
    out.Ascii(" ");
    out.TextWithout(instruction.Value(), u'?', u'>');
  }
  out.Ascii("?>");
}

void WriteComment(Utf8Writer& out, const Node& comment) {
  out.Ascii("<!--");
  out.TextWithout(comment.Value(), u'-', u'-');
  out.Ascii("-->");
}

// The whole node, or the start of one that has children.
void Open(Utf8Writer& out, const Node& node) {
  switch (node.kind()) {
    case NodeKind::kElement:
      return OpenElement(out, static_cast<const Element&>(node));
    case NodeKind::kText:
      return out.Text(node.Value(), Escape::kText);
    case NodeKind::kCdata:
      out.Ascii("<![CDATA[");
      out.Text(node.Value(), Escape::kNone);
      return out.Ascii("]]>");
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

HRESULT Save(const Node& document, ISequentialStream* stream) {
  Utf8Writer out(stream);
  // A walk by the tree's own links: depth costs no stack.
  const Node* node = document.firstChild();
  while (node) {
    Open(out, *node);
    if (node->firstChild()) {
      node = node->firstChild();
      continue;
    }
    while (node != &document && !node->next()) {
      node = node->owner();
      if (node != &document) CloseElement(out, *node);
    }
    node = node == &document ? nullptr : node->next();
  }
  return out.Finish();
}

}  // namespace ce::host::dom
