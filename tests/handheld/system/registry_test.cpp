#include "platform/registry.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "handheld/base/fault.h"
#include "handheld/registry/registry_store.h"
#include "platform/files.h"
#include "tests/support/test_handheld.h"

namespace corvane {
namespace {

using namespace ce;

constexpr WCHAR kAgentKey[] = u"SOFTWARE\\Tenbrook\\Corvane";
constexpr DWORD kUntouched = 0xEEEEEEEE;

class RegistryCall : public testing::HandheldTest {
 protected:
  static HKEY Create(const WCHAR* path) {
    HKEY key = 0;
    EXPECT_EQ(RegCreateKeyExW(HKEY_LOCAL_MACHINE, path, 0, nullptr, 0, 0, nullptr, &key, nullptr),
              0);
    return key;
  }
  static LONG Set(HKEY key, const WCHAR* name, DWORD value) {
    return RegSetValueExW(key, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value), 4);
  }
  static LONG Query(HKEY key, const WCHAR* name, DWORD& value) {
    DWORD type = 0;
    DWORD size = sizeof value;
    const LONG status =
        RegQueryValueExW(key, name, nullptr, &type, reinterpret_cast<BYTE*>(&value), &size);
    if (status == 0) {
      EXPECT_EQ(type, REG_DWORD);
      EXPECT_EQ(size, 4u);
    }
    return status;
  }
};

using RegOpenKeyEx = RegistryCall;
using RegCreateKeyEx = RegistryCall;
using RegQueryValueEx = RegistryCall;
using RegSetValueEx = RegistryCall;
using RegCloseKeyCall = RegistryCall;

TEST_F(RegOpenKeyEx, AnswersAPositiveCodeForAKeyThatIsNotThere) {
  HKEY key = kUntouched;
  EXPECT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, kAgentKey, 0, 0, &key),
            static_cast<LONG>(ERROR_FILE_NOT_FOUND));
  EXPECT_EQ(key, kUntouched);
}

TEST_F(RegOpenKeyEx, MatchesNamesWithoutRegardToCase) {
  RegCloseKey(Create(kAgentKey));
  HKEY key = 0;
  EXPECT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, u"software\\TENBROOK\\corvane", 0, 0, &key), 0);
  EXPECT_EQ(RegCloseKey(key), 0);
}

TEST_F(RegOpenKeyEx, OpensBelowAnOpenKey) {
  const HKEY parent = Create(u"SOFTWARE\\Tenbrook");
  RegCloseKey(Create(kAgentKey));
  HKEY key = 0;
  EXPECT_EQ(RegOpenKeyExW(parent, u"Corvane", 0, 0, &key), 0);
  RegCloseKey(key);
  EXPECT_EQ(RegOpenKeyExW(parent, nullptr, 0, 0, &key), 0) << "no sub-key: the key itself";
  RegCloseKey(key);
  RegCloseKey(parent);
}

TEST_F(RegOpenKeyEx, RefusesAHandleThatIsNoKey) {
  HKEY key = 0;
  const HANDLE file =
      CreateFileW(u"\\note.txt", GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, 0);
  for (const HKEY parent : {HKEY{0}, HKEY{12}, file, INVALID_HANDLE_VALUE}) {
    EXPECT_EQ(RegOpenKeyExW(parent, u"SOFTWARE", 0, 0, &key),
              static_cast<LONG>(ERROR_INVALID_HANDLE));
  }
  CloseHandle(file);
}

TEST_F(RegCreateKeyEx, MakesEveryKeyOnTheWay) {
  DWORD disposition = 0;
  HKEY key = 0;
  ASSERT_EQ(
      RegCreateKeyExW(HKEY_LOCAL_MACHINE, kAgentKey, 0, nullptr, 0, 0, nullptr, &key, &disposition),
      0);
  RegCloseKey(key);
  EXPECT_EQ(disposition, REG_CREATED_NEW_KEY);
  EXPECT_TRUE(handheld_->registry().HasKey(u"SOFTWARE\\Tenbrook"));
  ASSERT_EQ(
      RegCreateKeyExW(HKEY_LOCAL_MACHINE, kAgentKey, 0, nullptr, 0, 0, nullptr, &key, &disposition),
      0);
  RegCloseKey(key);
  EXPECT_EQ(disposition, REG_OPENED_EXISTING_KEY);
}

