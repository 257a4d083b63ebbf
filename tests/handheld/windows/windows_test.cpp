#include "platform/windows.h"

#include <gtest/gtest.h>

#include <thread>

#include "handheld/base/fault.h"
#include "handheld/windows/windows.h"
#include "platform/status.h"
#include "tests/support/test_handheld.h"

namespace corvane {
namespace {

using namespace ce;
using host::FaultPlan;

constexpr UINT kAdd = 0x400;
constexpr UINT kDestroyYourself = 0x401;

LRESULT Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == kAdd) return static_cast<LRESULT>(wParam) + lParam;
  if (message == kDestroyYourself) return DestroyWindow(window);
  return DefWindowProcW(window, message, wParam, lParam);
}

// A handheld and the window class "Adder".
class WindowCall : public testing::HandheldTest {
 protected:
  void SetUp() override { ASSERT_NE(Register(u"Adder"), 0); }
  void TearDown() override {
    EXPECT_TRUE(UnregisterClassW(u"adder", nullptr));
    EXPECT_EQ(host::WindowsOfThread(), 0u);
    HandheldTest::TearDown();
  }

  static ATOM Register(const WCHAR* name, WNDPROC procedure = Procedure) {
    WNDCLASSW windowClass;
    windowClass.lpfnWndProc = procedure;
    windowClass.lpszClassName = name;
    return RegisterClassW(&windowClass);
  }
  static HWND Make(const WCHAR* name, HWND parent, DWORD style = WS_CHILD) {
    return CreateWindowExW(0, name, u"", style, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT,
                           CW_USEDEFAULT, parent, 0, GetModuleHandleW(nullptr), nullptr);
  }
  static HWND Make() { return Make(u"Adder", GetForegroundWindow()); }
};

using CreateWindowCall = WindowCall;
using DestroyWindowCall = WindowCall;
using SendMessageCall = WindowCall;
using RegisterClassCall = WindowCall;

TEST_F(CreateWindowCall, MakesAWindowOfAClassInAnyCase) {
  const HWND window = Make(u"aDDER", GetForegroundWindow());
  ASSERT_NE(window, 0u);
  EXPECT_EQ(host::WindowsOfThread(), 1u);
  EXPECT_TRUE(DestroyWindow(window));
}

TEST_F(CreateWindowCall, RefusesAnUnknownClass) {
  EXPECT_EQ(Make(u"Subtractor", GetForegroundWindow()), 0u);
  EXPECT_EQ(GetLastError(), ERROR_CANNOT_FIND_WND_CLASS);
  EXPECT_EQ(Make(nullptr, GetForegroundWindow()), 0u);
  EXPECT_EQ(GetLastError(), ERROR_CANNOT_FIND_WND_CLASS);
}

TEST_F(CreateWindowCall, RefusesAChildWithoutAParent) {
  EXPECT_EQ(Make(u"Adder", 0), 0u);
  EXPECT_EQ(GetLastError(), ERROR_TLW_WITH_WSCHILD);
  EXPECT_EQ(Make(u"Adder", 0x7777), 0u);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_WINDOW_HANDLE);
  const HWND top = Make(u"Adder", 0, 0);
  const HWND child = Make(u"Adder", top);
  EXPECT_NE(child, 0u);
  EXPECT_TRUE(DestroyWindow(child));
  EXPECT_TRUE(DestroyWindow(top));
}

TEST_F(CreateWindowCall, MakesNoControlBeforeItsModuleIsLoaded) {
  EXPECT_EQ(Make(u"RichInk", GetForegroundWindow()), 0u);
  EXPECT_EQ(GetLastError(), ERROR_CANNOT_FIND_WND_CLASS);
  const HMODULE module = LoadLibraryW(u"RichInk.dll");
  const HWND window = Make(u"RICHINK", GetForegroundWindow());
  EXPECT_NE(window, 0u);
  FreeLibrary(module);
  EXPECT_EQ(Make(u"RichInk", GetForegroundWindow()), 0u);
  EXPECT_EQ(SendMessageW(window, 0, 0, 0), 0) << "it lives on without its class";
  EXPECT_TRUE(DestroyWindow(window));
}

TEST_F(CreateWindowCall, LeavesAProgramsOwnClassOfTheControlsNameAlone) {
  ASSERT_NE(Register(u"richink"), 0);
  FreeLibrary(LoadLibraryW(u"RichInk.dll"));
  const HWND window = Make(u"RichInk", GetForegroundWindow());
  EXPECT_EQ(SendMessageW(window, kAdd, 1, 1), 2);
  EXPECT_TRUE(DestroyWindow(window));
  EXPECT_TRUE(UnregisterClassW(u"RichInk", nullptr));
}

TEST_F(DestroyWindowCall, DestroysOnce) {
  const HWND window = Make();
  EXPECT_TRUE(DestroyWindow(window));
  EXPECT_FALSE(DestroyWindow(window));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_WINDOW_HANDLE);
}

TEST_F(DestroyWindowCall, SparesTheDesktop) {
  EXPECT_FALSE(DestroyWindow(GetForegroundWindow()));
  EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
}

