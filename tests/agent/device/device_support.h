// What the tests of the small device requests share.
#pragma once

#include <gmock/gmock.h>

#include <filesystem>
#include <string>

#include "agent/request_handler.h"
#include "platform/memory.h"
#include "tests/support/logged_test.h"
#include "tests/support/words.h"

namespace corvane::testing {

// What a request gave.
struct DeviceOutcome {
  ce::HRESULT status = 0;
  ce::DWORD count = 0;
  bool hasBlock = false;
  std::string output;     // `count` bytes
  ce::DWORD address = 0;  // the low word of where the block lay
};

class DeviceTest : public LoggedTest {
 protected:
  static DeviceOutcome Run(RequestHandler handler, const std::string& input = {},
                           CorvaneStream* stream = nullptr) {
    // Behind a byte, as nothing is aligned on the wire.
    const std::string placed = "x" + input;
    DeviceOutcome outcome;
    ce::BYTE* block = nullptr;
    outcome.status = handler(static_cast<ce::DWORD>(input.size()),
                             reinterpret_cast<const ce::BYTE*>(placed.data()) + 1, &outcome.count,
                             &block, stream);
    outcome.hasBlock = block != nullptr;
    outcome.address = static_cast<ce::DWORD>(reinterpret_cast<std::uintptr_t>(block));
    if (block) outcome.output.assign(reinterpret_cast<const char*>(block), outcome.count);
    EXPECT_EQ(ce::LocalFree(block), nullptr);
    return outcome;
  }
  // A stream to refuse; nothing is called on it.
  static CorvaneStream* SomeStream() {
    static int place;
    return reinterpret_cast<CorvaneStream*>(&place);
  }
  static void ExpectNoOutput(const DeviceOutcome& outcome, ce::HRESULT status) {
    EXPECT_EQ(outcome.status, status);
    EXPECT_EQ(outcome.count, 0u);
    EXPECT_FALSE(outcome.hasBlock);
  }

  std::filesystem::path Root() const { return handheld_.directory() / "files"; }
  // A card is a link to a directory.
  void MakeCard(const std::string& name, const std::filesystem::path& target) const {
    std::filesystem::create_directory_symlink(target, Root() / name);
  }
};

}  // namespace corvane::testing
