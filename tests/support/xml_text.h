// Documents under test: one made, and one as the text that it is written as.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "agent/core/memory_stream.h"
#include "agent/xml/document.h"
#include "platform/com_ptr.h"
#include "platform/xml_dom.h"

namespace corvane::testing {

inline std::string SavedText(ce::IXMLDOMDocument* document) {
  MemoryStream stream;
  EXPECT_EQ(SaveDocument(document, &stream), ce::S_OK);
  return {reinterpret_cast<const char*>(stream.Buffer()), stream.Size()};
}

// A document with its root, as the exporters fill it.
class TestDocument {
 public:
  TestDocument() { EXPECT_EQ(CreateXMLObjects(document_.put(), root_.put()), ce::S_OK); }

  ce::IXMLDOMDocument* document() const { return document_.get(); }
  ce::IXMLDOMElement* root() const { return root_.get(); }
  std::string Text() const { return SavedText(document_.get()); }
  // What stands between the root's tags.
  std::string Inner() const {
    const std::string text = Text();
    const std::size_t begin = text.find("<root>");
    const std::size_t end = text.rfind("</root>");
    return begin == std::string::npos ? "" : text.substr(begin + 6, end - begin - 6);
  }

 private:
  ce::ComPtr<ce::IXMLDOMDocument> document_;
  ce::ComPtr<ce::IXMLDOMElement> root_;
};

}  // namespace corvane::testing
