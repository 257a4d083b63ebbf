#include "common/formats/lines/content_writer.h"

#include <gtest/gtest.h>

namespace formats {
namespace {

TEST(AppendFolded, LeavesOutControlCharacters) {
  std::string out;
  AppendFolded(out, "N:\x1B[31mLee\x7F;\tAnn\x01;;;");
  EXPECT_EQ(out, "N:[31mLee;\tAnn;;;\r\n");
}

TEST(AppendFolded, FoldsByWhatIsLeft) {
  std::string out;
  AppendFolded(out, std::string(75, 'x') + std::string(10, '\x02'));
  EXPECT_EQ(out, std::string(75, 'x') + "\r\n");
}

}  // namespace
}  // namespace formats
