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

TEST_F(Install, PutsManualsCompletionUnitsAndDocumentsInPlace) {
  for (const char* path :
       {"share/man/man1/corvane.1", "share/man/man1/corvane-device-import.1",
        "share/man/man5/corvane-handheld.5", "share/man/man7/corvane-service.7",
        "share/bash-completion/completions/corvane-desktop",
        "share/zsh/site-functions/_corvane-desktop",
        "share/fish/vendor_completions.d/corvane-desktop.fish",
        "lib/systemd/system/corvane@.socket", "lib/systemd/system/corvane@.service",
        "share/systemd/user/corvane@.socket", "share/systemd/user/corvane@.service",
        "lib/sysusers.d/corvane.conf", "share/doc/corvane/README.md",
        "share/doc/corvane/SECURITY.md", "share/doc/corvane/CHANGELOG.md",
        "share/doc/corvane/docs/security.md", "share/doc/corvane/examples/samples/people.vcf"})
    EXPECT_TRUE(fs::is_regular_file(Path("root/") + path)) << path;
}

TEST_F(Install, HasUnitsThatStartTheProgramWhereItIs) {
  for (const char* unit :
       {"lib/systemd/system/corvane@.service", "share/systemd/user/corvane@.service"}) {
    const std::string text = directory_.Read(std::string("root/") + unit);
    EXPECT_THAT(text, ::testing::HasSubstr("\nExecStart=" + Path("root/bin/corvane") + " "));
  }
}

TEST_F(Install, HasAUnitThatMayDoLittle) {
  const Ended rating = Shell("systemd-analyze security --offline=yes --threshold=15 '" +
                             Path("root/lib/systemd/system/corvane@.service") + "'");
  EXPECT_EQ(rating.code, 0) << rating.out << rating.err;
  EXPECT_THAT(rating.out, ::testing::HasSubstr("Overall exposure level"));
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