TEST_F(DestroyWindowCall, WorksFromWithinAMessage) {
  const HWND window = Make();
  EXPECT_EQ(SendMessageW(window, kDestroyYourself, 0, 0), TRUE);
  EXPECT_EQ(host::WindowsOfThread(), 0u);
}

TEST_F(DestroyWindowCall, IsDoneAtTheThreadsEnd) {
  std::thread([] { Make(); }).join();
  EXPECT_TRUE(UnregisterClassW(u"Adder", nullptr)) << "it has no windows";
  EXPECT_NE(Register(u"Adder"), 0);
}

TEST_F(SendMessageCall, GivesWhatTheProcedureAnswers) {
  const HWND window = Make();
  EXPECT_EQ(SendMessageW(window, kAdd, 40, 2), 42);
  EXPECT_EQ(SendMessageW(window, 0x402, 40, 2), 0);
  EXPECT_TRUE(DestroyWindow(window));
}

TEST_F(SendMessageCall, FailsForAWindowThatIsNotThisThreads) {
  const HWND window = Make();
  std::thread([window] {
    EXPECT_EQ(SendMessageW(window, kAdd, 40, 2), 0);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_WINDOW_HANDLE);
    EXPECT_FALSE(DestroyWindow(window));
  }).join();
  EXPECT_TRUE(DestroyWindow(window));
  EXPECT_EQ(SendMessageW(window, kAdd, 40, 2), 0);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_WINDOW_HANDLE);
}

TEST_F(SendMessageCall, MeansNothingToTheDesktop) {
  EXPECT_EQ(SendMessageW(GetForegroundWindow(), kAdd, 40, 2), 0);
}

TEST_F(RegisterClassCall, RefusesANameThatIsTaken) {
  EXPECT_EQ(Register(u"ADDER"), 0);
  EXPECT_EQ(GetLastError(), ERROR_CLASS_ALREADY_EXISTS);
}

TEST_F(RegisterClassCall, RefusesAClassWithoutANameOrProcedure) {
  EXPECT_EQ(RegisterClassW(nullptr), 0);
  EXPECT_EQ(Register(nullptr), 0);
  EXPECT_EQ(Register(u""), 0);
  EXPECT_EQ(Register(u"Other", nullptr), 0);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

TEST_F(RegisterClassCall, IsUndoneOnceItsWindowsAreGone) {
  const HWND window = Make();
  EXPECT_FALSE(UnregisterClassW(u"Adder", nullptr));
  EXPECT_EQ(GetLastError(), ERROR_CLASS_HAS_WINDOWS);
  EXPECT_TRUE(DestroyWindow(window));
  EXPECT_TRUE(UnregisterClassW(u"Adder", nullptr));
  EXPECT_FALSE(UnregisterClassW(u"Adder", nullptr));
  EXPECT_EQ(GetLastError(), ERROR_CLASS_DOES_NOT_EXIST);
  EXPECT_FALSE(UnregisterClassW(nullptr, nullptr));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  EXPECT_NE(Register(u"Adder"), 0);
}

TEST_F(WindowCall, HandsOnTheFaultOfEachCall) {
  const auto session = []() -> DWORD {
    const HWND parent = GetForegroundWindow();
    if (parent == 0) return GetLastError();
    const HWND window = Make(u"Adder", parent);
    if (window == 0) return GetLastError();
    DWORD error = ERROR_SUCCESS;
    if (SendMessageW(window, kAdd, 0, 0) != 0) error = GetLastError();
    if (!DestroyWindow(window)) {
      error = GetLastError();
      DestroyWindow(window);
    }
    return error;
  };
  for (const char* call :
       {"GetForegroundWindow", "CreateWindowExW", "SendMessageW", "DestroyWindow"}) {
    {
      const auto plan = FaultPlan::FailNthCall(call, 1, ERROR_GEN_FAILURE);
      EXPECT_EQ(session(), ERROR_GEN_FAILURE) << call;
    }
    EXPECT_EQ(host::WindowsOfThread(), 0u) << call;
  }
  EXPECT_EQ(session(), ERROR_SUCCESS);
  const auto plan = FaultPlan::FailNthCall("RegisterClassW", 1, ERROR_NOT_ENOUGH_MEMORY);
  EXPECT_EQ(Register(u"Other"), 0);
  EXPECT_EQ(GetLastError(), ERROR_NOT_ENOUGH_MEMORY);
}

TEST_F(WindowCall, HasAStockOfBrushes) {
  EXPECT_NE(GetStockObject(WHITE_BRUSH), 0u);
  EXPECT_EQ(GetStockObject(-1), 0u);
  EXPECT_EQ(GetStockObject(1000), 0u);
}

TEST(WindowCallWithoutAHandheld, HasNoForegroundWindow) {
  EXPECT_EQ(GetForegroundWindow(), 0u);
  EXPECT_EQ(GetLastError(), ERROR_NOT_READY);
}

}  // namespace
}  // namespace corvane
