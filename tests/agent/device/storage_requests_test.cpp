#include "agent/device/storage_requests.h"

#include <cstring>
#include <fstream>

#include "common/text/unicode.h"
#include "handheld/base/fault.h"
#include "tests/agent/device/device_support.h"
#include "tests/support/fault_runs.h"
#include "tests/support/paths.h"
#include "tests/support/volume_room.h"

namespace corvane::testing {
namespace {

namespace fs = std::filesystem;
using ce::host::FaultPlan;

constexpr RequestHandler kRequests[] = {GetTotalSpace, GetVolumeCount, GetCardSpace,
                                        GetCardDirectory, CVCeGetDiskFreeSpaceEx};

class StorageRequest : public DeviceTest {
 protected:
  // Another volume than the handheld's, where the system has a place in memory for that.
  static fs::path OtherVolume() { return SourcePath("."); }
  void MakeCard(const std::string& name) const { DeviceTest::MakeCard(name, target_.path()); }
  void MakeOtherCard(const std::string& name) const { DeviceTest::MakeCard(name, OtherVolume()); }

  static std::string PathInput(std::u16string_view path) { return text::ToUtf16Le(path); }
  static VolumeRoom RoomIn(const DeviceOutcome& outcome) {
    EXPECT_EQ(outcome.status, ce::S_OK);
    EXPECT_EQ(outcome.count, 24u);
    SpaceBlock block;
    if (outcome.output.size() != sizeof(block)) return {};
    std::memcpy(&block, outcome.output.data(), sizeof(block));
    EXPECT_EQ(block.size, 24u);
    EXPECT_EQ(block.reserved, 0u);
    return {block.total, block.free};
  }
  // The outcome tells the room of these volumes together.
  template <typename Ask>
  static void ExpectTruth(const std::vector<fs::path>& volumes, Ask ask) {
    VolumeRoom truth;
    const DeviceOutcome outcome = AskAtRest(
        volumes, &truth, ask,
        [](const DeviceOutcome& answer, const VolumeRoom& room) { return RoomIn(answer) == room; });
    EXPECT_EQ(RoomIn(outcome), truth);
  }

