#include "common/files/atomic_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "common/files/error.h"
#include "tests/support/temporary_directory.h"

namespace files {
namespace {

using Names = std::vector<std::string>;

struct TempDirectory : corvane::testing::TemporaryDirectory {
  Names names() const {
    Names found;
    for (const auto& entry : std::filesystem::directory_iterator(path()))
      found.push_back(entry.path().filename().string());
    std::sort(found.begin(), found.end());
    return found;
  }
};

std::string ReadFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void WriteFile(const std::filesystem::path& path, std::string_view bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

TEST(AtomicFile, AppearsOnlyOnCommit) {
  const TempDirectory directory;
  WriteFile(directory / "out", "before");
  AtomicFile file(directory / "out");
  file.Write("after");
  EXPECT_EQ(ReadFile(directory / "out"), "before");
  file.Commit();
  EXPECT_EQ(ReadFile(directory / "out"), "after");
  EXPECT_EQ(directory.names(), Names{"out"});
}

TEST(AtomicFile, LeavesNothingBehindWithoutACommit) {
  const TempDirectory directory;
  {
    AtomicFile file(directory / "out");
    file.Write(std::string(1 << 20, 'x'));
  }
  EXPECT_EQ(directory.names(), Names{});
}

TEST(AtomicFile, HasNoNameThatAProcessCouldLeaveBehind) {
  const TempDirectory directory;
  AtomicFile file(directory / "out");
  file.Write(std::string(1 << 20, 'x'));
  EXPECT_EQ(directory.names(), Names{});
  file.Commit();
  EXPECT_EQ(directory.names(), Names{"out"});
}

TEST(AtomicFile, IsTheOwnersAloneWhenItIsPrivate) {
  const TempDirectory directory;
  const auto modeOf = [](const std::filesystem::path& path) {
    struct stat status {};
    EXPECT_EQ(stat(path.c_str(), &status), 0);
    return status.st_mode & 0777;
  };
  WriteFile(directory / "open", "before");
  chmod((directory / "open").c_str(), 0644);
  const mode_t before = umask(0);
  for (const char* name : {"open", "new"}) {
    AtomicFile file(directory / name, Access::kPrivate);
    file.Commit();
    EXPECT_EQ(modeOf(directory / name), 0600U) << name;
  }
  MakePrivateDirectories(directory / "a/b");
  umask(before);
  EXPECT_EQ(modeOf(directory / "a"), 0700U);
  EXPECT_EQ(modeOf(directory / "a/b"), 0700U);
}

TEST(AtomicFile, WithASuffixLeavesTheNamedFileAlone) {
  const TempDirectory directory;
  WriteFile(directory / "out", "before");
  AtomicFile file(directory / "out");
  file.Write("some");
  file.Commit(".partial");
  EXPECT_EQ(ReadFile(directory / "out"), "before");
  EXPECT_EQ(ReadFile(directory / "out.partial"), "some");
}

TEST(AtomicFile, KeepsPermissionsAndALinkThatNamesIt) {
  const TempDirectory directory;
  WriteFile(directory / "real", "before");
  chmod((directory / "real").c_str(), 0600);
  std::filesystem::create_symlink("real", directory / "link");
  AtomicFile file(directory / "link");
  file.Write("after");
  file.Commit();
  EXPECT_TRUE(std::filesystem::is_symlink(directory / "link"));
  EXPECT_EQ(ReadFile(directory / "real"), "after");
  struct stat status {};
  ASSERT_EQ(stat((directory / "real").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600U);
}

TEST(AtomicFile, WritesToADeviceDirectly) {
  AtomicFile file("/dev/null");
  file.Write("gone");
  file.Commit();
  EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

TEST(AtomicFile, SaysWhichFileItCannotWrite) {
  const TempDirectory directory;
  const std::string name = (directory / "missing/out").string();
  try {
    AtomicFile file(name);
    FAIL() << "a directory that does not exist takes a file";
  } catch (const Error& error) {
    EXPECT_EQ(error.what(), "cannot write " + name + ": No such file or directory");
  }
}

TEST(ReadWholeFile, GivesEveryByte) {
  const TempDirectory directory;
  std::string bytes;
  for (int i = 0; i < 600000; ++i) bytes += static_cast<char>(i * 7 % 251);
  WriteFile(directory / "in", bytes);
  EXPECT_EQ(ReadWholeFile(directory / "in"), bytes);
  WriteFile(directory / "in", "");
  EXPECT_EQ(ReadWholeFile(directory / "in"), "");
}

TEST(ReadWholeFile, SaysWhichFileItCannotRead) {
  const TempDirectory directory;
  EXPECT_THROW(ReadWholeFile(directory / "none"), Error);
  EXPECT_THROW(ReadWholeFile(directory.path()), Error);
}

}  // namespace
}  // namespace files
