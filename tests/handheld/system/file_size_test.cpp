#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "handheld/base/fault.h"
#include "platform/files.h"
#include "platform/status.h"
#include "tests/support/test_handheld.h"

namespace corvane {
namespace {

using namespace ce;

class GetFileSizeCall : public testing::HandheldTest {
 protected:
  HANDLE OpenOfSize(std::uint64_t bytes) {
    const std::filesystem::path path = handheld_->filesRoot() / "a.txt";
    std::ofstream(path).close();
    std::filesystem::resize_file(path, bytes);
    return CreateFileW(u"a.txt", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, 0);
  }
};

TEST_F(GetFileSizeCall, TellsTheSize) {
  const HANDLE file = OpenOfSize(5);
  EXPECT_EQ(GetFileSize(file, nullptr), 5u);
  EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
  CloseHandle(file);
  EXPECT_EQ(GetFileSize(file, nullptr), INVALID_FILE_SIZE);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
}

TEST_F(GetFileSizeCall, TellsTheHighWordOfALargeFile) {
  const HANDLE file = OpenOfSize((std::uint64_t{2} << 32) + 7);
  DWORD high = 0;
  EXPECT_EQ(GetFileSize(file, &high), 7u);
  EXPECT_EQ(high, 2u);
  CloseHandle(file);
}

TEST_F(GetFileSizeCall, RefusesALargeFileWithoutAPlaceForTheHighWord) {
  const HANDLE file = OpenOfSize(0xFFFFFFFF);
  EXPECT_EQ(GetFileSize(file, nullptr), INVALID_FILE_SIZE);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  CloseHandle(file);
}

TEST_F(GetFileSizeCall, KnowsNoSizeOfAFileThatWasNotOpened) {
  EXPECT_EQ(GetFileSize(INVALID_HANDLE_VALUE, nullptr), INVALID_FILE_SIZE);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
}

TEST_F(GetFileSizeCall, HandsOnAFault) {
  const HANDLE file = OpenOfSize(5);
  {
    const auto plan = host::FaultPlan::FailCalls("GetFileSize", ERROR_READ_FAULT);
    EXPECT_EQ(GetFileSize(file, nullptr), INVALID_FILE_SIZE);
    EXPECT_EQ(GetLastError(), ERROR_READ_FAULT);
  }
  CloseHandle(file);
}

}  // namespace
}  // namespace corvane
