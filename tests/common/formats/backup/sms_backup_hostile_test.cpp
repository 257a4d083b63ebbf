// Files that are no backups, or are made to do harm.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

#include "common/formats/backup/sms_backup.h"
#include "common/formats/json/message_json.h"
#include "tests/common/formats/items/message_support.h"

namespace formats::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

const std::string kSms = "<sms date=\"0\" type=\"1\"/>";

struct NoBackupCase {
  const char* name;
  std::string bytes;
  const char* notice;
};
class NoBackupTest : public ::testing::TestWithParam<NoBackupCase> {};

TEST_P(NoBackupTest, IsSaidToBeNone) {
  for (const std::size_t piece : {std::size_t{1}, std::size_t{65536}}) {
    const Items items = ReadBackupInPieces(GetParam().bytes, piece);
    EXPECT_THAT(items.messages, IsEmpty());
    EXPECT_THAT(items.notices, ElementsAre(GetParam().notice));
  }
}

INSTANTIATE_TEST_SUITE_P(
    SmsBackup, NoBackupTest,
    ::testing::Values(
        NoBackupCase{"Empty", "",
                     "1: the file is no backup of messages or calls: it has no elements"},
        NoBackupCase{"Blank", " \n ",
                     "1: the file is no backup of messages or calls: it has no elements"},
        NoBackupCase{"DeclarationAlone", "<?xml version='1.0'?>",
                     "1: the file is no backup of messages or calls: it has no elements"},
        NoBackupCase{"OtherRoot", "\n<html>" + kSms + "</html>",
                     "2: the file is no backup of messages or calls: it begins with html"},
        NoBackupCase{"ItemAlone", kSms,
                     "1: the file is no backup of messages or calls: it begins with sms"},
        NoBackupCase{"DocumentType", "<!DOCTYPE smses [<!ENTITY a \"b\">]>\n<smses/>",
                     "1: a document type declaration is not accepted"},
        NoBackupCase{"Utf16", std::string("\xFF\xFE<\0s\0", 6),
                     "1: the file is UTF-16; backups are UTF-8"},
        NoBackupCase{"TagThatDoesNotEnd", "<smses count=\"1\"",
                     "1: the file ends too early, after this; only what is whole is kept"},
        NoBackupCase{"ValueThatDoesNotEnd", "<smses>\n<sms body=\"" + kSms + "</smses>",
                     "1: the file ends too early, after this; only what is whole is kept"},
        NoBackupCase{"CommentThatDoesNotEnd", "<!-- " + kSms,
                     "1: the file ends too early, after this; only what is whole is kept"}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(SmsBackup, KeepsWhatStandsBeforeDamage) {
  const Items items =
      ReadBackupText("<smses>\n" + kSms + "\n" + kSms + "\n<sms date=0/>\n" + kSms + "</smses>");
  EXPECT_THAT(items.messages, SizeIs(2));
  EXPECT_THAT(
      items.notices,
      ElementsAre(HasSubstr("4: the file is damaged here, and only what stands before is kept: ")));
}

TEST(SmsBackup, KeepsWhatStandsBeforeAWrongEnd) {
  const Items items = ReadBackupText("<smses>" + kSms + "</calls>" + kSms);
  EXPECT_THAT(items.messages, SizeIs(1));
  EXPECT_THAT(items.notices, ElementsAre(HasSubstr("1: the file is damaged here")));
}

TEST(SmsBackup, KeepsTheFirstOfTwoFilesInOne) {
  const std::string file = "<smses>" + kSms + "</smses>\n";
  const Items items = ReadBackupText(file + file);
  EXPECT_THAT(items.messages, SizeIs(1));
  EXPECT_THAT(items.notices, ElementsAre(HasSubstr("2: the file is damaged here")));
}

TEST(SmsBackup, SaysThatAnotherEncodingIsReadAsUtf8) {
  const Items items =
      ReadBackupText("<?xml version='1.0' encoding=\"ISO-8859-1\"?><smses>" + kSms + "</smses>");
  EXPECT_THAT(items.messages, SizeIs(1));
  EXPECT_THAT(items.notices, ElementsAre("1: the file is read as UTF-8, not as ISO-8859-1"));
}

TEST(SmsBackup, DoesNotKeepPicturesInMemory) {
  // Parts of 32 million bytes; the parser alone would take ten.
  const std::string data(32'000'000, 'A');
  const Items items =
      ReadBackupText("<smses><mms date=\"0\" msg_box=\"1\"><parts><part ct=\"image/png\" data=\"" +
                     data + "\"/><part ct=\"text/plain\" text=\"kept\"/></parts></mms></smses>");
  ASSERT_THAT(items.messages, SizeIs(1));
  EXPECT_EQ(items.messages[0].text, "kept");
  EXPECT_THAT(items.notices, SizeIs(1));
}

TEST(SmsBackup, CutsOffAValueThatIsTooLong) {
  const std::string body(kLongestBackupValue, 'x');
  const auto xml = [](const std::string& text) {
    return "<smses><sms date=\"0\" type=\"1\" body=\"" + text + "\" address=\"1\"/></smses>";
  };
  const Items whole = ReadBackupText(xml(body));
  EXPECT_THAT(whole.notices, IsEmpty());
  const Items cut = ReadBackupText(xml(body + "y"));
  ASSERT_THAT(cut.messages, SizeIs(1));
  EXPECT_EQ(cut.messages[0].text, body);
  EXPECT_EQ(cut.messages[0].from.address, "1");
  EXPECT_THAT(cut.notices, ElementsAre("1: body: cut off after 1048576 bytes"));
}

TEST(SmsBackup, CutsOffBetweenCharacters) {
  const std::string xml = "<smses><sms date=\"0\" type=\"1\" body=\"" +
                          std::string(kLongestBackupValue - 3, 'x') +
                          "&#55357;&#56832;z\"/></smses>";
  const Items items = ReadBackupInPieces(xml, 4096);
  ASSERT_THAT(items.messages, SizeIs(1));
  EXPECT_EQ(items.messages[0].text, std::string(kLongestBackupValue - 3, 'x'));
}

TEST(SmsBackup, RefusesATagOfAnyLength) {
  std::string xml = "<smses>" + kSms + "<sms ";
  for (int i = 0; i < 12; ++i) {
    xml += "a" + std::to_string(i) + "=\"" + std::string(kLongestBackupValue, 'x') + "\" ";
  }
  const Items items = ReadBackupText(xml + "/></smses>");
  EXPECT_THAT(items.messages, SizeIs(1));
  EXPECT_THAT(items.notices, ElementsAre("1: an element this long is not read"));
}

TEST(SmsBackup, KeepsAMessageOfTooManyPartsInPart) {
  std::string xml = "<smses><mms date=\"0\" msg_box=\"1\"><parts>";
  for (int i = 0; i < 100'000; ++i) xml += "<part ct=\"text/plain\" text=\"x\"/>";
  const Items items = ReadBackupText(xml + "</parts></mms>" + kSms + "</smses>");
  ASSERT_THAT(items.messages, SizeIs(2));
  EXPECT_LT(items.messages[0].text.size(), 100'000u);
  EXPECT_THAT(items.notices,
              ElementsAre(HasSubstr("1: messages this large are kept in part only (")));
}

TEST(SmsBackup, BoundsHowDeepElementsAreNested) {
  std::string xml = "<smses>" + kSms;
  for (int i = 0; i < 10'000; ++i) xml += "<a>";
  const Items items = ReadBackupText(xml);
  EXPECT_THAT(items.messages, SizeIs(1));
  EXPECT_EQ(items.notices.back(), "1: elements are nested too deeply");
}

// What cannot be read at all: a directory.
TEST(SmsBackup, LeavesAStreamThatCannotBeReadBad) {
  std::ifstream in("/", std::ios::binary);
  const std::vector<Notice> notices = ReadBackup(in, ItemSink{});
  EXPECT_TRUE(in.bad());
  EXPECT_THAT(notices, SizeIs(1));
  std::ifstream lines("/", std::ios::binary);
  EXPECT_THAT(ReadJsonLines(lines, ItemSink{}), IsEmpty());
  EXPECT_TRUE(lines.bad());
}

TEST(SmsBackup, BoundsItsNotices) {
  std::string xml = "<smses>";
  for (int i = 0; i < 1000; ++i) xml += "<sms type=\"1\" date=\"x" + std::to_string(i) + "\"/>";
  const Items items = ReadBackupText(xml + "</smses>");
  EXPECT_THAT(items.messages, SizeIs(1000));
  EXPECT_THAT(items.notices, SizeIs(201));
}

}  // namespace
}  // namespace formats::testing
