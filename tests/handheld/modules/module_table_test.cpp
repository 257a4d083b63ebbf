#include "handheld/modules/module_table.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/support/test_handheld.h"

namespace corvane {
namespace {

using namespace ce;
using host::BuiltInModule;
using host::ModuleTable;

int g_attached = 0;
bool g_refuses = false;

int Seven() {
  return 7;
}

const host::ModuleFunction kFunctions[] = {{u"Seven", reinterpret_cast<FARPROC>(&Seven)}};

const BuiltInModule kRows[] = {
    {.name = u"Plain.dll", .setting = u"Plain"},
    {.name = u"Tools.dll",
     .setting = u"Tools",
     .functions = kFunctions,
     .attach =
         [] {
           if (g_refuses) throw std::runtime_error("no");
           ++g_attached;
         },
     .detach = [] { --g_attached; }},
};

class ModuleTableTest : public testing::HandheldTest {
 protected:
  ModuleTableTest() {
    g_attached = 0;
    g_refuses = false;
  }
  ModuleTable table_{kRows};
};

TEST_F(ModuleTableTest, FindsARowWithoutRegardToCase) {
  const HMODULE module = table_.Load(u"tOOLS.DLL");
  EXPECT_NE(module, nullptr);
  EXPECT_EQ(table_.Load(u"Tools.dll"), module);
  EXPECT_EQ(table_.Load(u"Tools"), nullptr);
  EXPECT_EQ(table_.Load(u""), nullptr);
}

TEST_F(ModuleTableTest, LacksWhatTheHandheldIsSetNotToHave) {
  handheld_->Set(u"Tools", DWORD{0});
  EXPECT_EQ(table_.Load(u"Tools.dll"), nullptr);
  EXPECT_NE(table_.Load(u"Plain.dll"), nullptr);
  handheld_->Set(u"Tools", DWORD{1});
  EXPECT_NE(table_.Load(u"Tools.dll"), nullptr);
}

TEST_F(ModuleTableTest, LacksEverythingWithoutAHandheld) {
  host::Handheld::MakeCurrent(nullptr);
  EXPECT_EQ(table_.Load(u"Tools.dll"), nullptr);
  host::Handheld::MakeCurrent(&*handheld_);
}

TEST_F(ModuleTableTest, AttachesWithTheFirstUserAndDetachesWithTheLast) {
  const HMODULE module = table_.Load(u"Tools.dll");
  table_.Load(u"Tools.dll");
  EXPECT_EQ(g_attached, 1);
  EXPECT_TRUE(table_.Free(module));
  EXPECT_EQ(g_attached, 1);
  EXPECT_TRUE(table_.Free(module));
  EXPECT_EQ(g_attached, 0);
  EXPECT_FALSE(table_.Free(module));
  EXPECT_EQ(g_attached, 0);
}

TEST_F(ModuleTableTest, IsNotLoadedWhenItCannotAttach) {
  g_refuses = true;
  EXPECT_THROW(table_.Load(u"Tools.dll"), std::runtime_error);
  EXPECT_EQ(table_.Loaded(u"Tools.dll"), nullptr);
  g_refuses = false;
  EXPECT_NE(table_.Load(u"Tools.dll"), nullptr);
}

TEST_F(ModuleTableTest, FindsFunctionsByTheirExactNameWhileLoaded) {
  const HMODULE module = table_.Load(u"Tools.dll");
  FARPROC function = nullptr;
  ASSERT_EQ(table_.Find(module, u"Seven", function), ModuleTable::Answer::kFound);
  EXPECT_EQ(reinterpret_cast<int (*)()>(function)(), 7);
  EXPECT_EQ(table_.Find(module, u"seven", function), ModuleTable::Answer::kNoFunction);
  EXPECT_EQ(table_.Find(table_.Load(u"Plain.dll"), u"Seven", function),
            ModuleTable::Answer::kNoFunction);
  table_.Free(module);
  EXPECT_EQ(table_.Find(module, u"Seven", function), ModuleTable::Answer::kNotLoaded);
}

TEST_F(ModuleTableTest, KnowsWhatIsLoadedWithoutCountingIt) {
  EXPECT_EQ(table_.Loaded(u"Tools.dll"), nullptr);
  const HMODULE module = table_.Load(u"Tools.dll");
  EXPECT_EQ(table_.Loaded(u"TOOLS.dll"), module);
  EXPECT_TRUE(table_.Free(module));
  EXPECT_EQ(table_.Loaded(u"Tools.dll"), nullptr);
}

TEST_F(ModuleTableTest, FreesNothingThatItDidNotHandOut) {
  int other = 0;
  EXPECT_FALSE(table_.Free(nullptr));
  EXPECT_FALSE(table_.Free(&other));
}

}  // namespace
}  // namespace corvane
