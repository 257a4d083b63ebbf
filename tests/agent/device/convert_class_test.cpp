#include "agent/device/convert_class.h"

#include <gtest/gtest.h>

#include "handheld/base/fault.h"
#include "platform/windows.h"
#include "tests/agent/device/ink_support.h"

namespace corvane {
namespace {

using namespace ce;
using ConvertClass = testing::InkTest;

HWND Make() {
  return CreateWindowExW(0, kConvertClass, u"", WS_CHILD, 0, 0, 0, 0, GetForegroundWindow(), 0,
                         nullptr, nullptr);
}

TEST_F(ConvertClass, IsThereWhileItIsRegistered) {
  EXPECT_EQ(Make(), 0u);
  EXPECT_EQ(RegisterConvertClass(), 0);
  const HWND window = Make();
  EXPECT_NE(window, 0u);
  EXPECT_EQ(SendMessageW(window, EM_STREAMIN, SF_TEXT, 0), 0) << "it has the default procedure";
  EXPECT_TRUE(DestroyWindow(window));
  EXPECT_EQ(UnregisterConvertClass(), 0);
  EXPECT_EQ(Make(), 0u);
}

TEST_F(ConvertClass, TellsTheSystemsErrors) {
  EXPECT_EQ(RegisterConvertClass(), 0);
  EXPECT_EQ(RegisterConvertClass(), HRESULT{ERROR_CLASS_ALREADY_EXISTS});
  EXPECT_EQ(UnregisterConvertClass(), 0);
  EXPECT_EQ(UnregisterConvertClass(), HRESULT{ERROR_CLASS_DOES_NOT_EXIST});
}

TEST_F(ConvertClass, IsNotWhatConversionsUse) {
  const auto plan = host::FaultPlan::CountOnly("RegisterClassW");
  BYTE* buffer = nullptr;
  DWORD count = 0;
  const std::string text = "text";
  const HRESULT status =
      ConvertWithRichInk(testing::BytePointer(text), 4, SF_TEXT, &buffer, &count, SF_TEXT_UNICODE);
  EXPECT_EQ(testing::Outcome(status, buffer, count).status, 0);
  EXPECT_EQ(plan.calls(), 0u);
}

}  // namespace
}  // namespace corvane
