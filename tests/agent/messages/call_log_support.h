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

  static DownloadAnswer Export() {
    DesktopEnd desktop;
    CorvaneStream stream;
    stream.Attach(desktop.socket());
    const ce::HRESULT status = ExportCallLog(&stream);
    return ReadDownload({status, desktop.Received()});
  }
  // The elements of the only call, between its tags.
  static std::string ExportedCall() {
    const DownloadAnswer answer = Export();
    EXPECT_EQ(answer.status, ce::S_OK);
    EXPECT_EQ(answer.documents.size(), 1u);
    return answer.documents.empty() ? std::string() : Inner(answer.documents[0]);
  }
  static std::string Inner(const std::string& document) {
    const std::size_t begin = document.find("<Call>") + 6;
    return document.substr(begin, document.rfind("</Call>") - begin);
  }
  // Calls in each document.
  static std::vector<std::size_t> Sizes(const DownloadAnswer& answer) {
    std::vector<std::size_t> sizes;
    for (const std::string& document : answer.documents) {
      sizes.push_back(Occurrences(document, "<Call>"));
    }
    return sizes;
  }
  static void ExpectOnlyTrailer(const DownloadAnswer& answer, ce::HRESULT status) {
    EXPECT_TRUE(answer.complete);
    EXPECT_TRUE(answer.documents.empty());
    EXPECT_EQ(answer.status, status);
    EXPECT_EQ(answer.returned, status);
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
