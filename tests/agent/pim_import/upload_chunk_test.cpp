#include "agent/pim_import/upload_chunk.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <fstream>
#include <string>
#include <vector>

#include "agent/pim_import/upload_document.h"
#include "handheld/base/fault.h"
#include "handheld/base/upload_memory.h"
#include "tests/support/byte_array.h"
#include "tests/support/sanitizers.h"
#include "tests/support/upload_runs.h"

namespace corvane::testing {
namespace {

using namespace ce;
using host::FaultPlan;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr char kDocument[] = "<root><CONTACT/></root>";

// The most that the process has had of the host's memory since then, in bytes.
void ForgetPeakMemory() {
  std::ofstream("/proc/self/clear_refs") << "5";
}
std::size_t PeakMemory() {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line) && !line.starts_with("VmHWM:")) continue;
  EXPECT_TRUE(status) << "the host does not tell";
  return std::stoul("0" + line.substr(line.find_first_of("0123456789"))) * 1024;
}

class UploadChunks : public PimTest {
 protected:
  static UploadAnswer Pieces(std::vector<std::string> pieces,
                             AfterSending after = AfterSending::kStayOpen) {
    return ReadUpload(RunStreamed(UploadPIMRecords, {}, std::move(pieces), after));
  }
  // The connection ends behind these bytes.
  static UploadAnswer Broken(const std::string& bytes) {
    return Pieces({bytes}, AfterSending::kClose);
  }
  void SetBlockBound(DWORD bytes) { handheld_->Set(host::setting::kMaxBlock, bytes); }
};

TEST_F(UploadChunks, AreCollectedOverShortReads) {
  const std::string count = Word(sizeof(kDocument) - 1);
  const std::string document = kDocument;
  const UploadAnswer answer =
      Pieces({count.substr(0, 1), count.substr(1, 1), count.substr(2), document.substr(0, 5),
              document.substr(5, 1), document.substr(6), Word(0)});
  EXPECT_THAT(answer.replies, ElementsAre(RecordReply{1, S_OK}));
  EXPECT_EQ(answer.status, S_OK);
}

TEST_F(UploadChunks, MayArriveWithTheNextOne) {
  const std::string chunk = ChunkBytes(kDocument);
  EXPECT_EQ(Broken(chunk + chunk + Word(0)).replies.size(), 2u);
}

TEST_F(UploadChunks, EndWithTheConnection) {
  EXPECT_THAT(Broken("").replies, IsEmpty());
  EXPECT_THAT(Broken(Word(100).substr(0, 3)).replies, IsEmpty());
  EXPECT_THAT(Broken(Word(100)).replies, IsEmpty());
  EXPECT_THAT(Broken(Word(100) + kDocument).replies, IsEmpty());
  const UploadAnswer answer = Broken(ChunkBytes(kDocument) + Word(100) + "<root>");
  EXPECT_THAT(answer.replies, ElementsAre(RecordReply{1, S_OK}));
  EXPECT_THAT(store_->Oids(), ElementsAre(1)) << "what was answered stays";
}

TEST_F(UploadChunks, EndWhenTheConnectionFails) {
  for (const std::uint64_t read : {1, 2, 3}) {
    const auto plan = FaultPlan::FailNthCall("recv", read, WSAECONNRESET);
    const UploadAnswer answer = Pieces({ChunkBytes(kDocument) + Word(0)});
    EXPECT_TRUE(plan.fired());
    EXPECT_EQ(answer.status, static_cast<HRESULT>(WSAECONNRESET));
    EXPECT_EQ(answer.replies.size(), read == 3 ? 1u : 0u);
  }
}

TEST_F(UploadChunks, GrowWithTheBytesThatArrive) {
  std::string document = "<root>" + std::string(3 << 20, ' ') + "<CONTACT/></root>";
  EXPECT_THAT(Upload({document}).replies, ElementsAre(RecordReply{1, S_OK}));
  // A size at which the buffer is just full.
  document = "<root><CONTACT/>" + std::string(64 * 1024 - 23, ' ') + "</root>";
  ASSERT_EQ(document.size(), 64u * 1024);
  EXPECT_EQ(Upload({document, document.substr(0, 20) + document.substr(21)}).replies.size(), 2u);
}

// What a sanitizer writes down of memory that is allocated and never touched.
constexpr std::size_t kShadow = testing::kThreadSanitizer ? 160 << 20 : 0;

TEST_F(UploadChunks, CostNothingBeforeTheyArrive) {
  ForgetPeakMemory();
  const std::size_t before = PeakMemory();
  EXPECT_THAT(Broken(Word(200 << 20) + "<root>").replies, IsEmpty());
  EXPECT_LT(PeakMemory(), before + (50 << 20) + kShadow);
}

TEST_F(UploadChunks, GiveTheirMemoryBackBeforeTheNextIsAwaited) {
  const auto plan = FaultPlan::CountOnly();
  EXPECT_EQ(Upload({kDocument}).replies.size(), 1u);
  const std::vector<std::string> calls = plan.names();
  // The document is loaded, answered and emptied.
  const auto answer = std::find(calls.rbegin(), calls.rend(), "send");
  const auto awaited = std::find(answer.base(), calls.end(), "recv");
  EXPECT_EQ(std::count(answer.base(), awaited, "IXMLDOMDocument::load"), 1);
  EXPECT_NE(awaited, calls.end());
}

TEST_F(UploadChunks, GiveTheirMemoryBackWhenTheyAreCleared) {
  UploadDocument document;
  ASSERT_EQ(document.Create(), S_OK);
  ASSERT_EQ(document.Load(ByteArray(kDocument).get()), S_OK);
  EXPECT_GT(host::SharedUploadMemory().taken(), 0u);
  document.Clear();
  EXPECT_EQ(host::SharedUploadMemory().taken(), 0u);
  ComPtr<IXMLDOMNode> record;
  EXPECT_EQ(document.FirstRecord(&record), S_FALSE);
}

TEST_F(UploadChunks, BeyondTheBoundEndTheRequest) {
  SetBlockBound(1 << 20);
  for (const DWORD count : {DWORD{1} << 20, DWORD{0x80000000}, DWORD{0xFFFFFFFF}}) {
    const UploadAnswer answer = Pieces({ChunkBytes(kDocument) + Word(count) + kDocument + Word(0)});
    EXPECT_EQ(answer.replies.size(), 1u) << count;
    EXPECT_EQ(answer.status, static_cast<HRESULT>(ERROR_NOT_ENOUGH_MEMORY)) << count;
  }
}

TEST_F(UploadChunks, WithinTheBoundAreTaken) {
  SetBlockBound(1 << 20);
  const std::string blanks((1 << 20) - 1 - (sizeof(kDocument) - 1), ' ');
  EXPECT_EQ(Upload({kDocument + blanks}).replies.size(), 1u);
}

TEST_F(UploadChunks, EndWhenMemoryRunsOut) {
  const std::string large = "<root>" + std::string(1 << 20, ' ') + "<CONTACT/></root>";
  for (const char* call : {"LocalAlloc", "SafeArrayCreateVector"}) {
    const auto plan = FaultPlan::FailCalls(call, ERROR_NOT_ENOUGH_MEMORY);
    const UploadAnswer answer = Upload({large});
    EXPECT_THAT(answer.replies, IsEmpty()) << call;
    EXPECT_EQ(answer.status, 8) << call;
  }
}

}  // namespace
}  // namespace corvane::testing
