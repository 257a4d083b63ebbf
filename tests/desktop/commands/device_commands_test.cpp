#include "desktop/commands/commands_device.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "common/text/unicode.h"
#include "desktop/commands/clock_text.h"
#include "desktop/wire/device_requests.h"
#include "tests/desktop/fixtures.h"

namespace desktop::testing {
namespace {

using ::testing::HasSubstr;

std::string Room(std::uint64_t total, std::uint64_t free) {
  const auto number = [](std::uint64_t value) {
    return Word(static_cast<std::uint32_t>(value)) + Word(static_cast<std::uint32_t>(value >> 32));
  };
  return Word(24) + Word(0) + number(total) + number(free);
}

std::string Directory(const std::string& path) {
  return text::ToUtf16Le(text::FromUtf8Lossy(path)) + std::string(2, '\0');
}

std::string Version() {
  std::string block = Word(52) + Word(4) + Word(12) + "Tue Jun 26 10:41:20 2007";
  block.resize(52);
  return block;
}

class DeviceCommandsTest : public CommandTest {
 protected:
  int Info(bool json, std::vector<std::string> cards) {
    std::vector<std::string> replies = {
        ReplyRecord(0, Version()), ReplyRecord(0, Word(0x0407)),
        ReplyRecord(0, *SystemTimeBytes(*ParseTime("2008-02-15T09:05:07Z"))),
        ReplyRecord(0, Word(1))};
    replies.insert(replies.end(), cards.begin(), cards.end());
    return RunAgainst(replies, [&](const ConnectionOptions& connection) {
      return PrintInfo(connection, json, console_.console);
    });
  }
  int Storage(const std::string& reply, const std::optional<std::string>& directory = {},
              bool json = false) {
    return RunAgainst({reply}, [&](const ConnectionOptions& connection) {
      return PrintStorage(connection, directory, json, console_.console);
    });
  }
  int Cards(const std::vector<std::string>& replies, bool json = false) {
    return RunAgainst(replies, [&](const ConnectionOptions& connection) {
      return PrintCards(connection, json, console_.console);
    });
  }
};

const std::vector<std::string> kOneCard = {ReplyRecord(0, Word(1)),
                                           ReplyRecord(0, Directory("\\K\xC3\xA4rte")),
                                           ReplyRecord(0, Room(std::uint64_t{8} << 30, 1536))};

TEST_F(DeviceCommandsTest, InfoTellsAllInLines) {
  EXPECT_EQ(Info(false, kOneCard), kDone);
  EXPECT_EQ(out(),
            "agent     4.12, built Tue Jun 26 10:41:20 2007\n"
            "language  de-DE (0x0407)\n"
            "time      2008-02-15T09:05:07Z\n"
            "ink       yes\n"
            "card 0    \\K\xC3\xA4rte: 1.5 KiB free of 8.0 GiB (1536 of 8589934592 bytes)\n");
  ASSERT_EQ(seen_.size(), 7U);
  EXPECT_EQ(seen_[0].function, "GetDLLVersion");
  EXPECT_EQ(seen_[1].function, "CVCeGetSystemDefaultLangID");
  EXPECT_EQ(seen_[2].function, "CVCeGetSystemTime");
  EXPECT_EQ(seen_[3].function, "CVCeHasRichInk");
  EXPECT_EQ(seen_[4].function, "GetVolumeCount");
  EXPECT_EQ(seen_[5].function, "GetCardDirectory");
  EXPECT_EQ(seen_[5].input, Word(0));
  EXPECT_EQ(seen_[6].function, "GetCardSpace");
  EXPECT_EQ(seen_[6].input, Word(0));
}

TEST_F(DeviceCommandsTest, InfoIsOneObjectAsJson) {
  EXPECT_EQ(Info(true, kOneCard), kDone);
  EXPECT_EQ(out(),
            "{\"version\":{\"major\":4,\"minor\":12,\"built\":\"Tue Jun 26 10:41:20 2007\"},"
            "\"language\":{\"tag\":\"de-DE\",\"id\":1031},\"time\":\"2008-02-15T09:05:07Z\","
            "\"ink\":true,\"cards\":[{\"card\":0,\"directory\":\"\\\\K\xC3\xA4rte\","
            "\"total\":8589934592,\"free\":1536}]}\n");
}

TEST_F(DeviceCommandsTest, InfoSaysThatThereIsNoCard) {
  EXPECT_EQ(Info(false, {ReplyRecord(0, Word(0))}), kDone);
  EXPECT_THAT(out(), HasSubstr("cards     none\n"));
}

TEST_F(DeviceCommandsTest, InfoFailsWithTheRequestThatIsNotKnown) {
  const auto info = [&](const ConnectionOptions& connection) {
    return PrintInfo(connection, false, console_.console);
  };
  EXPECT_EQ(RunAgainst({ReplyRecord(0)}, info), kFailed);
  EXPECT_EQ(err(), "corvane-desktop: the agent does not know the request GetDLLVersion\n");
  EXPECT_EQ(RunAgainst({ReplyRecord(0, Word(52))}, info), kFailed);
  EXPECT_THAT(err(), HasSubstr("the answer to GetDLLVersion makes no sense: 4 bytes\n"));
  EXPECT_EQ(RunAgainst({ReplyRecord(0x80070057)}, info), kFailed);
  EXPECT_THAT(err(), HasSubstr("the handheld does not answer GetDLLVersion: 0x80070057"));
  EXPECT_EQ(out(), "");
}

TEST_F(DeviceCommandsTest, StorageTellsTheRoomOnAllCards) {
  EXPECT_EQ(Storage(ReplyRecord(0, Room(std::uint64_t{5} << 32, 1))), kDone);
  EXPECT_EQ(out(), "1 byte free of 20.0 GiB (1 of 21474836480 bytes)\n");
  EXPECT_EQ(seen_.at(0).function, "GetTotalSpace");
  EXPECT_EQ(Storage(ReplyRecord(0, Room(1024, 0)), {}, true), kDone);
  EXPECT_THAT(out(), HasSubstr("{\"total\":1024,\"free\":0}\n"));
  EXPECT_EQ(Storage(ReplyRecord(0, Room(0, 0))), kDone);
  EXPECT_THAT(out(), HasSubstr("no storage cards\n"));
}

TEST_F(DeviceCommandsTest, StorageAsksForTheVolumeOfADirectory) {
  EXPECT_EQ(Storage(ReplyRecord(0, Room(2048, 1024)), "/My/Dir"), kDone);
  EXPECT_EQ(out(), "1.0 KiB free of 2.0 KiB (1024 of 2048 bytes)\n");
  EXPECT_EQ(seen_.at(0).function, "CVCeGetDiskFreeSpaceEx");
  EXPECT_EQ(seen_.at(0).input, text::ToUtf16Le(u"\\My\\Dir"));
}

TEST_F(DeviceCommandsTest, StorageSaysWhatIsWrongWithADirectory) {
  EXPECT_EQ(Storage(ReplyRecord(3), "\\No"), kFailed);
  EXPECT_EQ(Storage(ReplyRecord(123), "\\a?"), kFailed);
  EXPECT_EQ(Storage(ReplyRecord(5), "\\x"), kFailed);
  EXPECT_EQ(err(),
            "corvane-desktop: there is no directory \\No on the handheld\n"
            "corvane-desktop: \\a? is no path of the handheld\n"
            "corvane-desktop: the handheld does not answer CVCeGetDiskFreeSpaceEx: 5 (access "
            "denied)\n");
  EXPECT_EQ(PrintStorage(NobodyThere(), std::string(260, 'x'), false, console_.console), kFailed);
  EXPECT_THAT(err(), HasSubstr("a handheld's path has at most 259 characters, this one 260: "));
}

TEST_F(DeviceCommandsTest, CardsAreALineEach) {
  EXPECT_EQ(Cards({ReplyRecord(0, Word(2)), ReplyRecord(0, Directory("\\A")),
                   ReplyRecord(0, Room(1000, 999)), ReplyRecord(0, Directory("\\B")),
                   ReplyRecord(0, Room(0, 0))}),
            kDone);
  EXPECT_EQ(out(),
            "0  \\A: 999 bytes free of 1000 bytes (999 of 1000 bytes)\n"
            "1  \\B: 0 bytes free of 0 bytes (0 of 0 bytes)\n");
  EXPECT_EQ(seen_.at(3).input, Word(1));
}

TEST_F(DeviceCommandsTest, CardsCannotSteerTheTerminal) {
  EXPECT_EQ(Cards({ReplyRecord(0, Word(1)),
                   ReplyRecord(0, Directory("\\\xC2\x9B"
                                            "2J\xE2\x80\xAE")),
                   ReplyRecord(0, Room(1, 1))}),
            kDone);
  EXPECT_THAT(out(), HasSubstr("0  \\ 2J: "));
}

TEST_F(DeviceCommandsTest, CardsBeyondAllReasonAreNotAskedFor) {
  EXPECT_EQ(Cards({ReplyRecord(0, Word(0xFFFFFFFF))}), kFailed);
  EXPECT_EQ(err(),
            "corvane-desktop: the answer to GetVolumeCount makes no sense: 4294967295 cards\n");
}

TEST_F(DeviceCommandsTest, CardsAreALineEachAsJson) {
  EXPECT_EQ(Cards({ReplyRecord(0, Word(0))}, true), kDone);
  EXPECT_EQ(Cards(kOneCard, true), kDone);
  EXPECT_EQ(out(),
            "{\"card\":0,\"directory\":\"\\\\K\xC3\xA4rte\",\"total\":8589934592,"
            "\"free\":1536}\n");
  EXPECT_EQ(Cards({ReplyRecord(0, Word(0))}), kDone);
  EXPECT_THAT(out(), HasSubstr("no storage cards\n"));
}

TEST_F(DeviceCommandsTest, CardsThatAreTakenOutMeanwhileAreLeftOut) {
  EXPECT_EQ(Cards({ReplyRecord(0, Word(2)), ReplyRecord(0, Directory("\\A")),
                   ReplyRecord(0, Room(1000, 999)), ReplyRecord(1)}),
            kDone);
  EXPECT_EQ(out(), "0  \\A: 999 bytes free of 1000 bytes (999 of 1000 bytes)\n");
  EXPECT_EQ(Cards({ReplyRecord(0, Word(1)), ReplyRecord(0, Directory("\\A")), ReplyRecord(1)}),
            kDone);
  EXPECT_THAT(out(), HasSubstr("no storage cards\n"));
}

TEST_F(DeviceCommandsTest, CardsWithADirectoryThatIsNoneMakeNoSense) {
  for (const char* bytes : {"a", "abc"}) {
    EXPECT_EQ(Cards({ReplyRecord(0, Word(1)), ReplyRecord(0, bytes)}), kFailed);
    EXPECT_THAT(err(), HasSubstr("the answer to GetCardDirectory makes no sense"));
  }
}

TEST(SizeText, HasOneDecimalBehindBytes) {
  const std::pair<std::uint64_t, const char*> cases[] = {
      {0, "0 bytes"},
      {1, "1 byte"},
      {1023, "1023 bytes"},
      {1024, "1.0 KiB"},
      {1024 * 1023, "1023.0 KiB"},
      {1024 * 1024 - 1, "1.0 MiB"},
      {std::uint64_t{3} << 30, "3.0 GiB"},
      {UINT64_MAX, "16.0 EiB"},
  };
  for (const auto& [bytes, text] : cases) EXPECT_EQ(SizeText(bytes), text);
}

TEST(LanguageTag, IsKnownOrEmpty) {
  EXPECT_EQ(LanguageTag(0x0409), "en-US");
  EXPECT_EQ(LanguageTag(0x0411), "ja-JP");
  EXPECT_EQ(LanguageTag(0x10409), "");
  EXPECT_EQ(LanguageTag(0), "");
}

TEST(DevicePathBytes, TakesEitherSlash) {
  EXPECT_EQ(DevicePathBytes("/a\\b"), text::ToUtf16Le(u"\\a\\b"));
  EXPECT_THROW(DevicePathBytes(""), std::runtime_error);
  EXPECT_THROW(DevicePathBytes("a\xFF"), std::runtime_error);
  EXPECT_EQ(DevicePathBytes(std::string(259, 'a')).size(), 518U);
}

}  // namespace
}  // namespace desktop::testing
