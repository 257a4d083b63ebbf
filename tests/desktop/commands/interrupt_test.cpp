#include "desktop/commands/console.h"

#include <gtest/gtest.h>
#include <poll.h>

#include <csignal>

namespace desktop::testing {
namespace {

TEST(CatchInterruptions, MakesTheDescriptorReadableOnceAndLeavesTheSecondToTheSystem) {
  const int fd = CatchInterruptions();
  ASSERT_GE(fd, 0);
  pollfd watched = {fd, POLLIN, 0};
  EXPECT_EQ(poll(&watched, 1, 0), 0);
  for (const int signal : {SIGTERM, SIGHUP}) {
    struct sigaction action {};
    sigaction(signal, nullptr, &action);
    EXPECT_NE(action.sa_handler, SIG_DFL) << signal;
  }
  for (const int signal : {SIGPIPE, SIGXFSZ}) EXPECT_EQ(std::signal(signal, SIG_IGN), SIG_IGN);
  raise(SIGINT);
  EXPECT_EQ(poll(&watched, 1, 0), 1);
  EXPECT_EXIT(raise(SIGINT), ::testing::KilledBySignal(SIGINT), "");
}

}  // namespace
}  // namespace desktop::testing
