#include "agent/pim_import/contact_from_xml.h"

#include <gmock/gmock.h>

#include "agent/vocabulary/contact_fields.h"
#include "handheld/base/fault.h"
#include "tests/support/sample_contacts.h"
#include "tests/support/upload_runs.h"

namespace corvane::testing {
namespace {

using namespace ce;
using host::FaultPlan;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

// A contact's record as the wire carries it, of one field.
std::string FieldElement(const ContactField& field, const std::string& text) {
  const std::string name = Narrow(field.element);
  return "<" + name + ">" + text + "</" + name + ">";
}

class ContactFromXml : public PimTest {
 protected:
  // The identifier of a contact that was added from these children.
  LONG Added(const std::string& children) {
    const RecordReply reply = UploadContact(children);
    EXPECT_EQ(reply.result, S_OK);
    EXPECT_NE(reply.oid, 0);
    return reply.oid;
  }
  void Modify(LONG oid, const std::string& children, HRESULT expected = S_OK) {
    const RecordReply reply = UploadContact(children, OidTag(oid));
    EXPECT_EQ(reply.result, expected);
    EXPECT_EQ(reply.oid, expected == S_OK ? oid : 0);
  }
  std::string Text(LONG oid, TextGetter get) { return Narrow(store_->Text(oid, get)); }
  DATE Birthday(LONG oid) {
    DATE date = 0;
    EXPECT_EQ(store_->Get(oid)->get_Birthday(&date), S_OK);
    return date;
  }
  DATE Anniversary(LONG oid) {
    DATE date = 0;
    EXPECT_EQ(store_->Get(oid)->get_Anniversary(&date), S_OK);
    return date;
  }
};

TEST_F(ContactFromXml, ReadsEveryTextIntoItsProperty) {
  handheld_.SetLanguage(0x0411);
  std::size_t texts = 0;
  for (const ContactField& field : ContactFields()) {
    if (!field.getText || field.kind == ContactFieldKind::kCategoryList) continue;
    ++texts;
    EXPECT_EQ(Text(Added(FieldElement(field, "v")), field.getText), "v") << Narrow(field.element);
  }
  EXPECT_EQ(texts, 41u);
}

TEST_F(ContactFromXml, ClearsEveryTextThatTheRecordLacks) {
  handheld_.SetLanguage(0x0411);
  const LONG oid = store_->Add(FillContact);
  Modify(oid, "<FIRST_NAME>Only</FIRST_NAME>");
  for (const SampleText& text : kFullTexts) {
    const bool first = text.get == &IContact::get_FirstName;
    EXPECT_EQ(Text(oid, text.get), first ? "Only" : "") << Narrow(text.value);
  }
  EXPECT_EQ(Birthday(oid), kNoDate);
  EXPECT_EQ(Anniversary(oid), kNoDate);
}

TEST_F(ContactFromXml, LeavesWhatTheWireNeverCarries) {
  const LONG oid = store_->Add(FillContact);
  Modify(oid,
         "<FIRST_NAME>Only</FIRST_NAME><BodyInk>FALSE</BodyInk>"
         "<OfficeLocation>x</OfficeLocation>");
  for (const SampleText& text : kPrivateTexts) {
    EXPECT_EQ(Text(oid, text.get), Narrow(text.value));
  }
  const ComPtr<IContact> contact = store_->Get(oid);
  DWORD bytes = 0;
  const BYTE* block = nullptr;
  ASSERT_EQ(contact->get_BodyInk(&bytes, &block), S_OK);
  EXPECT_EQ(std::string_view(reinterpret_cast<const char*>(block), bytes), kSampleInk);
}

TEST_F(ContactFromXml, ClearsAFieldThatIsEmpty) {
  const LONG oid = store_->AddNamed(u"Ada");
  Modify(oid, "<FIRST_NAME/><LAST_NAME></LAST_NAME>");
  EXPECT_EQ(Text(oid, &IContact::get_FirstName), "");
}

TEST_F(ContactFromXml, SetsAnEmptyFileAsForGood) {
  const LONG oid = Added("<FIRST_NAME>Ada</FIRST_NAME><LAST_NAME>Byron</LAST_NAME>");
  EXPECT_EQ(Text(oid, &IContact::get_FileAs), "");
}

TEST_F(ContactFromXml, IgnoresTheYomiFieldsOutsideJapan) {
  const LONG oid = Added("<FURIGANA_FIRST_NAME>x</FURIGANA_FIRST_NAME>");
  EXPECT_EQ(Text(oid, &IContact::get_YomiFirstName), "");
}

TEST_F(ContactFromXml, LeavesPresentYomiTextsAloneOutsideJapan) {
  const LONG oid = store_->Add(FillContact);
  Modify(oid, "");
  EXPECT_NE(Text(oid, &IContact::get_YomiFirstName), "");
}

TEST_F(ContactFromXml, ForgivesAHandheldWithoutYomiFields) {
  handheld_.SetLanguage(0x0411);
  handheld_->Set(host::setting::kYomiFields, DWORD{0});
  const LONG oid = Added(
      "<FURIGANA_LAST_NAME>x</FURIGANA_LAST_NAME>"
      "<BIRTHDAY>19790217</BIRTHDAY>");
  EXPECT_EQ(Birthday(oid), kSampleBirthday);
}

TEST_F(ContactFromXml, MakesCarriageReturnsInTheStreetsAndTheNotesOnly) {
  const LONG oid = Added(
      "<FIRST_NAME>a\nb</FIRST_NAME><HOME_ADDRESS>a\nb</HOME_ADDRESS>"
      "<OtherStreet>a\nb</OtherStreet><BUSINESS_ADDRESS>a\nb</BUSINESS_ADDRESS>"
      "<NOTES>a\r\nb</NOTES>");
  EXPECT_EQ(Text(oid, &IContact::get_FirstName), "a\nb");
  EXPECT_EQ(Text(oid, &IContact::get_HomeAddressStreet), "a\r\nb");
  EXPECT_EQ(Text(oid, &IContact::get_OtherAddressStreet), "a\r\nb");
  EXPECT_EQ(Text(oid, &IContact::get_BusinessAddressStreet), "a\r\nb");
  EXPECT_EQ(Text(oid, &IContact::get_Body), "a\r\nb");
}

class ContactNotes : public ContactFromXml {
 protected:
  // How often an upload of these children writes the note.
  std::uint64_t Writes(LONG oid, const std::string& children) {
    const auto plan = FaultPlan::CountOnly("IContact::put_Body");
    Modify(oid, children);
    return plan.calls();
  }
  LONG AddWithBody(std::u16string_view body) {
    return store_->Add([&](IContact& contact) { SetText(contact, &IContact::put_Body, body); });
  }
};

TEST_F(ContactNotes, AreNotWrittenBackUnchanged) {
  const LONG oid = AddWithBody(u"a\r\nb");
  EXPECT_EQ(Writes(oid, "<NOTES>a\nb</NOTES>"), 0u);
  EXPECT_EQ(Writes(oid, "<NOTES>a\nc</NOTES>"), 1u);
  EXPECT_EQ(Text(oid, &IContact::get_Body), "a\r\nc");
}

TEST_F(ContactNotes, AreClearedWhenMissingOrEmpty) {
  for (const char* children : {"", "<NOTES/>"}) {
    const LONG oid = AddWithBody(u"text");
    EXPECT_EQ(Writes(oid, children), 1u);
    EXPECT_EQ(Text(oid, &IContact::get_Body), "");
  }
}

TEST_F(ContactNotes, LeaveAnEmptyBodyUntouched) {
  EXPECT_EQ(Writes(AddWithBody(u""), ""), 0u);
}

TEST_F(ContactNotes, FailTheRecordWhenTheBodyCannotBeRead) {
  const LONG oid = AddWithBody(u"text");
  const auto plan = FaultPlan::FailCalls("IContact::get_Body", 0x80004005);
  Modify(oid, "<NOTES>other</NOTES>", E_FAIL);
}

using ContactDates = ContactFromXml;

TEST_F(ContactDates, AreSet) {
  const LONG oid = Added("<BIRTHDAY>19790217T000000</BIRTHDAY><ANNIVERSARY>20080215</ANNIVERSARY>");
  EXPECT_EQ(Birthday(oid), kSampleBirthday);
  EXPECT_EQ(Anniversary(oid), kSampleAnniversary);
}

TEST_F(ContactDates, AreClearedWhenMissingOrEmpty) {
  const LONG oid = store_->Add(FillContact);
  Modify(oid, "<BIRTHDAY/>");
  EXPECT_EQ(Birthday(oid), kNoDate);
  EXPECT_EQ(Anniversary(oid), kNoDate);
}

TEST_F(ContactDates, FailTheRecordWhenTheyDoNotScan) {
  const LONG oid = store_->Add(FillContact);
  Modify(oid, "<FIRST_NAME>New</FIRST_NAME><BIRTHDAY>soon</BIRTHDAY>", E_INVALIDARG);
  EXPECT_EQ(Birthday(oid), kSampleBirthday);
  EXPECT_NE(Text(oid, &IContact::get_FirstName), "New");
}

TEST_F(ContactDates, FailTheRecordWhenTheyDoNotExist) {
  const LONG oid = store_->Add(FillContact);
  for (const char* date : {"20080230", "2008-02-15"}) {
    Modify(oid, "<FIRST_NAME>New</FIRST_NAME><BIRTHDAY>" + std::string(date) + "</BIRTHDAY>",
           ERROR_INVALID_PARAMETER);
    Modify(oid, "<FIRST_NAME>New</FIRST_NAME><ANNIVERSARY>" + std::string(date) + "</ANNIVERSARY>",
           ERROR_INVALID_PARAMETER);
  }
  EXPECT_EQ(Birthday(oid), kSampleBirthday);
  EXPECT_NE(Text(oid, &IContact::get_FirstName), "New");
}

TEST_F(ContactDates, FailTheRecordWhenThePropertyRefusesThem) {
  EXPECT_EQ(UploadContact("<BIRTHDAY>18000101</BIRTHDAY>"), (RecordReply{0, E_INVALIDARG}));
}

TEST_F(ContactFromXml, StopsAtAFieldThatFailsAndStoresNothing) {
  const LONG oid = store_->AddNamed(u"Ada");
  const std::string tooLong(1024, 'x');
  Modify(oid, "<FIRST_NAME>Eve</FIRST_NAME><COMPANY>" + tooLong + "</COMPANY>", kTextTooLong);
  EXPECT_EQ(Text(oid, &IContact::get_FirstName), "Ada");
  EXPECT_EQ(UploadContact("<NOTES>" + std::string(40000, 'x') + "</NOTES>"),
            (RecordReply{0, kTextTooLong}));
  EXPECT_THAT(store_->Oids(), ElementsAre(oid));
}

TEST_F(ContactFromXml, TakesTextsUpToTheirLength) {
  const std::string longest(1023, 'x');
  EXPECT_EQ(Text(Added("<COMPANY>" + longest + "</COMPANY>"), &IContact::get_CompanyName), longest);
}

TEST_F(ContactFromXml, LeavesAFailedNewItemUnstored) {
  const auto plan = FaultPlan::FailCalls("IContact::Save", 0x80004005);
  EXPECT_EQ(UploadContact("<FIRST_NAME>Ada</FIRST_NAME>"), (RecordReply{0, E_FAIL}));
  EXPECT_THAT(store_->Oids(), IsEmpty());
}

TEST_F(ContactFromXml, LogsItsSteps) {
  handheld_.SetLanguage(0x0411);
  SwitchLogOn();
  UploadContact("<FIRST_NAME>Ada</FIRST_NAME>");
  const std::vector<std::string> messages = LogMessages();
  const auto begin = std::ranges::find(messages, "Entering ParseXMLContact");
  ASSERT_NE(begin, messages.end());
  EXPECT_THAT(std::vector<std::string>(begin, messages.end()),
              ElementsAre("Entering ParseXMLContact", "getNamedItem returned 1",
                          "Found something to Add, yeah", "Putting Yomi Fields", "Before Save",
                          "Save must have worked", "Writing oid 0x00000001, hr = 0",
                          "Exiting ParseXMLContact, hr = 0 (0x00000000)", "returning with hr = 0"));
}

TEST_F(ContactFromXml, LogsTheLastStepsAlsoAfterAFailure) {
  handheld_.SetLanguage(0x0411);
  SwitchLogOn();
  UploadContact("<BIRTHDAY>soon</BIRTHDAY>");
  const std::vector<std::string> messages = LogMessages();
  EXPECT_THAT(messages,
              ::testing::IsSupersetOf({"Putting Yomi Fields", "Before Save",
                                       "Writing oid 0x00000000, hr = -2147024809",
                                       "Exiting ParseXMLContact, hr = -2147024809 (0x80070057)"}));
  EXPECT_THAT(messages, Not(::testing::Contains("Save must have worked")));
}

}  // namespace
}  // namespace corvane::testing
