#include "agent/core/memory_stream.h"

#include <gtest/gtest.h>

#include <string>

#include "handheld/base/fault.h"
#include "platform/status.h"
#include "tests/support/test_handheld.h"

namespace corvane {
namespace {

using testing::HandheldTest;

class MemoryStreams : public HandheldTest {
 protected:
  ce::HRESULT Write(const std::string& bytes) {
    return stream_.Write(bytes.data(), static_cast<ce::DWORD>(bytes.size()), nullptr);
  }
  std::string Read(ce::DWORD bytes) {
    std::string buffer(bytes, '\0');
    ce::DWORD read = 99;
    EXPECT_EQ(stream_.Read(buffer.data(), bytes, &read), ce::S_OK);
    buffer.resize(read);
    return buffer;
  }
  std::string Content() const {
    return {reinterpret_cast<const char*>(stream_.Buffer()), stream_.Size()};
  }

  MemoryStream stream_;
};

TEST_F(MemoryStreams, IsEmptyAtFirst) {
  EXPECT_EQ(stream_.Buffer(), nullptr);
  EXPECT_EQ(stream_.Size(), 0u);
}

TEST_F(MemoryStreams, ReadingBeforeAnyWriteFails) {
  char byte = 0;
  ce::DWORD read = 99;
  EXPECT_EQ(stream_.Read(&byte, 1, &read), ce::E_FAIL);
  EXPECT_EQ(read, 99u);
}

TEST_F(MemoryStreams, CollectsWhatIsWritten) {
  ce::DWORD written = 0;
  EXPECT_EQ(stream_.Write("abc", 3, &written), 0);
  EXPECT_EQ(written, 3u);
  EXPECT_EQ(stream_.Write("de", 2, &written), 0);
  EXPECT_EQ(written, 2u);
  EXPECT_EQ(Content(), "abcde");
}

TEST_F(MemoryStreams, WritingNothingAllocatesAnEmptyBlock) {
  ce::DWORD written = 99;
  EXPECT_EQ(stream_.Write(nullptr, 0, &written), 0);
  EXPECT_EQ(written, 0u);
  EXPECT_NE(stream_.Buffer(), nullptr);
  EXPECT_EQ(stream_.Size(), 0u);
  EXPECT_EQ(Read(5), "");
}

TEST_F(MemoryStreams, GrowsOverManyWrites) {
  std::string expected;
  for (int i = 0; i < 5000; ++i) {
    const std::string piece = std::to_string(i);
    ASSERT_EQ(Write(piece), 0);
    expected += piece;
  }
  EXPECT_EQ(Content(), expected);
}

TEST_F(MemoryStreams, ReadsOnFromWhereItStopped) {
  ASSERT_EQ(Write("abcdef"), 0);
  EXPECT_EQ(Read(2), "ab");
  EXPECT_EQ(Read(3), "cde");
  EXPECT_EQ(Read(9), "f");
  EXPECT_EQ(Read(9), "");
  ASSERT_EQ(Write("gh"), 0);
  EXPECT_EQ(Read(9), "gh");
}

TEST_F(MemoryStreams, ReadsNothingAndSucceedsAfterAllBytesWereRead) {
  ASSERT_EQ(Write("ab"), 0);
  EXPECT_EQ(Read(2), "ab");
  char byte = 0;
  ce::DWORD read = 9;
  EXPECT_EQ(stream_.Read(&byte, 1, &read), ce::S_OK);
  EXPECT_EQ(read, 0u);
}

TEST_F(MemoryStreams, CountsAreOptional) {
  ASSERT_EQ(stream_.Write("ab", 2, nullptr), 0);
  char byte = 0;
  EXPECT_EQ(stream_.Read(&byte, 1, nullptr), ce::S_OK);
  EXPECT_EQ(byte, 'a');
}

TEST_F(MemoryStreams, WriteAnswersTheAllocatorsLastErrorAndNoEarlierOne) {
  ce::SetLastError(1234);
  EXPECT_EQ(Write("ab"), 0);
  ce::SetLastError(1234);
  EXPECT_EQ(Write("cd"), 0);
}

TEST_F(MemoryStreams, FirstAllocationThatFailsLeavesItEmpty) {
  ce::DWORD written = 99;
  {
    const auto plan = ce::host::FaultPlan::FailCalls("LocalAlloc", ce::ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(stream_.Write("ab", 2, &written),
              static_cast<ce::HRESULT>(ce::ERROR_NOT_ENOUGH_MEMORY));
  }
  EXPECT_EQ(written, 99u);
  EXPECT_EQ(stream_.Buffer(), nullptr);
  EXPECT_EQ(stream_.Size(), 0u);
  EXPECT_EQ(Write("cd"), 0);
  EXPECT_EQ(Content(), "cd");
}

TEST_F(MemoryStreams, GrowthThatFailsLosesTheBufferAndKeepsTheSize) {
  ASSERT_EQ(Write("abc"), 0);
  {
    const auto plan = ce::host::FaultPlan::FailCalls("LocalReAlloc", ce::ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(Write("def"), static_cast<ce::HRESULT>(ce::ERROR_NOT_ENOUGH_MEMORY));
  }
  EXPECT_EQ(stream_.Buffer(), nullptr);
  EXPECT_EQ(stream_.Size(), 3u);
  char byte = 0;
  EXPECT_EQ(stream_.Read(&byte, 1, nullptr), ce::E_FAIL);
}

TEST_F(MemoryStreams, TakesNothingMoreAfterAGrowthFailed) {
  ASSERT_EQ(Write("abc"), 0);
  {
    const auto plan = ce::host::FaultPlan::FailCalls("LocalReAlloc", 8);
    EXPECT_NE(Write("def"), 0);
  }
  EXPECT_EQ(Write("ghi"), static_cast<ce::HRESULT>(ce::ERROR_NOT_ENOUGH_MEMORY));
  EXPECT_EQ(stream_.Buffer(), nullptr);
  EXPECT_EQ(stream_.Size(), 3u);
}

TEST_F(MemoryStreams, AWriteBeyondTheHandheldsBoundFails) {
  handheld_->Set(ce::host::setting::kMaxBlock, 4);
  ASSERT_EQ(Write("abc"), 0);
  EXPECT_EQ(Write("de"), static_cast<ce::HRESULT>(ce::ERROR_NOT_ENOUGH_MEMORY));
}

TEST_F(MemoryStreams, OtherStreamOperationsFail) {
  EXPECT_EQ(stream_.Seek(0, 0, nullptr), ce::E_FAIL);
  EXPECT_EQ(stream_.SetSize(1), ce::E_FAIL);
  EXPECT_EQ(stream_.CopyTo(nullptr, 0, nullptr, nullptr), ce::E_FAIL);
  EXPECT_EQ(stream_.Commit(0), ce::E_FAIL);
  EXPECT_EQ(stream_.Revert(), ce::E_FAIL);
  EXPECT_EQ(stream_.LockRegion(0, 0, 0), ce::E_FAIL);
  EXPECT_EQ(stream_.UnlockRegion(0, 0, 0), ce::E_FAIL);
  EXPECT_EQ(stream_.Stat(nullptr, 0), ce::E_FAIL);
  EXPECT_EQ(stream_.Clone(nullptr), ce::E_FAIL);
}

TEST_F(MemoryStreams, CountsItsReferences) {
  EXPECT_EQ(stream_.AddRef(), 2u);
  EXPECT_EQ(stream_.AddRef(), 3u);
  EXPECT_EQ(stream_.Release(), 2u);
  EXPECT_EQ(stream_.Release(), 1u);
}

TEST_F(MemoryStreams, LastReleaseDeletesOneThatWasMadeWithNew) {
  auto* stream = new MemoryStream;
  EXPECT_EQ(stream->Write("abc", 3, nullptr), 0);
  EXPECT_EQ(stream->Release(), 0u);  // the sanitizers watch
}

TEST_F(MemoryStreams, HandsOutItsInterfaces) {
  for (const ce::GUID& iid : {ce::IUnknown::kIid, ce::IStream::kIid}) {
    void* out = nullptr;
    EXPECT_EQ(stream_.QueryInterface(iid, &out), ce::S_OK);
    EXPECT_EQ(out, static_cast<ce::IStream*>(&stream_));
    EXPECT_EQ(stream_.Release(), 1u);
  }
}

struct CountingObject final : ce::IUnknown {
  ce::HRESULT QueryInterface(const ce::GUID&, void**) override { return ce::E_NOINTERFACE; }
  ce::DWORD AddRef() override { return ++references; }
  ce::DWORD Release() override { return --references; }
  ce::DWORD references = 1;
};

TEST_F(MemoryStreams, ForAnotherInterfaceItCountsTheCallersObject) {
  CountingObject object;
  void* out = static_cast<ce::IUnknown*>(&object);
  EXPECT_EQ(stream_.QueryInterface(ce::IDispatch::kIid, &out), ce::S_OK);
  EXPECT_EQ(out, static_cast<ce::IUnknown*>(&object));
  EXPECT_EQ(object.references, 2u);
  EXPECT_EQ(stream_.AddRef(), 2u);  // its own count was left alone
}

TEST_F(MemoryStreams, ForAnotherInterfaceANullStaysNull) {
  void* out = nullptr;
  EXPECT_EQ(stream_.QueryInterface(ce::IDispatch::kIid, &out), ce::S_OK);
  EXPECT_EQ(out, nullptr);
}

}  // namespace
}  // namespace corvane
