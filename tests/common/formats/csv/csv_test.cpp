#include "common/formats/csv/csv.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "common/formats/items/item_json.h"
#include "common/formats/json/message_json.h"

namespace formats {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

std::string RowOf(const Contact& contact) {
  return CsvRow(CsvKind::kContacts, ContactToJson(contact, 7));
}

TEST(Csv, NamesItsColumns) {
  EXPECT_THAT(CsvHeader(CsvKind::kContacts), StartsWith("oid,Email1Address,Email2Address,"));
  EXPECT_THAT(CsvHeader(CsvKind::kContacts), EndsWith(",categories,Birthday,Anniversary\r\n"));
  EXPECT_EQ(CsvHeader(CsvKind::kCalls),
            "oid,number,name,type,start,end,outgoing,connected,missed,roaming,ended,callerId,note"
            "\r\n");
}

TEST(Csv, HasAColumnForEachFieldOfAContact) {
  Contact contact;
  for (std::size_t i = 0; i < kContactFieldCount; ++i) contact.fields[i] = std::to_string(i);
  contact.categories = {"a", "b"};
  contact.birthday = std::chrono::year_month_day{std::chrono::year{1970} / 2 / 28};
  std::string expected = "7";
  for (std::size_t i = 0; i < kContactFieldCount; ++i) expected += "," + std::to_string(i);
  EXPECT_EQ(RowOf(contact), expected + ",\"a,b\",1970-02-28,\r\n");
  EXPECT_EQ(std::ranges::count(CsvHeader(CsvKind::kContacts), ','),
            static_cast<std::ptrdiff_t>(kContactFieldCount) + 3);
}

TEST(Csv, QuotesWhatWouldEndAValue) {
  Contact contact;
  contact[ContactField::kLastName] = "O\"Hara, \"Jr\"";
  contact[ContactField::kBody] = "one\r\ntwo";
  contact[ContactField::kFirstName] = " x ";
  EXPECT_THAT(RowOf(contact), HasSubstr(",\"O\"\"Hara, \"\"Jr\"\"\","));
  EXPECT_THAT(RowOf(contact), HasSubstr(",\"one\r\ntwo\","));
  EXPECT_THAT(RowOf(contact), HasSubstr(",\" x \","));
}

TEST(Csv, WritesAFormulaAsTheTextThatItIs) {
  Contact contact;
  contact[ContactField::kFirstName] = "=HYPERLINK(1)";
  EXPECT_THAT(RowOf(contact), HasSubstr(",=HYPERLINK(1),"));
}

TEST(Csv, WritesACall) {
  Call call;
  call.number = "+461";
  call.name = "Å";
  call.start = MessageTime(std::chrono::milliseconds(1203083101250));
  call.missed = true;
  EXPECT_EQ(CsvRow(CsvKind::kCalls, CallToJson(call, "3")),
            "3,+461,Å,,2008-02-15T13:45:01.250Z,,false,false,true,false,false,unavailable,\r\n");
}

}  // namespace
}  // namespace formats
