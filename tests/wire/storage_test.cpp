// The room on the handheld and its cards, asked for over the wire.
#include <gtest/gtest.h>

#include <fstream>

#include "tests/support/paths.h"
#include "tests/support/volume_room.h"
#include "tests/support/wire/agent_process.h"

namespace corvane::testing {
namespace {

namespace fs = std::filesystem;

constexpr std::uint32_t kNoSuchCard = 1;
constexpr std::uint32_t kPathNotFound = 3;
constexpr std::uint32_t kInvalidName = 123;

std::string Number(std::uint64_t value) {
  return Word(static_cast<std::uint32_t>(value)) + Word(static_cast<std::uint32_t>(value >> 32));
}

class StorageWire : public WireTest {
 protected:
  fs::path Root() { return handheld().path() / "files"; }
  // Another volume than the handheld's, where the system has a place in memory for that.
  static fs::path OtherVolume() { return SourcePath("."); }
  void MakeCard(const std::string& name, const fs::path& target) {
    fs::create_directory_symlink(target, Root() / name);
  }
  void MakeCard(const std::string& name) { MakeCard(name, target_.path()); }

  // The room of these volumes together is answered.
  void ExpectTruth(const std::vector<fs::path>& volumes, const Invoke& invoke) {
    VolumeRoom truth;
    const auto tells = [](const BufferedReply& answer, const VolumeRoom& room) {
      return answer.output == Block(room);
    };
    const BufferedReply reply = AskAtRest(
        volumes, &truth, [&] { return CallBuffered(invoke); }, tells);
    EXPECT_EQ(reply.totalLength, 40u);
    EXPECT_EQ(reply.reserved, 0u);
    EXPECT_EQ(reply.status, 0u);
    EXPECT_EQ(reply.statusAgain, 0u);
    EXPECT_EQ(reply.outputCount, 24u);
    EXPECT_EQ(reply.output, Block(truth));
  }
  static std::string Block(const VolumeRoom& room) {
    return Word(24) + Word(0) + Number(room.total) + Number(room.free);
  }
  static void ExpectNothing(const BufferedReply& reply, std::uint32_t status) {
    EXPECT_EQ(reply.totalLength, 16u);
    EXPECT_EQ(reply.status, status);
    EXPECT_EQ(reply.statusAgain, status);
    EXPECT_EQ(reply.outputCount, 0u);
    EXPECT_EQ(reply.output, "");
  }
  BufferedReply FreeSpace(const std::string& path) {
    return CallBuffered({.function = "CVCeGetDiskFreeSpaceEx", .input = Utf16(path)});
  }

