// A handheld, and the messages of the agent's log once a test has switched it on.
#pragma once

#include <string>
#include <vector>

#include "agent/log/log.h"
#include "tests/support/log_messages.h"
#include "tests/support/test_handheld.h"

namespace corvane::testing {

class LoggedTest : public HandheldTest {
 protected:
  void TearDown() override {
    CloseLog();
    ResetLogSettings();
    HandheldTest::TearDown();
  }

  void SwitchLogOn() {
    LoadLogSettings();
    SetLoggingLevel(1);
  }
  std::vector<std::string> LogMessages() {
    CloseLog();
    return LogMessagesIn(handheld_.FileContent("CorvaneLog.txt"));
  }
};

}  // namespace corvane::testing