TEST_F(RegCreateKeyEx, RefusesNamesThatNoKeyCanHave) {
  HKEY key = 0;
  for (const std::u16string& name :
       {std::u16string(u"a\\\\b"), std::u16string(u"a\\"), std::u16string(u"\\a"),
        std::u16string(u"line\nbreak"), std::u16string(256, u'n'), std::u16string(u"\xD800")}) {
    EXPECT_EQ(
        RegCreateKeyExW(HKEY_LOCAL_MACHINE, name.c_str(), 0, nullptr, 0, 0, nullptr, &key, nullptr),
        static_cast<LONG>(ERROR_INVALID_NAME));
  }
}

TEST_F(RegSetValueEx, IsReadBackByQuery) {
  const HKEY key = Create(kAgentKey);
  EXPECT_EQ(Set(key, u"Logging", 42), 0);
  DWORD value = 0;
  EXPECT_EQ(Query(key, u"LOGGING", value), 0);
  EXPECT_EQ(value, 42u);
  RegCloseKey(key);
}

TEST_F(RegSetValueEx, IsInTheFileWhenItReturns) {
  const HKEY key = Create(kAgentKey);
  EXPECT_EQ(Set(key, u"Logging", 42), 0);
  RegCloseKey(key);
  const auto stored = host::Registry::Load(handheld_.directory() / "registry.reg");
  EXPECT_EQ(stored->Value(kAgentKey, u"Logging"), host::RegistryValue::Number(42));
}

TEST_F(RegSetValueEx, KeepsAnyTypeAndAnyBytes) {
  const std::vector<BYTE> bytes = {0, 255, 7, 13, 10, 34};
  for (const DWORD type : {DWORD{0}, REG_SZ, REG_BINARY, REG_DWORD, DWORD{7}, DWORD{0xFFFF0012}}) {
    const HKEY key = Create(kAgentKey);
    ASSERT_EQ(RegSetValueExW(key, u"v", 0, type, bytes.data(), 6), 0);
    RegCloseKey(key);
    handheld_.Reopen();

    const HKEY again = Create(kAgentKey);
    std::vector<BYTE> data(6);
    DWORD readType = kUntouched;
    DWORD size = 6;
    EXPECT_EQ(RegQueryValueExW(again, u"v", nullptr, &readType, data.data(), &size), 0);
    EXPECT_EQ(readType, type);
    EXPECT_EQ(size, 6u);
    EXPECT_EQ(data, bytes);
    RegCloseKey(again);
  }
}

TEST_F(RegSetValueEx, ChangesNothingWhenTheFileCannotBeWritten) {
  const HKEY key = Create(kAgentKey);
  EXPECT_EQ(Set(key, u"Logging", 1), 0);
  {
    const auto plan = host::FaultPlan::FailCalls("ReplaceFile", ERROR_DISK_FULL);
    EXPECT_EQ(Set(key, u"Logging", 2), static_cast<LONG>(ERROR_DISK_FULL));
  }
  DWORD value = 0;
  EXPECT_EQ(Query(key, u"Logging", value), 0);
  EXPECT_EQ(value, 1u);
  RegCloseKey(key);
}

TEST_F(RegSetValueEx, RefusesAKeyThatWasDeletedMeanwhile) {
  const HKEY key = Create(kAgentKey);
  ASSERT_EQ(handheld_->registry().DeleteKey(u"SOFTWARE"), ERROR_SUCCESS);
  EXPECT_EQ(Set(key, u"Logging", 1), static_cast<LONG>(ERROR_FILE_NOT_FOUND));
  EXPECT_EQ(RegCloseKey(key), 0);
}

