#include "platform/registry.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "handheld/base/fault.h"
#include "handheld/registry/registry_store.h"
#include "platform/files.h"
#include "tests/support/fault_runs.h"
#include "tests/support/test_handheld.h"

namespace corvane {
namespace {

using namespace ce;

constexpr WCHAR kAgentKey[] = u"SOFTWARE\\Tenbrook\\Corvane";
constexpr DWORD kUntouched = 0xEEEEEEEE;

LONG Open(HKEY parent, const WCHAR* path, HKEY* key) {
  return RegOpenKeyExW(parent, path, 0, 0, key);
}
LONG CreateKey(const WCHAR* path, HKEY* key, DWORD* disposition = nullptr) {
  return RegCreateKeyExW(HKEY_LOCAL_MACHINE, path, 0, nullptr, 0, 0, nullptr, key, disposition);
}
constexpr LONG Answer(DWORD error) {
  return static_cast<LONG>(error);
}

class RegistryCall : public testing::HandheldTest {
 protected:
  void TearDown() override {
    for (const HKEY key : keys_) RegCloseKey(key);
    HandheldTest::TearDown();
  }
  // Closed in the end, if it is still open.
  HKEY Create(const WCHAR* path) {
    HKEY key = 0;
    EXPECT_EQ(CreateKey(path, &key), 0);
    return keys_.emplace_back(key);
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

 private:
  std::vector<HKEY> keys_;
};

using RegOpenKeyEx = RegistryCall;
using RegCreateKeyEx = RegistryCall;
using RegQueryValueEx = RegistryCall;
using RegSetValueEx = RegistryCall;
using RegCloseKeyCall = RegistryCall;

TEST_F(RegOpenKeyEx, AnswersAPositiveCodeForAKeyThatIsNotThere) {
  HKEY key = kUntouched;
  EXPECT_EQ(Open(HKEY_LOCAL_MACHINE, kAgentKey, &key), Answer(ERROR_FILE_NOT_FOUND));
  EXPECT_EQ(key, kUntouched);
}

TEST_F(RegOpenKeyEx, MatchesNamesWithoutRegardToCase) {
  Create(kAgentKey);
  HKEY key = 0;
  EXPECT_EQ(Open(HKEY_LOCAL_MACHINE, u"software\\TENBROOK\\corvane", &key), 0);
  EXPECT_EQ(RegCloseKey(key), 0);
}

TEST_F(RegOpenKeyEx, OpensBelowAnOpenKey) {
  const HKEY parent = Create(u"SOFTWARE\\Tenbrook");
  Create(kAgentKey);
  HKEY key = 0;
  EXPECT_EQ(Open(parent, u"Corvane", &key), 0);
  RegCloseKey(key);
  EXPECT_EQ(Open(parent, nullptr, &key), 0) << "no sub-key: the key itself";
}

TEST_F(RegOpenKeyEx, RefusesAHandleThatIsNoKey) {
  HKEY key = 0;
  const HANDLE file =
      CreateFileW(u"\\note.txt", GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, 0);
  for (const HKEY parent : {HKEY{0}, HKEY{12}, file, INVALID_HANDLE_VALUE}) {
    EXPECT_EQ(Open(parent, u"SOFTWARE", &key), Answer(ERROR_INVALID_HANDLE));
  }
  CloseHandle(file);
}

TEST_F(RegCreateKeyEx, MakesEveryKeyOnTheWay) {
  DWORD disposition = 0;
  HKEY key = 0;
  ASSERT_EQ(CreateKey(kAgentKey, &key, &disposition), 0);
  RegCloseKey(key);
  EXPECT_EQ(disposition, REG_CREATED_NEW_KEY);
  EXPECT_TRUE(handheld_->registry().HasKey(u"SOFTWARE\\Tenbrook"));
  ASSERT_EQ(CreateKey(kAgentKey, &key, &disposition), 0);
  RegCloseKey(key);
  EXPECT_EQ(disposition, REG_OPENED_EXISTING_KEY);
}

TEST_F(RegCreateKeyEx, RefusesNamesThatNoKeyCanHave) {
  HKEY key = 0;
  for (const std::u16string& name :
       {std::u16string(u"a\\\\b"), std::u16string(u"a\\"), std::u16string(u"\\a"),
        std::u16string(u"line\nbreak"), std::u16string(256, u'n'), std::u16string(u"\xD800")}) {
    EXPECT_EQ(CreateKey(name.c_str(), &key), Answer(ERROR_INVALID_NAME));
  }
}

TEST_F(RegSetValueEx, IsReadBackByQuery) {
  const HKEY key = Create(kAgentKey);
  EXPECT_EQ(Set(key, u"Logging", 42), 0);
  DWORD value = 0;
  EXPECT_EQ(Query(key, u"LOGGING", value), 0);
  EXPECT_EQ(value, 42u);
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
  }
}

TEST_F(RegSetValueEx, ChangesNothingWhenTheFileCannotBeWritten) {
  const HKEY key = Create(kAgentKey);
  EXPECT_EQ(Set(key, u"Logging", 1), 0);
  {
    const auto plan = host::FaultPlan::FailCalls("ReplaceFile", ERROR_DISK_FULL);
    EXPECT_EQ(Set(key, u"Logging", 2), Answer(ERROR_DISK_FULL));
  }
  DWORD value = 0;
  EXPECT_EQ(Query(key, u"Logging", value), 0);
  EXPECT_EQ(value, 1u);
}

TEST_F(RegSetValueEx, RefusesAKeyThatWasDeletedMeanwhile) {
  const HKEY key = Create(kAgentKey);
  ASSERT_EQ(handheld_->registry().DeleteKey(u"SOFTWARE"), ERROR_SUCCESS);
  EXPECT_EQ(Set(key, u"Logging", 1), Answer(ERROR_FILE_NOT_FOUND));
  EXPECT_EQ(RegCloseKey(key), 0);
}

TEST_F(RegQueryValueEx, AnswersAPositiveCodeForAValueThatIsNotThere) {
  const HKEY key = Create(kAgentKey);
  DWORD value = 0;
  EXPECT_EQ(Query(key, u"IPAddr", value), Answer(ERROR_FILE_NOT_FOUND));
}

TEST_F(RegQueryValueEx, LeavesAShortBufferAloneAndNamesTheSize) {
  const HKEY key = Create(kAgentKey);
  Set(key, u"Logging", 42);
  BYTE data[2] = {9, 9};
  DWORD size = 2;
  EXPECT_EQ(RegQueryValueExW(key, u"Logging", nullptr, nullptr, data, &size),
            Answer(ERROR_MORE_DATA));
  EXPECT_EQ(size, 4u);
  EXPECT_EQ(data[0], 9);
  size = 0;
  EXPECT_EQ(RegQueryValueExW(key, u"Logging", nullptr, nullptr, nullptr, &size), 0);
  EXPECT_EQ(size, 4u);
}

TEST_F(RegQueryValueEx, ReadsTheDefaultValueUnderNoName) {
  const HKEY key = Create(kAgentKey);
  EXPECT_EQ(Set(key, nullptr, 5), 0);
  DWORD value = 0;
  EXPECT_EQ(Query(key, u"", value), 0);
  EXPECT_EQ(value, 5u);
}

TEST_F(RegCloseKeyCall, MakesTheHandleInvalid) {
  const HKEY key = Create(kAgentKey);
  EXPECT_EQ(RegCloseKey(key), 0);
  DWORD value = 0;
  EXPECT_EQ(Query(key, u"Logging", value), Answer(ERROR_INVALID_HANDLE));
  EXPECT_EQ(RegCloseKey(key), Answer(ERROR_INVALID_HANDLE));
  EXPECT_EQ(RegCloseKey(HKEY_LOCAL_MACHINE), 0);
}

TEST_F(RegCloseKeyCall, AKeyOutlivesItsHandheldAsAnInvalidHandle) {
  const HKEY key = Create(kAgentKey);
  handheld_.Reopen();
  DWORD value = 0;
  EXPECT_EQ(Query(key, u"Logging", value), Answer(ERROR_INVALID_HANDLE));
  EXPECT_EQ(RegCloseKey(key), 0);
}

TEST(RegistryCallWithoutAHandheld, FailsCleanly) {
  HKEY key = 0;
  EXPECT_EQ(Open(HKEY_LOCAL_MACHINE, kAgentKey, &key), Answer(ERROR_NOT_READY));
  EXPECT_EQ(CreateKey(kAgentKey, &key), Answer(ERROR_NOT_READY));
}

// Each call of a small session fails once; the session ends with that code and leaves no harm.
TEST_F(RegistryCall, HandsOnTheFaultOfEachCall) {
  const auto session = []() -> LONG {
    HKEY key = 0;
    LONG status = CreateKey(kAgentKey, &key);
    if (status != 0) return status;
    DWORD value = 0;
    status = Set(key, u"Logging", 3);
    if (status == 0) status = Query(key, u"Logging", value);
    const LONG closed = RegCloseKey(key);
    if (closed != 0) RegCloseKey(key);
    return status != 0 ? status : closed;
  };
  const auto check = [](LONG status, const std::string& call) {
    EXPECT_EQ(status, Answer(call.empty() ? ERROR_SUCCESS : ERROR_WRITE_FAULT));
  };
  EXPECT_GE(testing::FailEachCall(ERROR_WRITE_FAULT, session, check), 4u);
}

}  // namespace
}  // namespace corvane
