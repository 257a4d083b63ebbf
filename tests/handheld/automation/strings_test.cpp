#include <gtest/gtest.h>

#include <string_view>

#include "handheld/base/fault.h"
#include "platform/automation.h"
#include "platform/com_ptr.h"
#include "platform/status.h"

namespace ce {
namespace {

using host::FaultPlan;
using std::string_view_literals::operator""sv;

TEST(SysAllocString, CopiesUpToTheTerminator) {
  const Bstr text(u"Smith");
  EXPECT_EQ(text.view(), u"Smith"sv);
  EXPECT_EQ(SysStringLen(text.get()), 5u);
  EXPECT_EQ(text.get()[5], u'\0');
}

TEST(SysAllocString, GivesNullForNullWithoutAnError) {
  SetLastError(ERROR_SUCCESS);
  EXPECT_EQ(SysAllocString(nullptr), nullptr);
  EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
}

TEST(SysAllocString, GivesAnEmptyStringForAnEmptyText) {
  const Bstr text(u"");
  ASSERT_NE(text.get(), nullptr);
  EXPECT_EQ(SysStringLen(text.get()), 0u);
  EXPECT_EQ(*text.get(), u'\0');
}

TEST(SysAllocString, FaultGivesNullAndTheLastError) {
  const auto plan = FaultPlan::FailCalls("SysAllocString", ERROR_NOT_ENOUGH_MEMORY);
  SetLastError(ERROR_SUCCESS);
  EXPECT_EQ(SysAllocString(u"x"), nullptr);
  EXPECT_EQ(GetLastError(), ERROR_NOT_ENOUGH_MEMORY);
}

TEST(SysAllocStringLen, KeepsZeroCharactersInside) {
  const Bstr text(u"a\0b"sv);
  EXPECT_EQ(SysStringLen(text.get()), 3u);
  EXPECT_EQ(text.view(), u"a\0b"sv);
  EXPECT_EQ(text.get()[3], u'\0');
}

TEST(SysAllocStringLen, StoresTheByteCountBeforeTheText) {
  const Bstr text(u"abc"sv);
  EXPECT_EQ(*(reinterpret_cast<const DWORD*>(text.get()) - 1), 6u);
}

TEST(SysAllocStringLen, WithoutATextTerminatesTheRoom) {
  Bstr text;
  text.attach(SysAllocStringLen(nullptr, 4));
  ASSERT_TRUE(text);
  EXPECT_EQ(SysStringLen(text.get()), 4u);
  EXPECT_EQ(text.get()[4], u'\0');
}

TEST(SysAllocStringLen, RefusesWhatThePrefixCannotCount) {
  SetLastError(ERROR_SUCCESS);
  EXPECT_EQ(SysAllocStringLen(nullptr, 0xFFFFFFFF), nullptr);
  EXPECT_EQ(GetLastError(), ERROR_NOT_ENOUGH_MEMORY);
}

TEST(SysAllocStringLen, FaultGivesNullAndTheLastError) {
  const auto plan = FaultPlan::FailCalls("SysAllocStringLen", ERROR_NOT_ENOUGH_MEMORY);
  SetLastError(ERROR_SUCCESS);
  EXPECT_EQ(SysAllocStringLen(u"x", 1), nullptr);
  EXPECT_EQ(GetLastError(), ERROR_NOT_ENOUGH_MEMORY);
}

TEST(SysStringLen, IsZeroForNull) {
  EXPECT_EQ(SysStringLen(nullptr), 0u);
}

}  // namespace
}  // namespace ce
