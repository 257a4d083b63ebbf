#include "agent/pim_export/contact_to_xml.h"

#include <gmock/gmock.h>

#include "agent/vocabulary/contact_fields.h"
#include "handheld/base/fault.h"
#include "tests/support/golden.h"
#include "tests/support/pim_requests.h"
#include "tests/support/sample_contacts.h"
#include "tests/support/xml_text.h"

namespace corvane::testing {
namespace {

using namespace ce;
using host::FaultPlan;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

class ContactToXml : public PimTest {
 protected:
  // The document with one record of this contact.
  std::string Exported(IContact* contact, LONG variant = 1, HRESULT expected = S_OK) {
    const TestDocument document;
    EXPECT_EQ(AddContactToXML(document.document(), document.root(), contact, variant), expected);
    return document.Text();
  }
  std::string ExportedNew(const std::function<void(IContact&)>& fill, HRESULT expected = S_OK) {
    const ComPtr<IContact> contact = store_->New();
    if (fill) fill(*contact.get());
    return Body(Exported(contact.get(), 1, expected));
  }
  std::string ExportedText(TextSetter put, std::u16string_view text) {
    return ExportedNew([&](IContact& contact) { SetText(contact, put, text); });
  }
};

TEST_F(ContactToXml, WritesEveryFieldInItsPlaceOnAJapaneseSystem) {
  handheld_.SetLanguage(0x0411);
  const ComPtr<IContact> contact = store_->Get(store_->Add(FillContact));
  EXPECT_TRUE(EqualsGolden("contact_full.xml", Exported(contact.get())));
}

TEST_F(ContactToXml, LeavesTheYomiFieldsOutElsewhere) {
  const ComPtr<IContact> contact = store_->Get(store_->Add(FillContact));
  const std::string text = Exported(contact.get());
  EXPECT_THAT(text, Not(HasSubstr("FURIGANA")));
  EXPECT_TRUE(EqualsGolden("contact_full_western.xml", text));
}

TEST_F(ContactToXml, WritesTheSecondFormUnderItsOwnName) {
  handheld_.SetLanguage(0x0411);
  const ComPtr<IContact> contact = store_->Get(store_->Add(FillContact));
  const std::string first = Body(Exported(contact.get(), 1));
  std::string second = Body(Exported(contact.get(), 2));
  second.replace(second.find("<Contact2 "), 10, "<CONTACT ");
  second.replace(second.find("</Contact2>"), 11, "</CONTACT>");
  EXPECT_EQ(second, first);
}

TEST_F(ContactToXml, RefusesAnyOtherVariantWithoutAnElement) {
  const ComPtr<IContact> contact = store_->New();
  for (const LONG variant : {0, 3, -1}) {
    EXPECT_THAT(Exported(contact.get(), variant, E_INVALIDARG), HasSubstr("<root/>"));
  }
}

TEST_F(ContactToXml, WritesAnEmptyElementForAContactWithoutValues) {
  const ComPtr<IContact> contact = store_->Get(store_->Add());
  EXPECT_TRUE(EqualsGolden("contact_minimal.xml", Exported(contact.get())));
}

TEST_F(ContactToXml, WritesLargeIdentifiersAsNegativeNumbers) {
  TestHandheld other({.firstOid = 0xFFFFFFF0});
  ContactStore store;
  const ComPtr<IContact> contact = store.Get(store.AddNamed(u"Eve"));
  EXPECT_THAT(Exported(contact.get()), HasSubstr("<CONTACT Oid=\"-16\">"));
}

TEST_F(ContactToXml, NeverCarriesThePropertiesThatTheWireLacks) {
  const std::string text = ExportedNew([](IContact& contact) {
    for (const SampleText& sample : kPrivateTexts) SetText(contact, sample.put, sample.value);
  });
  EXPECT_EQ(text, "<root><CONTACT Oid=\"0\"/></root>");
}

TEST_F(ContactToXml, EveryTextHasAnElementOfItsOwn) {
  handheld_.SetLanguage(0x0411);
  std::size_t texts = 0;
  for (const ContactField& field : ContactFields()) {
    const bool text = field.getText && field.kind != ContactFieldKind::kCategoryList;
    if (!text) continue;
    ++texts;
    const std::string name = Narrow(field.element);
    const std::string record = ExportedText(field.putText, u"v");
    EXPECT_THAT(record, HasSubstr("<" + name + ">v</" + name + ">"));
    const bool named = name.find("NAME") != std::string::npos || name == "COMPANY";
    EXPECT_TRUE(Occurrences(record, ">v<") == 1 || named) << record;
  }
  EXPECT_EQ(texts, 41u);
}

TEST_F(ContactToXml, TellsTheSlotByTheTypeAndNotByThePlace) {
  EXPECT_EQ(ExportedText(&IContact::put_Email2Address, u"b@x"),
            "<root><CONTACT Oid=\"0\"><EMAIL_ADDRESSES><EMAIL_ADDRESS><NAME>b@x</NAME>"
            "<TYPE>email2</TYPE></EMAIL_ADDRESS></EMAIL_ADDRESSES></CONTACT></root>");
}

TEST_F(ContactToXml, SkipsAnEmptySlotWithoutAGap) {
  const ComPtr<IContact> contact = store_->New();
  SetText(*contact.get(), &IContact::put_Email1Address, u"a@x");
  SetText(*contact.get(), &IContact::put_Email3Address, u"c@x");
  EXPECT_TRUE(EqualsGolden("contact_email_gap.xml", Exported(contact.get())));
}

TEST_F(ContactToXml, HasNoListWithoutAnAddress) {
  const std::string record = ExportedText(&IContact::put_FirstName, u"Ada");
  EXPECT_THAT(record, HasSubstr("<CONTACT Oid=\"0\"><FIRST_NAME>Ada</FIRST_NAME>"));
}

TEST_F(ContactToXml, SplitsTheCategories) {
  const ComPtr<IContact> contact = store_->New();
  SetText(*contact.get(), &IContact::put_Categories, u"A,  B,,C");
  EXPECT_TRUE(EqualsGolden("contact_categories.xml", Exported(contact.get())));
}

TEST_F(ContactToXml, MarksAnInkNote) {
  const ComPtr<IContact> contact = store_->New();
  SetText(*contact.get(), &IContact::put_Body, u"typed");
  SetInk(*contact.get(), kSampleInk);
  EXPECT_TRUE(EqualsGolden("contact_ink.xml", Exported(contact.get())));
}

TEST_F(ContactToXml, DoesNotTakeTextThatLooksLikeInkForInk) {
  EXPECT_THAT(ExportedText(&IContact::put_Body, u"{\\pwi and more"), Not(HasSubstr("BodyInk")));
}

TEST_F(ContactToXml, DoesNotMarkABlockThatIsNoInkNote) {
  for (const std::string_view block : {"{\\pwi", "{\\rtf1 ", "\\pwi{ "}) {
    EXPECT_THAT(ExportedNew([&](IContact& contact) { SetInk(contact, block); }),
                Not(HasSubstr("BodyInk")));
  }
}

TEST_F(ContactToXml, WritesTheAnniversaryAlsoWithoutABirthday) {
  EXPECT_EQ(ExportedNew([](IContact& contact) {
              EXPECT_EQ(contact.put_Birthday(kNoDate), S_OK);
              EXPECT_EQ(contact.put_Anniversary(kSampleAnniversary), S_OK);
            }),
            "<root><CONTACT Oid=\"0\"><ANNIVERSARY>20080215T000000</ANNIVERSARY></CONTACT></root>");
}

TEST_F(ContactToXml, ForgivesInkThatTheDeviceLacks) {
  for (const DWORD error : {0x80004001u, 0x80004005u}) {
    const auto plan = FaultPlan::FailCalls("IContact::get_BodyInk", error);
    EXPECT_THAT(ExportedNew([](IContact& contact) {
                  EXPECT_EQ(contact.put_Birthday(kSampleBirthday), S_OK);
                }),
                HasSubstr("BIRTHDAY"));
  }
}

TEST_F(ContactToXml, FailsWhenInkFailsOtherwise) {
  const auto plan = FaultPlan::FailCalls("IContact::get_BodyInk", 0x8007000E);
  EXPECT_THAT(
      ExportedNew([](IContact& contact) { EXPECT_EQ(contact.put_Birthday(kSampleBirthday), S_OK); },
                  E_OUTOFMEMORY),
      Not(HasSubstr("BIRTHDAY")));
}

TEST_F(ContactToXml, ForgivesAHandheldWithoutYomiFields) {
  handheld_.SetLanguage(0x0411);
  handheld_->Set(host::setting::kYomiFields, DWORD{0});
  store_ = std::make_unique<ContactStore>();
  EXPECT_THAT(ExportedNew([](IContact& contact) {
                EXPECT_EQ(contact.put_Birthday(kSampleBirthday), S_OK);
              }),
              HasSubstr("<BIRTHDAY>19790217T000000</BIRTHDAY>"));
}

TEST_F(ContactToXml, FailsWhenAYomiFieldFailsOtherwise) {
  handheld_.SetLanguage(0x0411);
  const auto plan = FaultPlan::FailCalls("IContact::get_YomiFirstName", 0x80004005);
  ExportedNew({}, E_FAIL);
}

TEST_F(ContactToXml, DoesNotReadTheYomiFieldsElsewhere) {
  const auto plan = FaultPlan::FailCalls("IContact::get_YomiFirstName", 0x80004005);
  ExportedNew({}, S_OK);
  EXPECT_FALSE(plan.fired());
}

TEST_F(ContactToXml, LeavesTheRecordWithWhatWasWrittenBeforeAFailure) {
  const auto fill = [](IContact& contact) {
    SetText(contact, &IContact::put_FirstName, u"Ada");
    SetText(contact, &IContact::put_CompanyName, u"Analytical");
  };
  const auto plan = FaultPlan::FailCalls("IContact::get_LastName", 0x80004005);
  EXPECT_EQ(ExportedNew(fill, E_FAIL),
            "<root><CONTACT Oid=\"0\"><FIRST_NAME>Ada</FIRST_NAME></CONTACT></root>");
}

TEST_F(ContactToXml, AppendsNothingWhenTheIdentifierFails) {
  const auto plan = FaultPlan::FailCalls("IContact::get_Oid", 0x80004005);
  EXPECT_EQ(ExportedNew({}, E_FAIL), "<root/>");
}

TEST_F(ContactToXml, LogsItsSteps) {
  handheld_.SetLanguage(0x0411);
  SwitchLogOn();
  ExportedText(&IContact::put_LastName, u"Byron");
  EXPECT_THAT(LogMessages(),
              ElementsAre("AddContactToXML", "Got LastName Byron", "after get_Body hr = 0x00000000",
                          "after get_BodyInk hr = 0x00000000", "Getting Yomi Fields",
                          "after get_Birthday hr = 0x00000000"));
}

TEST_F(ContactToXml, LogsTheLastStepsAlsoAfterAFailure) {
  handheld_.SetLanguage(0x0411);
  SwitchLogOn();
  {
    const auto plan = FaultPlan::FailCalls("IContact::get_FirstName", 0x80004005);
    ExportedNew({}, E_FAIL);
  }
  EXPECT_THAT(LogMessages(), ElementsAre("AddContactToXML", "after get_Body hr = 0x80004005",
                                         "after get_BodyInk hr = 0x80004005", "Getting Yomi Fields",
                                         "after get_Birthday hr = 0x80004005"));
}

TEST_F(ContactToXml, LogsTheLastStepsAlsoWithoutARecord) {
  SwitchLogOn();
  const ComPtr<IContact> contact = store_->New();
  Exported(contact.get(), 7, E_INVALIDARG);
  EXPECT_THAT(LogMessages(), ElementsAre("AddContactToXML", "after get_Body hr = 0x80070057",
                                         "after get_BodyInk hr = 0x80070057",
                                         "after get_Birthday hr = 0x80070057"));
}

}  // namespace
}  // namespace corvane::testing