  const TemporaryDirectory target_;
};

TEST_F(StorageRequest, RefusesAStream) {
  MakeCard("card");
  for (const RequestHandler handler : kRequests) {
    ExpectNoOutput(Run(handler, Word(0), SomeStream()), ce::E_INVALIDARG);
  }
}

TEST_F(StorageRequest, AnswersOutOfMemoryWithoutOutput) {
  MakeCard("card");
  const auto plan = FaultPlan::FailCalls("LocalAlloc", ce::ERROR_NOT_ENOUGH_MEMORY);
  for (const RequestHandler handler : kRequests) {
    ExpectNoOutput(Run(handler, Word(0)), ce::E_OUTOFMEMORY);
  }
}

TEST_F(StorageRequest, EndsHonestlyWhicheverCallFails) {
  MakeCard("a");
  MakeOtherCard("b");
  for (const RequestHandler handler : kRequests) {
    const std::string input = handler == CVCeGetDiskFreeSpaceEx ? PathInput(u"\\a") : Word(1);
    const DeviceOutcome whole = Run(handler, input);
    EXPECT_EQ(whole.status, ce::S_OK);
    const auto calls = FailEachCall(
        ce::ERROR_READ_FAULT, [&] { return Run(handler, input); },
        [&](const DeviceOutcome& outcome, const std::string& call) {
          if (outcome.status != ce::S_OK) {
            EXPECT_EQ(outcome.count, 0u);
          } else {
            EXPECT_EQ(outcome.count, whole.count);
          }
          if (call == "LocalAlloc") {
            EXPECT_EQ(outcome.status, ce::E_OUTOFMEMORY);
          }
        });
    EXPECT_GE(calls, 2u);
  }
}

using TotalSpace = StorageRequest;

TEST_F(TotalSpace, IsZeroWithoutACard) {
  fs::create_directory(Root() / "directory");
  const DeviceOutcome outcome = Run(GetTotalSpace);
  EXPECT_EQ(outcome.status, ce::S_OK);
  EXPECT_EQ(outcome.output, Word(24) + std::string(20, '\0'));
}

TEST_F(TotalSpace, IsTheExactSumOfAllCards) {
  MakeCard("a");
  ExpectTruth({target_.path()}, [] { return Run(GetTotalSpace); });
  MakeOtherCard("b");
  ExpectTruth({target_.path(), OtherVolume()}, [] { return Run(GetTotalSpace); });
}

TEST_F(TotalSpace, CarriesIntoTheHighWord) {
  const VolumeRoom one = RoomOn(OtherVolume());
  ASSERT_GT(one.total, 0u);
  std::vector<fs::path> volumes;
  std::uint64_t total = 0;
  while (total <= 0xFFFFFFFF && volumes.size() < 200) {
    MakeOtherCard("card" + std::to_string(volumes.size()));
    volumes.push_back(OtherVolume());
    total += one.total;
  }
  ASSERT_GT(total, 0xFFFFFFFFu) << "the volume is too small to tell";
  ExpectTruth(volumes, [] { return Run(GetTotalSpace); });
}

TEST_F(TotalSpace, IgnoresItsInput) {
  MakeCard("a");
  for (const char* input : {"", "x", "any input at all"}) {
    ExpectTruth({target_.path()}, [input] { return Run(GetTotalSpace, input); });
  }
}

TEST_F(TotalSpace, CountsTheCardBeforeAgainForOneThatCannotBeAsked) {
  MakeOtherCard("a");
  MakeCard("b");
  const auto plan = FaultPlan::FailNthCall("GetDiskFreeSpaceExW", 2, ce::ERROR_NOT_READY);
  const VolumeRoom before = RoomOn(OtherVolume());
  const VolumeRoom room = RoomIn(Run(GetTotalSpace));
  EXPECT_TRUE(plan.fired());
  EXPECT_EQ(room.total, 2 * before.total);
  EXPECT_EQ(room.free % 2, 0u);
}

TEST_F(TotalSpace, CountsNothingForAFirstCardThatCannotBeAsked) {
  MakeCard("a");
  MakeOtherCard("b");
  const auto plan = FaultPlan::FailNthCall("GetDiskFreeSpaceExW", 1, ce::ERROR_NOT_READY);
  EXPECT_EQ(RoomIn(Run(GetTotalSpace)).total, RoomOn(OtherVolume()).total);
}

TEST_F(TotalSpace, LeavesOutACardThatGoesWhileItCounts) {
  MakeCard("a");
  MakeOtherCard("b");
  // Behind the count, the first card's path is not found.
  const auto plan = FaultPlan::FailNthCall("FindFirstFileW", 2, ce::ERROR_READ_FAULT);
  EXPECT_EQ(RoomIn(Run(GetTotalSpace)).total, RoomOn(OtherVolume()).total);
  EXPECT_TRUE(plan.fired());
}

using VolumeCount = StorageRequest;

TEST_F(VolumeCount, TellsHowManyCardsThereAre) {
  EXPECT_EQ(Run(GetVolumeCount).output, Word(0));
  MakeCard("a");
  MakeCard("b");
  fs::create_directory(Root() / "directory");
  const DeviceOutcome outcome = Run(GetVolumeCount, "ignored");
  EXPECT_EQ(outcome.status, ce::S_OK);
  EXPECT_EQ(outcome.output, Word(2));
}

using CardRequest = StorageRequest;
constexpr RequestHandler kCardRequests[] = {GetCardSpace, GetCardDirectory};

TEST_F(CardRequest, AnswersFalseForANumberThatNoCardHas) {
  for (const RequestHandler handler : kCardRequests) {
    ExpectNoOutput(Run(handler, Word(0)), ce::S_FALSE);
  }
  MakeCard("a");
  for (const RequestHandler handler : kCardRequests) {
    EXPECT_EQ(Run(handler, Word(0)).status, ce::S_OK);
    for (const ce::DWORD index : {1u, 2u, 0x7FFFFFFFu}) {
      ExpectNoOutput(Run(handler, Word(index)), ce::S_FALSE);
    }
  }
}

TEST_F(CardRequest, RefusesANegativeNumber) {
  MakeCard("a");
  for (const RequestHandler handler : kCardRequests) {
    for (const ce::DWORD index : {0xFFFFFFFFu, 0x80000000u}) {
      ExpectNoOutput(Run(handler, Word(index)), ce::E_INVALIDARG);
    }
  }
}

TEST_F(CardRequest, RefusesAnInputOfAnotherSizeEvenWithAValidNumberInIt) {
  MakeCard("a");
  for (const RequestHandler handler : kCardRequests) {
    for (const std::size_t size : {0u, 3u, 5u, 8u}) {
      ExpectNoOutput(Run(handler, std::string(size, '\0')), ce::E_INVALIDARG);
    }
  }
}

TEST_F(CardRequest, RefusesAMissingInput) {
  MakeCard("a");
  for (const RequestHandler handler : kCardRequests) {
    ce::DWORD count = 7;
    ce::BYTE* output = nullptr;
    EXPECT_EQ(handler(4, nullptr, &count, &output, nullptr), ce::E_INVALIDARG);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(output, nullptr);
  }
}

using CardSpace = StorageRequest;

TEST_F(CardSpace, IsTheRoomOnThatCard) {
  MakeCard("a");
  MakeOtherCard("b");
  ExpectTruth({target_.path()}, [] { return Run(GetCardSpace, Word(0)); });
  ExpectTruth({OtherVolume()}, [] { return Run(GetCardSpace, Word(1)); });
}

TEST_F(CardSpace, IsZeroWhenTheCardCannotBeAsked) {
  MakeCard("a");
  const auto plan = FaultPlan::FailCalls("GetDiskFreeSpaceExW", ce::ERROR_NOT_READY);
  const DeviceOutcome outcome = Run(GetCardSpace, Word(0));
  EXPECT_EQ(outcome.status, ce::S_OK);
  EXPECT_EQ(outcome.output, Word(24) + std::string(20, '\0'));
}

using CardDirectory = StorageRequest;

TEST_F(CardDirectory, IsTheCardsPathWithItsTerminator) {
  MakeCard("Storage Card");
  const DeviceOutcome outcome = Run(GetCardDirectory, Word(0));
  EXPECT_EQ(outcome.status, ce::S_OK);
  EXPECT_EQ(outcome.count, 28u);
  EXPECT_EQ(outcome.output, PathInput(std::u16string_view(u"\\Storage Card\0", 14)));
}

TEST_F(CardDirectory, CarriesEveryScriptAndTheLongestName) {
  MakeCard("Carte m\xC3\xA9moire \xF0\x9F\x98\x80");
  EXPECT_EQ(Run(GetCardDirectory, Word(0)).output,
            PathInput(u"\\Carte m\u00E9moire \U0001F600") + std::string(2, '\0'));
  MakeCard(std::string(255, 'a'));
  EXPECT_EQ(Run(GetCardDirectory, Word(0)).count, 514u);
}

class DiskFreeSpace : public StorageRequest {
 protected:
  static DeviceOutcome Ask(std::u16string_view path) {
    return Run(CVCeGetDiskFreeSpaceEx, PathInput(path));
  }
  // The count is 0, but the block is there for the dispatcher to free.
  static void ExpectFailure(const DeviceOutcome& outcome, ce::DWORD error) {
    EXPECT_EQ(outcome.status, static_cast<ce::HRESULT>(error));
    EXPECT_EQ(outcome.count, 0u);
    EXPECT_TRUE(outcome.hasBlock);
  }
};

TEST_F(DiskFreeSpace, IsThatOfTheVolumeWithTheDirectory) {
  fs::create_directories(Root() / "One" / "Two");
  MakeOtherCard("Card");
  ExpectTruth({Root()}, [] { return Ask(u"\\"); });
  ExpectTruth({Root()}, [] { return Ask(u"\\one\\TWO"); });
  ExpectTruth({OtherVolume()}, [] { return Ask(u"\\CARD"); });
  ExpectTruth({OtherVolume()}, [] { return Ask(u"card\\tests\\"); });
}

TEST_F(DiskFreeSpace, LeavesOutHalfACharacterAndWhatIsBehindAZero) {
  ExpectTruth({Root()}, [] { return Run(CVCeGetDiskFreeSpaceEx, PathInput(u"\\") + "x"); });
  ExpectTruth({Root()}, [] { return Ask(std::u16string_view(u"\\\0nothing", 9)); });
}

TEST_F(DiskFreeSpace, AnswersTheSystemsErrorWithAnEmptyBlockAttached) {
  ExpectFailure(Ask(u"\\nothing"), ce::ERROR_PATH_NOT_FOUND);
  ExpectFailure(Ask(u""), ce::ERROR_PATH_NOT_FOUND);
  ExpectFailure(Run(CVCeGetDiskFreeSpaceEx, "x"), ce::ERROR_PATH_NOT_FOUND);
  std::ofstream(Root() / "file");
  ExpectFailure(Ask(u"\\file"), ce::ERROR_PATH_NOT_FOUND);
  const auto plan = FaultPlan::FailCalls("GetDiskFreeSpaceExW", ce::ERROR_NOT_READY);
  ExpectFailure(Ask(u"\\"), ce::ERROR_NOT_READY);
}

TEST_F(DiskFreeSpace, FillsTheAttachedBlockWithZerosBehindItsSize) {
  ce::DWORD count = 7;
  ce::BYTE* block = nullptr;
  const std::string input = PathInput(u"\\nothing");
  EXPECT_EQ(CVCeGetDiskFreeSpaceEx(static_cast<ce::DWORD>(input.size()),
                                   reinterpret_cast<const ce::BYTE*>(input.data()), &count, &block,
                                   nullptr),
            static_cast<ce::HRESULT>(ce::ERROR_PATH_NOT_FOUND));
  EXPECT_EQ(count, 0u);
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(block), 24),
            Word(24) + std::string(20, '\0'));
  ce::LocalFree(block);
}

