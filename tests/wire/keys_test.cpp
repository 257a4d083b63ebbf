// The names of a kind's fields.
#include <gtest/gtest.h>

#include "tests/support/wire/agent_process.h"

namespace corvane::testing {
namespace {

class KeysWire : public WireTest {
 protected:
  BufferedReply Ask(const std::string& input) {
    return CallBuffered({.function = "GetDatabaseKeys", .input = input});
  }
  // The names in the answer to a kind, each an empty element under the root.
  std::string Keys(std::uint32_t kind) {
    const BufferedReply reply = Ask(Word(kind));
    EXPECT_EQ(reply.status, 0u);
    EXPECT_EQ(reply.outputCount, reply.output.size());
    const std::string begin = R"(<?XML version="1.0" encoding="UTF-8"?><root>)";
    const std::string end = "</root>";
    if (!reply.output.starts_with(begin) || !reply.output.ends_with(end)) return reply.output;
    return reply.output.substr(begin.size(), reply.output.size() - begin.size() - end.size());
  }
  void ExpectRefused(const BufferedReply& reply) {
    EXPECT_EQ(reply.status, kInvalidArgument);
    EXPECT_EQ(reply.outputCount, 0u);
    EXPECT_EQ(reply.output, "");
  }
};

const std::string kContactKeysToInk =
    "<EMAIL_ADDRESSES/><FIRST_NAME/><LAST_NAME/><COMPANY/><FileAs/><PHONE_BUSINESS_FAX/>"
    "<DEPARTMENT/><PHONE_MOBILE/><PHONE_PAGER/><PHONE_BUSINESS/><BUSINESS_TITLE/><PHONE_HOME/>"
    "<SPOUSES_NAME/><PHONE_HOME2/><PHONE_HOME_FAX/><Assistant/><CHILDREN/><BUSINESS_WEB_PAGE/>"
    "<CATEGORIES/><PHONE_BUSINESS2/><TITLE/><MiddleName/><SUFFIX/><HOME_ADDRESS/><HOME_CITY/>"
    "<HOME_STATE/><HOME_ZIP/><HOME_COUNTRY/><OtherStreet/><OtherCity/><OtherState/>"
    "<OtherPostalCode/><OtherCountry/><BUSINESS_ADDRESS/><BUSINESS_CITY/><BUSINESS_STATE/>"
    "<BUSINESS_ZIP/><BUSINESS_COUNTRY/><RadioPhone/><NOTES/><BodyInk/>";
const std::string kContactKeysFromBirthday = "<BIRTHDAY/><ANNIVERSARY/>";

TEST_F(KeysWire, NamesTheFieldsOfAppointments) {
  EXPECT_EQ(Keys(0),
            "<SUBJECT/><LOCATION/><ALL_DAY_EVENT/><CATEGORIES/><IS_RECURRING/><RECURRENCE/>"
            "<HAS_REMINDER/><ReminderMinutes/><Private/><EVENT_START/><EVENT_END/><BusyStatus/>"
            "<NOTES/><BodyInk/>");
}

TEST_F(KeysWire, NamesTheFieldsOfContactsInBothForms) {
  EXPECT_EQ(Keys(1), kContactKeysToInk + kContactKeysFromBirthday);
  EXPECT_EQ(Keys(3), kContactKeysToInk + kContactKeysFromBirthday);
}

TEST_F(KeysWire, NamesTheReadingsOfNamesOnAJapaneseHandheld) {
  settings_.language = 0x0411;
  const std::string readings =
      "<FURIGANA_COMPANY_NAME/><FURIGANA_FIRST_NAME/><FURIGANA_LAST_NAME/>";
  EXPECT_EQ(Keys(1), kContactKeysToInk + readings + kContactKeysFromBirthday);
  EXPECT_EQ(Keys(3), Keys(1));
}

TEST_F(KeysWire, NamesTheFieldsOfTasks) {
  EXPECT_EQ(Keys(2),
            "<SUBJECT/><CATEGORIES/><IS_RECURRING/><RECURRENCE/><DUE_DATE/><HAS_REMINDER/>"
            "<ReminderTime/><ReminderMinutes/><StartDate/><Private/><COMPLETED/><DateCompleted/>"
            "<PRIORITY/><NOTES/><BodyInk/>");
}

TEST_F(KeysWire, RefusesEveryOtherKind) {
  for (const std::uint32_t kind : {4u, 5u, 6u, 0xFFFFFFFFu}) ExpectRefused(Ask(Word(kind)));
}

TEST_F(KeysWire, RefusesAnInputOfTheWrongSize) {
  ExpectRefused(Ask(""));
  ExpectRefused(Ask("abc"));
  ExpectRefused(Ask(Word(1) + "x"));
}

TEST_F(KeysWire, IsNoStreamedRequest) {
  RawConnection connection = Connect();
  connection.Send(
      Record(Invoke{.function = "GetDatabaseKeys", .input = Word(1), .streamFlag = 1}.Body()));
  EXPECT_EQ(connection.ReceiveToEnd(), Word(127));
}

}  // namespace
}  // namespace corvane::testing
