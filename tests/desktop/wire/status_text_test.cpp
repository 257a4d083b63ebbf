#include "desktop/wire/status_text.h"

#include <gtest/gtest.h>

namespace desktop::testing {
namespace {

std::int32_t Code(std::uint32_t value) {
  return static_cast<std::int32_t>(value);
}

TEST(StatusText, NamesWhatItKnows) {
  EXPECT_EQ(StatusText(Code(0x80070057)), "0x80070057 (invalid argument, or no such item)");
  EXPECT_EQ(StatusText(Code(0x80040066)), "0x80040066 (text too long)");
  EXPECT_EQ(StatusText(112), "112 (the disk is full)");
}

TEST(StatusText, GivesTheNumberAloneOtherwise) {
  EXPECT_EQ(StatusText(Code(0x81234567)), "0x81234567");
  EXPECT_EQ(StatusText(4711), "4711");
  EXPECT_EQ(StatusMeaning(4711), "");
}

}  // namespace
}  // namespace desktop::testing
