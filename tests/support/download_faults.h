// What downloads and deletions have to hold to, whichever platform call fails.
#pragma once

#include <functional>
#include <string>
#include <utility>

#include "handheld/base/com_object.h"
#include "tests/support/fault_runs.h"
#include "tests/support/pim_requests.h"

namespace corvane::testing {

// Their failure leaves a positive last error, which is no failure by its sign: what they were to
// make is missing from the document.
inline bool LeavesATextOut(const std::string& call) {
  return call.starts_with("SysAllocString") || call.starts_with("GetDateFormat") ||
         call.starts_with("GetTimeFormat") || call == "FileTimeToSystemTime";
}

struct DownloadUnderFaults {
  std::function<DownloadAnswer()> run;
  // Whether a document may lack something after this call has failed.
  std::function<bool(const std::string& call)> mayLack = LeavesATextOut;
  // A document without what may be missing whatever has failed.
  std::function<std::string(std::string)> compared = [](std::string document) { return document; };
  // After every run, with the call that failed, or kEveryCall for all from one on.
  std::function<void(const std::string& call)> after = [](const std::string&) {};
};

inline constexpr char kEveryCall[] = "every call";

// Every download ends with its trailer; a document is one of the whole download's, or lacks what
// failed unnoticed. Answers the number of calls.
inline std::uint64_t ExpectHonestDownload(const DownloadUnderFaults& download) {
  const DownloadAnswer whole = download.run();
  EXPECT_TRUE(whole.complete);
  EXPECT_EQ(whole.status, ce::S_OK);
  const ce::LONG objects = ce::host::LiveComObjects();
  const auto expectClean = [&](const std::string& call) {
    EXPECT_EQ(ce::host::LiveComObjects(), objects);
    download.after(call);
  };
  const auto check = [&](const DownloadAnswer& answer, const std::string& call) {
    expectClean(call);
    if (call == "send" || call == "closesocket") return;
    ASSERT_TRUE(answer.complete);
    EXPECT_EQ(answer.status, answer.returned);
    ASSERT_LE(answer.documents.size(), whole.documents.size());
    if (answer.status >= 0) {
      EXPECT_EQ(answer.documents.size(), whole.documents.size());
    }
    if (call.empty()) {
      EXPECT_EQ(answer.documents, whole.documents);
    }
    if (download.mayLack(call)) return;
    for (std::size_t index = 0; index < answer.documents.size(); ++index) {
      const std::string& document = answer.documents[index];
      if (Occurrences(document, "<Error ") > 0) continue;
      EXPECT_EQ(download.compared(Body(document)), download.compared(Body(whole.documents[index])))
          << "only a declaration may be missing";
    }
  };
  const std::uint64_t calls = FailEachCall(ce::ERROR_NOT_ENOUGH_MEMORY, download.run, check);
  FailEachCall(
      ce::ERROR_NOT_ENOUGH_MEMORY, download.run,
      [&](const DownloadAnswer&, const std::string&) { expectClean(kEveryCall); },
      Failing::kFromThen);
  return calls;
}

// A deletion succeeds only when nothing is left. `left` counts what is, `refill` brings back what
// there was.
template <typename Run, typename Left, typename Refill>
void ExpectHonestDeletion(Run run, Left left, Refill refill) {
  const ce::LONG objects = ce::host::LiveComObjects();
  const auto check = [&](ce::HRESULT status, const std::string& call) {
    if (status >= 0) {
      EXPECT_EQ(left(), 0u);
    }
    if (call.empty()) {
      EXPECT_EQ(status, ce::S_OK);
    }
    EXPECT_EQ(ce::host::LiveComObjects(), objects);
    refill();
  };
  EXPECT_GT(FailEachCall(ce::ERROR_DISK_FULL, run, check), 20u);
}

}  // namespace corvane::testing
