#include "agent/pim_import/contact_lists.h"

#include <gmock/gmock.h>

#include "tests/support/parsed_record.h"
#include "tests/support/upload_runs.h"

namespace corvane::testing {
namespace {

using namespace ce;
using ::testing::ElementsAre;

std::string Email(const std::string& name, const std::string& type) {
  return "<EMAIL_ADDRESS><NAME>" + name + "</NAME><TYPE>" + type + "</TYPE></EMAIL_ADDRESS>";
}

class EmailAddresses : public PimTest {
 protected:
  // The three addresses after a list of these entries; they hold "1", "2" and "3" before it.
  std::vector<std::string> Parsed(const std::string& entries, HRESULT expected = S_FALSE) {
    const ComPtr<IContact> contact = store_->New();
    SetText(*contact.get(), &IContact::put_Email1Address, u"1");
    SetText(*contact.get(), &IContact::put_Email2Address, u"2");
    SetText(*contact.get(), &IContact::put_Email3Address, u"3");
    const ParsedRecord list("<EMAIL_ADDRESSES>" + entries + "</EMAIL_ADDRESSES>");
    EXPECT_EQ(ParseXMLEmailAddresses(list.get(), contact.get()), expected);
    return {Narrow(GetText(*contact.get(), &IContact::get_Email1Address)),
            Narrow(GetText(*contact.get(), &IContact::get_Email2Address)),
            Narrow(GetText(*contact.get(), &IContact::get_Email3Address))};
  }
};

TEST_F(EmailAddresses, GoToTheSlotOfTheirType) {
  EXPECT_THAT(Parsed(Email("c@x", "email3") + Email("a@x", "email1")),
              ElementsAre("a@x", "2", "c@x"));
  EXPECT_THAT(Parsed("<EMAIL_ADDRESS><TYPE>email2</TYPE><NAME>b@x</NAME></EMAIL_ADDRESS>"),
              ElementsAre("1", "b@x", "3"));
}

TEST_F(EmailAddresses, OfAnotherTypeSetNothing) {
  EXPECT_THAT(Parsed(Email("a", "Email1") + Email("b", "email4") + Email("c", "email1 ")),
              ElementsAre("1", "2", "3"));
}

TEST_F(EmailAddresses, WithoutNameOrTypeSetNothing) {
  EXPECT_THAT(Parsed("<EMAIL_ADDRESS><NAME>a@x</NAME></EMAIL_ADDRESS>"
                     "<EMAIL_ADDRESS><TYPE>email1</TYPE></EMAIL_ADDRESS>"
                     "<EMAIL_ADDRESS><NAME/><TYPE>email1</TYPE></EMAIL_ADDRESS>"
                     "<EMAIL_ADDRESS/>"),
              ElementsAre("1", "2", "3"));
}

TEST_F(EmailAddresses, OfOtherNamesAreIgnored) {
  EXPECT_THAT(Parsed("<OTHER><NAME>a@x</NAME><TYPE>email1</TYPE></OTHER>"
                     "<EMAIL_ADDRESS><X/><NAME>b@x</NAME><name>c</name><TYPE>email2</TYPE>"
                     "</EMAIL_ADDRESS>"),
              ElementsAre("1", "b@x", "3"));
}

TEST_F(EmailAddresses, OfTheSameTypeOverwriteEachOther) {
  EXPECT_THAT(Parsed(Email("first", "email1") + Email("last", "email1")),
              ElementsAre("last", "2", "3"));
}

TEST_F(EmailAddresses, MayBeNone) {
  EXPECT_THAT(Parsed(""), ElementsAre("1", "2", "3"));
}

TEST_F(EmailAddresses, StopAtAFailure) {
  const std::string tooLong(1024, 'x');
  EXPECT_THAT(
      Parsed(Email("a", "email1") + Email(tooLong, "email2") + Email("c", "email3"), kTextTooLong),
      ElementsAre("a", "2", "3"));
  EXPECT_EQ(UploadContact("<EMAIL_ADDRESSES>" + Email(tooLong, "email1") + "</EMAIL_ADDRESSES>"),
            (RecordReply{0, kTextTooLong}));
}

TEST_F(EmailAddresses, AreReplacedAsAWhole) {
  const LONG oid = store_->Add([](IContact& contact) {
    SetText(contact, &IContact::put_Email1Address, u"1");
    SetText(contact, &IContact::put_Email2Address, u"2");
  });
  UploadContact("<EMAIL_ADDRESSES>" + Email("b@x", "email2") + "</EMAIL_ADDRESSES>", OidTag(oid));
  EXPECT_EQ(store_->Text(oid, &IContact::get_Email1Address), u"");
  EXPECT_EQ(store_->Text(oid, &IContact::get_Email2Address), u"b@x");
}

TEST_F(EmailAddresses, LogTheirChildren) {
  const ParsedRecord list("<L><X/>" + Email("a", "email1") + "</L>");
  const ComPtr<IContact> contact = store_->New();
  SwitchLogOn();
  EXPECT_GE(ParseXMLEmailAddresses(list.get(), contact.get()), 0);
  EXPECT_THAT(LogMessages(), ElementsAre("ParseXMLEmailAddresses called", "bstrCntrName = X",
                                         "Found an email address container",
                                         "bstrCntrName = EMAIL_ADDRESS", "returning 1"));
}

}  // namespace
}  // namespace corvane::testing