TEST_F(RegQueryValueEx, AnswersAPositiveCodeForAValueThatIsNotThere) {
  const HKEY key = Create(kAgentKey);
  DWORD value = 0;
  EXPECT_EQ(Query(key, u"IPAddr", value), static_cast<LONG>(ERROR_FILE_NOT_FOUND));
  RegCloseKey(key);
}

TEST_F(RegQueryValueEx, LeavesAShortBufferAloneAndNamesTheSize) {
  const HKEY key = Create(kAgentKey);
  Set(key, u"Logging", 42);
  BYTE data[2] = {9, 9};
  DWORD size = 2;
  EXPECT_EQ(RegQueryValueExW(key, u"Logging", nullptr, nullptr, data, &size),
            static_cast<LONG>(ERROR_MORE_DATA));
  EXPECT_EQ(size, 4u);
  EXPECT_EQ(data[0], 9);
  size = 0;
  EXPECT_EQ(RegQueryValueExW(key, u"Logging", nullptr, nullptr, nullptr, &size), 0);
  EXPECT_EQ(size, 4u);
  RegCloseKey(key);
}

TEST_F(RegQueryValueEx, ReadsTheDefaultValueUnderNoName) {
  const HKEY key = Create(kAgentKey);
  EXPECT_EQ(Set(key, nullptr, 5), 0);
  DWORD value = 0;
  EXPECT_EQ(Query(key, u"", value), 0);
  EXPECT_EQ(value, 5u);
  RegCloseKey(key);
}

TEST_F(RegCloseKeyCall, MakesTheHandleInvalid) {
  const HKEY key = Create(kAgentKey);
  EXPECT_EQ(RegCloseKey(key), 0);
  DWORD value = 0;
  EXPECT_EQ(Query(key, u"Logging", value), static_cast<LONG>(ERROR_INVALID_HANDLE));
  EXPECT_EQ(RegCloseKey(key), static_cast<LONG>(ERROR_INVALID_HANDLE));
  EXPECT_EQ(RegCloseKey(HKEY_LOCAL_MACHINE), 0);
}

TEST_F(RegCloseKeyCall, AKeyOutlivesItsHandheldAsAnInvalidHandle) {
  const HKEY key = Create(kAgentKey);
  handheld_.Reopen();
  DWORD value = 0;
  EXPECT_EQ(Query(key, u"Logging", value), static_cast<LONG>(ERROR_INVALID_HANDLE));
  EXPECT_EQ(RegCloseKey(key), 0);
}

TEST(RegistryCallWithoutAHandheld, FailsCleanly) {
  HKEY key = 0;
  EXPECT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, kAgentKey, 0, 0, &key),
            static_cast<LONG>(ERROR_NOT_READY));
  EXPECT_EQ(
      RegCreateKeyExW(HKEY_LOCAL_MACHINE, kAgentKey, 0, nullptr, 0, 0, nullptr, &key, nullptr),
      static_cast<LONG>(ERROR_NOT_READY));
}

// Each call of a small session fails once; the session ends with that code and leaves no harm.
TEST_F(RegistryCall, HandsOnTheFaultOfEachCall) {
  const auto session = []() -> LONG {
    HKEY key = 0;
    LONG status =
        RegCreateKeyExW(HKEY_LOCAL_MACHINE, kAgentKey, 0, nullptr, 0, 0, nullptr, &key, nullptr);
    if (status != 0) return status;
    DWORD value = 0;
    status = Set(key, u"Logging", 3);
    if (status == 0) status = Query(key, u"Logging", value);
    const LONG closed = RegCloseKey(key);
    if (closed != 0) RegCloseKey(key);
    return status != 0 ? status : closed;
  };
  for (std::uint64_t n = 1;; ++n) {
    const auto plan = host::FaultPlan::FailNth(n, ERROR_WRITE_FAULT);
    const LONG status = session();
    if (!plan.fired()) {
      EXPECT_EQ(status, 0);
      EXPECT_GT(n, 4u);
      break;
    }
    EXPECT_EQ(status, static_cast<LONG>(ERROR_WRITE_FAULT)) << plan.firedCall();
  }
}

}  // namespace
}  // namespace corvane
