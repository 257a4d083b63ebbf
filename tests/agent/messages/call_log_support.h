// What the tests of the call log's export have in common.
#pragma once

#include <gmock/gmock.h>

#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "agent/device/ink_convert.h"
#include "agent/messages/call_log_export.h"
#include "platform/modules.h"
#include "tests/support/call_filler.h"
#include "tests/support/pim_requests.h"

namespace corvane::testing {

// A handheld with its call log.
class CallLogTest : public PimTest {
 protected:
  CallLogTest() : filler_(std::make_unique<CallFiller>(*handheld_)) { ResetRichInk(); }

  void TearDown() override {
    EXPECT_EQ(ce::GetModuleHandleW(u"Phone.dll"), nullptr) << "the library was not freed";
    filler_.reset();
    ResetRichInk();
    PimTest::TearDown();
  }

  static DownloadAnswer Export() { return RunExport(ExportCallLog); }
  // The elements of the only call, between its tags.
  static std::string ExportedCall() {
    const std::string record = OnlyRecords(Export());
    EXPECT_TRUE(record.starts_with("<Call>") && record.ends_with("</Call>")) << record;
    return record.size() < 13 ? record : record.substr(6, record.size() - 13);
  }
  // Calls in each document.
  static std::vector<std::size_t> Sizes(const DownloadAnswer& answer) {
    return testing::Sizes(answer, {"<Call>"});
  }
  void MakeFile(const std::string& name, const std::string& content) const {
    std::ofstream(handheld_.directory() / "files" / name, std::ios::binary) << content;
  }
  static ce::host::StoredCall CallWithNote(std::u16string path) {
    ce::host::StoredCall call = SampleCall();
    call.note = std::move(path);
    return call;
  }

  std::unique_ptr<CallFiller> filler_;
};

}  // namespace corvane::testing
