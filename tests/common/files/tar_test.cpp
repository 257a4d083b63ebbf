// Archives, and what damage and strangers make of them.
#include "common/files/tar.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <vector>

#include "common/files/error.h"

namespace files {
namespace {

struct Member {
  ArchiveEntry entry;
  std::string content;
};

std::string Archive(const std::vector<Member>& members) {
  std::ostringstream out;
  ArchiveWriter writer(out);
  for (const Member& member : members) {
    writer.Begin(member.entry);
    writer.Write(member.content);
  }
  writer.Finish();
  return out.str();
}

Member File(const std::string& path, const std::string& content) {
  return {{.path = path, .size = content.size(), .modified = 1234567890}, content};
}

std::vector<Member> Read(const std::string& archive) {
  std::istringstream in(archive);
  ArchiveReader reader(in);
  std::vector<Member> members;
  while (const auto entry = reader.Next()) {
    members.push_back({*entry, {}});
    for (auto piece = reader.Read(); !piece.empty(); piece = reader.Read())
      members.back().content += piece;
  }
  return members;
}

std::string ErrorOf(const std::string& archive) {
  try {
    Read(archive);
  } catch (const Error& error) {
    return error.what();
  }
  return {};
}

TEST(Tar, GivesBackWhatWasPutIn) {
  const std::string zeros(1000, '\0');
  const auto members = Read(Archive({File("a", "content"),
                                     {{.path = "b", .kind = EntryKind::kDirectory}, {}},
                                     File("b/c", zeros),
                                     File("b/d", ""),
                                     {{.path = "l", .kind = EntryKind::kLink, .target = "/x"}, {}},
                                     File("e", std::string(512, 'e'))}));
  ASSERT_EQ(members.size(), 6u);
  EXPECT_EQ(members[0].entry.path, "a");
  EXPECT_EQ(members[0].entry.modified, 1234567890);
  EXPECT_EQ(members[0].content, "content");
  EXPECT_EQ(members[1].entry.kind, EntryKind::kDirectory);
  EXPECT_EQ(members[2].content, zeros);
  EXPECT_EQ(members[3].content, "");
  EXPECT_EQ(members[4].entry.kind, EntryKind::kLink);
  EXPECT_EQ(members[4].entry.target, "/x");
  EXPECT_EQ(members[5].content, std::string(512, 'e'));
}

TEST(Tar, HasPathsAndTargetsOfAnyLength) {
  for (const std::size_t length : {99u, 100u, 101u, 500u, 986u, 987u, 988u, 4000u}) {
    const std::string path(length, 'p');
    const auto members = Read(
        Archive({File(path, "x"), {{.path = "l", .kind = EntryKind::kLink, .target = path}, {}}}));
    ASSERT_EQ(members.size(), 2u) << length;
    EXPECT_EQ(members[0].entry.path, path);
    EXPECT_EQ(members[0].content, "x");
    EXPECT_EQ(members[1].entry.target, path);
  }
}

TEST(Tar, FillsAFileThatHasBecomeShorterWithZeros) {
  const auto members = Read(Archive({{{.path = "a", .size = 5}, "abc"}, File("b", "b")}));
  ASSERT_EQ(members.size(), 2u);
  EXPECT_EQ(members[0].content, std::string("abc\0\0", 5));
  EXPECT_EQ(members[1].content, "b");
}

TEST(Tar, CutsOffWhatAFileHasBecomeLonger) {
  const auto members = Read(Archive({{{.path = "a", .size = 2}, "abc"}, File("b", "b")}));
  ASSERT_EQ(members.size(), 2u);
  EXPECT_EQ(members[0].content, "ab");
}

TEST(Tar, PassesOverContentThatIsNotRead) {
  std::istringstream in(Archive({File("a", std::string(600000, 'a')), File("b", "b")}));
  ArchiveReader reader(in);
  ASSERT_TRUE(reader.Next());
  EXPECT_EQ(reader.Next()->path, "b");
  EXPECT_EQ(reader.Read(), "b");
  EXPECT_FALSE(reader.Next());
}

TEST(Tar, SeesWhereverItIsCutOff) {
  const std::string archive = Archive({File("a", "content"), File(std::string(300, 'p'), "x")});
  // Whole without its last block, which says the end once more.
  for (std::size_t length = 0; length < archive.size() - 1024; ++length)
    ASSERT_EQ(ErrorOf(archive.substr(0, length)), "the archive is cut off") << length;
  EXPECT_EQ(ErrorOf(archive), "");
}

TEST(Tar, SeesDamageInItsOwnBytes) {
  const std::string archive = Archive({File("a", "content")});
  for (std::size_t at = 0; at < 512; ++at) {
    if (at == 155) continue;  // the blank behind the sum, which says nothing
    std::string damaged = archive;
    damaged[at] = static_cast<char>(damaged[at] ^ 0x55);
    ASSERT_EQ(ErrorOf(damaged), "the archive is damaged") << at;
  }
}

TEST(Tar, TakesNoMemoryForAClaim) {
  // A record of attributes of 8 GiB.
  std::ostringstream claimed;
  ArchiveWriter writer(claimed);
  writer.Begin({.path = std::string(101, 'p')});
  std::string header = claimed.str();
  header.replace(124, 11, "77777777777");
  std::uint64_t sum = 0;
  header.replace(148, 8, "        ");
  for (std::size_t i = 0; i < 512; ++i) sum += static_cast<unsigned char>(header[i]);
  char digits[8];
  std::snprintf(digits, sizeof(digits), "%06o", static_cast<unsigned>(sum));
  header.replace(148, 7, digits, 7);
  EXPECT_EQ(ErrorOf(header), "the archive is damaged");
}

TEST(Tar, RefusesWhatIsNoArchive) {
  EXPECT_EQ(ErrorOf(std::string(2048, 'x')), "the archive is damaged");
  EXPECT_EQ(ErrorOf(""), "the archive is cut off");
}

}  // namespace
}  // namespace files