  const TemporaryDirectory target_;
};

TEST_F(StorageWire, SpeaksTheseBytes) {
  MakeCard("Storage Card");
  RawConnection connection = Connect();
  const auto bytes = [](std::initializer_list<int> values) {
    return std::string(values.begin(), values.end());
  };
  connection.Send(bytes({74, 0, 0, 0}) +                              // the body's length
                  bytes({69, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}) +      // invoke
                  bytes({2, 0, 0, 0, 'c', 0, 0, 0, 0, 0, 0, 0}) +     // library
                  bytes({17, 0, 0, 0}) + Utf16("GetCardDirectory") +  // function
                  bytes({0, 0}) +                                     // its terminator
                  bytes({4, 0, 0, 0, 0, 0, 0, 0}) +                   // input: the first card
                  bytes({0, 0, 0, 0}));                               // stream flag
  connection.FinishSending();
  EXPECT_EQ(connection.ReceiveToEnd(), bytes({44, 0, 0, 0, 0, 0, 0, 0}) +  // total length, reserved
                                           bytes({0, 0, 0, 0, 0, 0, 0, 0}) +  // status, twice
                                           bytes({28, 0, 0, 0}) +             // output count
                                           Utf16("\\Storage Card") + bytes({0, 0}));
}

TEST_F(StorageWire, KnowsNoCardWhereThereIsNone) {
  fs::create_directory(Root() / "directory");
  std::ofstream(Root() / "file");
  EXPECT_EQ(CallBuffered({.function = "GetVolumeCount"}).output, Word(0));
  const BufferedReply total = CallBuffered({.function = "GetTotalSpace"});
  EXPECT_EQ(total.status, 0u);
  EXPECT_EQ(total.output, Word(24) + std::string(20, '\0'));
  for (const char* name : {"GetCardSpace", "GetCardDirectory"}) {
    ExpectNothing(CallBuffered({.function = name, .input = Word(0)}), kNoSuchCard);
  }
}

TEST_F(StorageWire, TellsTheTruthOfItsCards) {
  MakeCard("First");
  MakeCard("Second", OtherVolume());
  const BufferedReply count = CallBuffered({.function = "GetVolumeCount"});
  EXPECT_EQ(count.totalLength, 20u);
  EXPECT_EQ(count.output, Word(2));
  ExpectTruth({target_.path(), OtherVolume()}, {.function = "GetTotalSpace"});
  ExpectTruth({target_.path()}, {.function = "GetCardSpace", .input = Word(0)});
  ExpectTruth({OtherVolume()}, {.function = "GetCardSpace", .input = Word(1)});
  ExpectNothing(CallBuffered({.function = "GetCardSpace", .input = Word(2)}), kNoSuchCard);
  EXPECT_EQ(CallBuffered({.function = "GetCardDirectory", .input = Word(1)}).output,
            Utf16("\\Second") + std::string(2, '\0'));
}

TEST_F(StorageWire, SeesACardThatComesAndGoes) {
  MakeCard("First");
  EXPECT_EQ(CallBuffered({.function = "GetVolumeCount"}).output, Word(1));
  MakeCard("Second");
  EXPECT_EQ(CallBuffered({.function = "GetVolumeCount"}).output, Word(2));
  fs::remove(Root() / "First");
  EXPECT_EQ(CallBuffered({.function = "GetCardDirectory", .input = Word(0)}).output,
            Utf16("\\Second") + std::string(2, '\0'));
}

TEST_F(StorageWire, RefusesACardNumberOfTheWrongSizeOrSign) {
  MakeCard("First");
  for (const char* name : {"GetCardSpace", "GetCardDirectory"}) {
    for (const std::string& input :
         {std::string(), std::string(3, '\0'), std::string(5, '\0'), Word(0xFFFFFFFF)}) {
      ExpectNothing(CallBuffered({.function = name, .input = input}), kInvalidArgument);
    }
  }
}

TEST_F(StorageWire, TellsTheRoomOnTheVolumeOfADirectory) {
  fs::create_directories(Root() / "One" / "Two");
  MakeCard("Card", OtherVolume());
  ExpectTruth({Root()}, {.function = "CVCeGetDiskFreeSpaceEx", .input = Utf16("\\")});
  ExpectTruth({Root()}, {.function = "CVCeGetDiskFreeSpaceEx", .input = Utf16("\\one\\two")});
  ExpectTruth({OtherVolume()}, {.function = "CVCeGetDiskFreeSpaceEx", .input = Utf16("\\CARD")});
  ExpectTruth({OtherVolume()},
              {.function = "CVCeGetDiskFreeSpaceEx", .input = Utf16("\\Card\\tests")});
}

TEST_F(StorageWire, AnswersTheSystemsErrorForADirectoryThatIsNotThere) {
  ExpectNothing(FreeSpace("\\nothing"), kPathNotFound);
  ExpectNothing(FreeSpace(""), kPathNotFound);
  ExpectNothing(FreeSpace(std::string(259, 'x')), kInvalidName);
  ExpectNothing(FreeSpace(std::string(260, 'x')), kInvalidArgument);
}

TEST_F(StorageWire, NeverLeadsOutOfTheHandheld) {
  MakeCard("Card");
  for (const char* path : {"\\..", "..", "/../..", "\\Card\\..\\..", "\\.", "C:\\", "\\NUL"}) {
    ExpectNothing(FreeSpace(path), kInvalidName);
  }
  ExpectNothing(FreeSpace("/proc"), kPathNotFound);
  ExpectServing();
}

TEST_F(StorageWire, IsNoStreamedRequest) {
  for (const char* name : {"GetTotalSpace", "GetVolumeCount", "GetCardSpace", "GetCardDirectory",
                           "CVCeGetDiskFreeSpaceEx"}) {
    RawConnection connection = Connect();
    connection.Send(Record(Invoke{.function = name, .input = Word(0), .streamFlag = 1}.Body()));
    EXPECT_EQ(connection.ReceiveToEnd(), Word(127)) << name;
  }
}

}  // namespace
}  // namespace corvane::testing