TEST_F(DiskFreeSpace, ClearsItsOutputAlsoWhenItRefusesAStream) {
  ce::DWORD count = 7;
  ce::BYTE some = 0;
  ce::BYTE* block = &some;
  EXPECT_EQ(CVCeGetDiskFreeSpaceEx(0, nullptr, &count, &block, SomeStream()), ce::E_INVALIDARG);
  EXPECT_EQ(count, 0u);
  EXPECT_EQ(block, nullptr);
}

TEST_F(DiskFreeSpace, RefusesAPathOfMoreThan259Characters) {
  fs::create_directories(Root() / std::string(100, 'a') / std::string(100, 'b') /
                         std::string(55, 'c'));
  const std::u16string longest = u"\\" + std::u16string(100, u'a') + u"\\" +
                                 std::u16string(100, u'b') + u"\\" + std::u16string(55, u'c') +
                                 u"\\";
  ASSERT_EQ(longest.size(), 259u);
  ExpectTruth({Root()}, [&] { return Ask(longest); });
  ExpectNoOutput(Ask(longest + u"x"), ce::E_INVALIDARG);
  ExpectNoOutput(Run(CVCeGetDiskFreeSpaceEx, PathInput(longest) + "x"), ce::E_INVALIDARG);
  ExpectNoOutput(Run(CVCeGetDiskFreeSpaceEx, std::string(1024, '\\')), ce::E_INVALIDARG);
}

TEST_F(DiskFreeSpace, NeverLeadsOutOfTheHandheld) {
  for (const char16_t* path : {u"..", u"\\..", u"\\..\\..\\..", u"/../..", u"\\.\\", u"\\\\server",
                               u"C:\\", u"\\nul", u"\\COM1", u"\\Card\\..\\.."}) {
    MakeOtherCard("Card");
    ExpectFailure(Ask(path), 123);
    fs::remove(Root() / "Card");
  }
  ExpectFailure(Ask(u"/proc"), ce::ERROR_PATH_NOT_FOUND);
  ExpectFailure(Ask(u"\\tmp"), ce::ERROR_PATH_NOT_FOUND);
}

}  // namespace
}  // namespace corvane::testing
