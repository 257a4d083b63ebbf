#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "handheld/base/com_object.h"

namespace {

// Fails the test that leaves COM objects behind, whatever its fixture.
class ComLeakListener : public testing::EmptyTestEventListener {
  void OnTestStart(const testing::TestInfo&) override { before_ = ce::host::LiveComObjects(); }
  void OnTestEnd(const testing::TestInfo&) override {
    EXPECT_EQ(ce::host::LiveComObjects(), before_) << "COM objects outlive the test";
  }

  ce::LONG before_ = 0;
};

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleMock(&argc, argv);
  // Deleted by the framework.
  testing::UnitTest::GetInstance()->listeners().Append(new ComLeakListener);
  return RUN_ALL_TESTS();
}
