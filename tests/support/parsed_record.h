// The first record of a document, as an upload's readers get it.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "agent/pim_import/upload_document.h"
#include "tests/support/byte_array.h"

namespace corvane::testing {

class ParsedRecord {
 public:
  explicit ParsedRecord(const std::string& record) {
    const std::string text = "<root>" + record + "</root>";
    EXPECT_EQ(document_.Create(), ce::S_OK);
    EXPECT_EQ(document_.Load(ByteArray(text).get()), ce::S_OK) << text;
    EXPECT_EQ(document_.FirstRecord(&record_), ce::S_OK);
  }

  ce::IXMLDOMNode* get() const { return record_.get(); }

 private:
  UploadDocument document_;
  ce::ComPtr<ce::IXMLDOMNode> record_;
};

}  // namespace corvane::testing
