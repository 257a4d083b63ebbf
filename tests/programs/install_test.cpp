// What `cmake --install` puts in place.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include "tests/programs/tool_test.h"
#include "tests/support/paths.h"

namespace corvane::testing {
namespace {

namespace fs = std::filesystem;

class Install : public ToolTest {
 protected:
  void SetUp() override {
    const fs::path build = fs::path(ProgramPath("corvane")).parent_path().parent_path();
    const Ended installed =
        Shell("cmake --install '" + build.string() + "' --prefix '" + Path("root") + "'");
    ASSERT_EQ(installed.code, 0) << installed.err;
  }
};

TEST_F(Install, PutsTheThreeProgramsInPlaceAndTheyRun) {
  std::set<std::string> names;
  for (const auto& entry : fs::directory_iterator(Path("root/bin"))) {
    names.insert(entry.path().filename());
    const Ended version = Shell("'" + entry.path().string() + "' --version");
    EXPECT_EQ(version.code, 0) << version.err;
  }
  EXPECT_THAT(names, ::testing::ElementsAre("corvane", "corvane-desktop", "corvane-device"));
}

TEST_F(Install, LeavesOutWhatOnlyADebuggerReads) {
  for (const char* name : {"corvane", "corvane-device", "corvane-desktop"}) {
    const Ended sections =
        Shell("readelf --section-headers --wide '" + Path("root/bin/") + name + "'");
    ASSERT_EQ(sections.code, 0) << sections.err;
    EXPECT_THAT(sections.out, ::testing::HasSubstr(".text"));
    EXPECT_THAT(sections.out, ::testing::Not(::testing::HasSubstr(".symtab")));
    EXPECT_THAT(sections.out, ::testing::Not(::testing::HasSubstr(".debug_info")));
  }
}

TEST_F(Install, KeepsTheSymbolThatIsLookedUpInTheAgent) {
  const Ended symbols = Shell("readelf --dyn-syms --wide '" + Path("root/bin/corvane") + "'");
  EXPECT_THAT(symbols.out, ::testing::HasSubstr(" g_bUseDST"));
}

}  // namespace
}  // namespace corvane::testing
