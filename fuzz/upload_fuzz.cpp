// Any bytes as an uploaded document: an answer for every record that the desktop's reader sees in
// it too, and what was taken in is sent back as documents that can be taken in again.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "agent/pim_export/download_requests.h"
#include "agent/pim_import/upload_request.h"
#include "desktop/records/record_kind.h"
#include "desktop/wire/error.h"
#include "desktop/wire/xml_records.h"
#include "fuzz/require.h"
#include "handheld/base/com_object.h"
#include "tests/support/pim_requests.h"
#include "tests/support/test_handheld.h"
#include "tests/support/upload_runs.h"

namespace {

using corvane::testing::DownloadAnswer;
using corvane::testing::TestHandheld;
using corvane::testing::UploadAnswer;
using fuzz::Require;

constexpr int kInputsOfAHandheld = 20;

// Nothing for a document that the desktop would not send.
std::optional<std::size_t> CountRecords(const std::string& document) {
  try {
    const auto records = desktop::ParseRecords(document);
    return std::count_if(records.begin(), records.end(), [](const desktop::Record& record) {
      return desktop::IsTakenByAgent(record.element.name);
    });
  } catch (const desktop::Error&) {
    return std::nullopt;
  }
}

void RequireTakenInAgain(ce::DWORD kind) {
  const DownloadAnswer all = corvane::testing::ReadDownload(
      corvane::testing::RunStreamed(corvane::DownloadAllPIMRecords, corvane::testing::Word(kind)));
  Require(all.complete && all.returned == all.status, "a download ends with its trailer");
  Require(corvane::testing::Upload(all.documents).status == 0, "what was sent can be taken in");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static auto handheld = std::make_unique<TestHandheld>();
  static int inputs = 0;
  const std::string document(reinterpret_cast<const char*>(data), size);
  const UploadAnswer answer = corvane::testing::Upload({document});
  const std::optional<std::size_t> records = CountRecords(document);
  if (records && answer.status == 0) {
    Require(answer.replies.size() == *records, "an answer for every record");
  }
  for (const ce::DWORD kind : {0u, 1u, 2u}) RequireTakenInAgain(kind);
  Require(ce::host::LiveComObjects() == 0, "no object outlives its request");
  if (++inputs % kInputsOfAHandheld == 0) {
    handheld.reset();
    handheld = std::make_unique<TestHandheld>();
  }
  return 0;
}
