#include "desktop/transfer/record_count.h"

#include <gtest/gtest.h>

#include <string>

namespace desktop::testing {
namespace {

struct CountCase {
  const char* name;
  RecordFormat format;
  const char* bytes;
  std::size_t count;
};

class RecordCount : public ::testing::TestWithParam<CountCase> {};

TEST_P(RecordCount, IsThatOfTheFile) {
  EXPECT_EQ(CountRecords(GetParam().bytes, GetParam().format), GetParam().count);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, RecordCount,
    ::testing::Values(
        CountCase{"Cards", RecordFormat::kVcf,
                  "BEGIN:VCARD\nVERSION:3.0\nFN:A\nEND:VCARD\nBEGIN:VCARD\nVERSION:3.0\nFN:B\n"
                  "END:VCARD\n",
                  2},
        CountCase{"ASeriesAndItsExceptionAreOne", RecordFormat::kIcs,
                  "BEGIN:VCALENDAR\nVERSION:2.0\nBEGIN:VEVENT\nUID:a\nSUMMARY:A\n"
                  "DTSTART:20240506T090000Z\nRRULE:FREQ=DAILY;COUNT=5\nEND:VEVENT\n"
                  "BEGIN:VEVENT\nUID:a\nRECURRENCE-ID:20240507T090000Z\nSUMMARY:B\n"
                  "DTSTART:20240507T100000Z\nEND:VEVENT\nBEGIN:VTODO\nUID:b\nSUMMARY:C\n"
                  "END:VTODO\nEND:VCALENDAR\n",
                  2},
        CountCase{"Elements", RecordFormat::kXml,
                  "<root><CONTACT Oid=\"1\"/><CONTACT Oid=\"2\"/></root>", 2},
        CountCase{"AnArray", RecordFormat::kJson, "[\n{\"oid\":1},\n{\"oid\":2}\n]\n", 2},
        CountCase{"Lines", RecordFormat::kJson, "{}\n{}\n{}\n", 3},
        CountCase{"Csv", RecordFormat::kCsv, "oid,name\r\n1,\"a\nb\"\r\n2,c\r\n", 2},
        CountCase{"ABackup", RecordFormat::kSmsBackup,
                  "<smses count=\"1\"><sms address=\"1\" date=\"1210000000000\" type=\"1\" "
                  "body=\"x\" read=\"1\"/></smses>",
                  1},
        CountCase{"NoCards", RecordFormat::kVcf, "my notes\n", 0},
        CountCase{"NoCalendar", RecordFormat::kIcs, "my notes\n", 0},
        CountCase{"NoXml", RecordFormat::kXml, "<root><CONTACT>", 0},
        CountCase{"NoArray", RecordFormat::kJson, "[{", 0},
        CountCase{"Empty", RecordFormat::kVcf, "", 0}),
    [](const auto& info) { return info.param.name; });

}  // namespace
}  // namespace desktop::testing
