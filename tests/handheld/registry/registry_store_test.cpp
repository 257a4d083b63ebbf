#include "handheld/registry/registry_store.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "handheld/base/fault.h"
#include "handheld/directory/handheld.h"
#include "platform/registry.h"
#include "tests/support/temporary_directory.h"

namespace corvane {
namespace {

using namespace ce;
using host::Registry;
using host::RegistryValue;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class RegistryStore : public ::testing::Test {
 protected:
  std::filesystem::path File() const { return directory_ / "registry.reg"; }

  testing::TemporaryDirectory directory_;
  Registry registry_{File()};
};

TEST_F(RegistryStore, TakesKeysWithAndWithoutTheirRoot) {
  ASSERT_EQ(registry_.SetValue(u"SOFTWARE\\a", u"v", RegistryValue::Number(1)), 0u);
  EXPECT_TRUE(registry_.Value(u"HKEY_LOCAL_MACHINE\\software\\A", u"V"));
  EXPECT_TRUE(registry_.Value(u"HKLM\\SOFTWARE\\a", u"v"));
  EXPECT_THAT(registry_.SubKeys(u""), ElementsAre(u"SOFTWARE"));
  EXPECT_THAT(registry_.SubKeys(u"hklm"), ElementsAre(u"SOFTWARE"));
  EXPECT_FALSE(registry_.Value(u"HKEY_CURRENT_USER\\SOFTWARE\\a", u"v"));
}

TEST_F(RegistryStore, ListsAndDeletes) {
  ASSERT_EQ(registry_.SetValue(u"k", u"b", RegistryValue::Number(2)), 0u);
  ASSERT_EQ(registry_.SetValue(u"k", u"A", RegistryValue::Text(u"x")), 0u);
  EXPECT_THAT(registry_.Values(u"k"),
              ElementsAre(host::NamedRegistryValue{u"A", RegistryValue::Text(u"x")},
                          host::NamedRegistryValue{u"b", RegistryValue::Number(2)}));
  EXPECT_EQ(registry_.DeleteValue(u"k", u"B"), 0u);
  EXPECT_EQ(registry_.DeleteValue(u"k", u"B"), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(registry_.DeleteKey(u"k"), 0u);
  EXPECT_EQ(registry_.DeleteKey(u"k"), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(registry_.DeleteKey(u"HKLM"), ERROR_ACCESS_DENIED);
  EXPECT_THAT(registry_.Values(u"k"), IsEmpty());
  EXPECT_FALSE(Registry::Load(File())->HasKey(u"k"));
}

TEST_F(RegistryStore, RefusesWhatItCouldNotReadBack) {
  EXPECT_EQ(registry_.SetValue(u"k", u"two\nlines", RegistryValue::Number(1)), ERROR_INVALID_NAME);
  EXPECT_EQ(registry_.SetValue(u"k\\", u"v", RegistryValue::Number(1)), ERROR_INVALID_NAME);
  EXPECT_EQ(registry_.SetValue(u"k", u"v", {REG_BINARY, std::vector<BYTE>(65537)}),
            ERROR_INVALID_PARAMETER);
  const RegistryValue large{REG_BINARY, std::vector<BYTE>(65536)};
  DWORD error = ERROR_SUCCESS;
  std::u16string name;
  while (error == ERROR_SUCCESS && name.size() < 30) {
    error = registry_.SetValue(u"k", name += u'v', large);
  }
  EXPECT_EQ(error, ERROR_DISK_FULL) << "the file may not grow beyond what is read";
  EXPECT_EQ(Registry::Load(File())->Values(u"k").size(), name.size() - 1);
}

TEST_F(RegistryStore, LeavesNoSecondFileBehind) {
  ASSERT_EQ(registry_.CreateKey(u"k", nullptr), 0u);
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(directory_.path())) {
    names.push_back(entry.path().filename());
  }
  EXPECT_THAT(names, ElementsAre("registry.reg"));
}

TEST_F(RegistryStore, KeepsTheOldFileWhenTheNewOneCannotBeMade) {
  ASSERT_EQ(registry_.CreateKey(u"k", nullptr), 0u);
  const std::string before = directory_.Read("registry.reg");
  std::filesystem::create_directory(directory_ / "registry.reg.new");
  bool created = true;
  EXPECT_NE(registry_.CreateKey(u"l", &created), 0u);
  EXPECT_FALSE(created);
  EXPECT_FALSE(registry_.HasKey(u"l"));
  EXPECT_EQ(directory_.Read("registry.reg"), before);
}

TEST_F(RegistryStore, NamesTheFileAndTheDamagedLine) {
  directory_.Write("registry.reg", "Windows Registry Editor Version 5.00\r\n\r\nrubbish\r\n");
  try {
    Registry::Load(File());
    FAIL() << "a damaged file was taken";
  } catch (const host::HandheldError& error) {
    EXPECT_THAT(error.what(), HasSubstr(File().string()));
    EXPECT_THAT(error.what(), HasSubstr("line 3"));
  }
}

TEST_F(RegistryStore, IsSharedByThreads) {
  std::vector<std::thread> threads;
  for (char16_t letter = u'a'; letter < u'e'; ++letter) {
    threads.emplace_back([this, letter] {
      for (DWORD i = 0; i < 25; ++i) {
        EXPECT_EQ(registry_.SetValue(u"k", std::u16string(1, letter), RegistryValue::Number(i)),
                  0u);
        EXPECT_EQ(registry_.Value(u"k", std::u16string(1, letter))->AsNumber(), i);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(Registry::Load(File())->Values(u"k").size(), 4u);
}

}  // namespace
}  // namespace corvane
