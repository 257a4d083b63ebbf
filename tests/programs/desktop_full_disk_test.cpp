// corvane-desktop synchronises a folder on a disk that is full, and then one with room.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "tests/programs/tool_test.h"
#include "tests/support/sanitizers.h"

namespace corvane::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::AnyOf;
using ::testing::HasSubstr;

class DesktopFullDisk : public ToolTest {
 protected:
  void SetUp() override { StartAgent(MakeFilledHandheld(), {"--stay"}); }
  // With so many KiB for each file, beyond which the system takes no byte.
  Ended Sync(const std::string& folder, const std::string& limit) const {
    return Shell("ulimit -f " + limit + " && corvane-desktop --to 127.0.0.1:" +
                 std::to_string(port()) + " sync --zone UTC " + folder);
  }
  void WriteCard(const std::string& folder, const std::string& name) const {
    fs::create_directories(folder + "/contacts");
    std::ofstream(folder + "/contacts/" + name + ".vcf", std::ios::binary)
        << "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:" << name << "\r\nN:" << name << ";;;;\r\nFN:" << name
        << "\r\nEND:VCARD\r\n";
  }
  std::size_t WholeCards(const std::string& folder) const {
    std::size_t count = 0;
    for (const auto& entry : fs::directory_iterator(folder + "/contacts")) {
      std::ifstream file(entry.path(), std::ios::binary);
      const std::string bytes{std::istreambuf_iterator<char>(file), {}};
      EXPECT_TRUE(bytes.ends_with("END:VCARD\r\n")) << entry.path() << "\n" << bytes;
      ++count;
    }
    return count;
  }
  std::size_t CardsOnHandheld() const {
    const std::string cards = Desktop({"pull", "contacts"}).out;
    std::size_t count = 0;
    for (auto at = cards.find("BEGIN:VCARD"); at != std::string::npos;
         at = cards.find("BEGIN:VCARD", at + 1)) {
      ++count;
    }
    return count;
  }
};

// What is written grows with the room, so that each of the files has its turn to be the last.
TEST_F(DesktopFullDisk, IsToldAndTheNextRunFinishes) {
  std::size_t people = CardsOnHandheld();
  int failures = 0;
  for (int room = 8;; room += kSanitizer ? 72 : 24) {
    SCOPED_TRACE(room);
    ASSERT_LT(room, 2000) << "that must be enough";
    const std::string folder = Path("desk" + std::to_string(room));
    WriteCard(folder, "new" + std::to_string(room));
    ++people;
    const Ended full = Sync(folder, std::to_string(room));
    WholeCards(folder);
    if (full.code == 0) break;
    ++failures;
    EXPECT_THAT(full.code, AnyOf(1, 3));
    EXPECT_THAT(full.err, HasSubstr(folder + "/")) << "what could not be written";
    EXPECT_THAT(full.err, AnyOf(HasSubstr("File too large"), HasSubstr("disk I/O error")));
    const Ended finished = Sync(folder, "unlimited");
    EXPECT_EQ(finished.code, 0) << finished.err;
    EXPECT_THAT(Sync(folder, "unlimited").out,
                HasSubstr("0 added, 0 changed, 0 merged, 0 conflicts; desk 0, handheld 0\n"));
    EXPECT_EQ(WholeCards(folder), people);
    EXPECT_EQ(CardsOnHandheld(), people);
  }
  EXPECT_GT(failures, kSanitizer ? 2 : 5);
}

}  // namespace
}  // namespace corvane::testing
