#include "handheld/tool/import_files.h"

#include <gtest/gtest.h>

namespace tool::testing {
namespace {

struct Case {
  const char* name;
  const char* file;
  const char* beginning;
  FileKind kind;
};

class FileKindTest : public ::testing::TestWithParam<Case> {};

TEST_P(FileKindTest, IsToldByNameOrContent) {
  EXPECT_EQ(FileKindOf(GetParam().file, GetParam().beginning), GetParam().kind);
}

constexpr Case kCases[] = {
    {"CardsByName", "a.VCF", "<smses/>", FileKind::kCards},
    {"CalendarByName", "a.ics", "{}", FileKind::kCalendar},
    {"BackupByContent", "sms.txt", "<?xml version='1.0'?><smses/>", FileKind::kBackup},
    {"BackupBehindAMarkAndBlanks", "sms", "\xEF\xBB\xBF \r\n\t<calls/>", FileKind::kBackup},
    {"JsonByContent", "calls", "\n{\"number\":\"1\"}", FileKind::kJsonLines},
    {"ContentBeforeOtherNames", "a.json", "<smses/>", FileKind::kBackup},
    {"CalendarByContent", "a", "BEGIN:VCALENDAR\r\n", FileKind::kCalendar},
    {"EmptyBackupByName", "a.xml", "", FileKind::kBackup},
    {"JsonByName", "a.json", "x", FileKind::kJsonLines},
    {"JsonLinesByName", "a.jsonl", "", FileKind::kJsonLines},
    {"AnythingElseAsCards", "a", "Dear Ada", FileKind::kCards},
    {"EmptyAsCards", "a", "", FileKind::kCards},
};

INSTANTIATE_TEST_SUITE_P(All, FileKindTest, ::testing::ValuesIn(kCases),
                         [](const auto& test) { return test.param.name; });

}  // namespace
}  // namespace tool::testing
