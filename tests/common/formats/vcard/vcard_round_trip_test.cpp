#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>

#include "common/formats/vcard/vcard_dates.h"
#include "tests/common/formats/vcard/card_support.h"
#include "tests/support/paths.h"

namespace formats {

// How RapidCheck shows a contact that fails.
void showValue(const Contact& contact, std::ostream& out) {
  PrintTo(contact, &out);
}

namespace testing {
namespace {

constexpr VCardVersion kVersions[] = {VCardVersion::k30, VCardVersion::k40};

// Whatever means something to a vCard, beside letters of all lengths in UTF-8.
rc::Gen<std::string> AnyText() {
  const auto piece = rc::gen::weightedOneOf<std::string>(
      {{6, rc::gen::element<std::string>("a", "n", "N", "Z", "0", "x", "é", "山", "\U0001F600")},
       {5, rc::gen::element<std::string>("\\", ";", ",", ":", "\"", "=", "^", "\r\n", "\n", "\r",
                                         " ", "\t", "=0D", "\\n", "^n")},
       {1, rc::gen::element<std::string>("tel:", "urn:", "END:VCARD", "\r\nEND:VCARD\r\n", "\uFEFF",
                                         "\u2028", "\u0085", "_$!<", "http://",
                                         std::string(90, 'w'))}});
  return rc::gen::map(rc::gen::container<std::vector<std::string>>(piece), [](const auto& pieces) {
    std::string text;
    for (const std::string& p : pieces) text += p;
    return text;
  });
}

// Often none, and often one that other fields hold, too.
rc::Gen<std::string> FieldText() {
  return rc::gen::weightedOneOf<std::string>(
      {{5, rc::gen::just(std::string())},
       {2, rc::gen::element<std::string>("same", "two words", " ", "Dr.")},
       {4, AnyText()}});
}

rc::Gen<std::optional<year_month_day>> AnyDate() {
  constexpr local_days kFirst{std::chrono::year(1900) / 1 / 1};
  constexpr local_days kAfter{std::chrono::year(3000) / 1 / 1};
  const auto date = rc::gen::map(rc::gen::inRange<int>(0, (kAfter - kFirst).count()), [=](int day) {
    return year_month_day(kFirst + std::chrono::days(day));
  });
  return rc::gen::map(rc::gen::maybe(date), [](const rc::Maybe<year_month_day>& d) {
    return d ? std::optional<year_month_day>(*d) : std::nullopt;
  });
}

std::vector<std::string> Distinct(std::vector<std::string> names) {
  std::vector<std::string> distinct;
  for (std::string& name : names) {
    std::replace(name.begin(), name.end(), ',', '.');
    if (name.empty() || std::find(distinct.begin(), distinct.end(), name) != distinct.end()) {
      continue;
    }
    distinct.push_back(std::move(name));
  }
  return distinct;
}

Contact AnyContact() {
  Contact contact;
  contact.uid = *FieldText();
  for (std::string& field : contact.fields) field = *FieldText();
  contact.categories = Distinct(*rc::gen::container<std::vector<std::string>>(AnyText()));
  contact.birthday = *AnyDate();
  contact.anniversary = *AnyDate();
  return contact;
}

RC_GTEST_PROP(RoundTrip, KeepsEveryContact, ()) {
  const Contact contact = AnyContact();
  RC_LOG() << ::testing::PrintToString(contact);
  for (VCardVersion version : kVersions) {
    const std::string text = WriteVCard(contact, version);
    const VCardFile file = ReadVCards(text);
    RC_ASSERT(file.contacts.size() == 1u);
    RC_ASSERT(file.contacts[0].contact == contact);
    RC_ASSERT(file.contacts[0].notices.empty());
    RC_ASSERT(file.notices.empty());
  }
}

RC_GTEST_PROP(RoundTrip, WritesLinesThatAreShortAndWholeText, ()) {
  const Contact contact = AnyContact();
  for (VCardVersion version : kVersions) {
    const std::string text = WriteVCard(contact, version);
    for (std::size_t start = 0; start < text.size();) {
      const std::size_t end = text.find_first_of("\r\n", start);
      RC_ASSERT(end != std::string::npos);
      RC_ASSERT(text.substr(end, 2) == "\r\n");
      RC_ASSERT(end - start <= 75u);
      start = end + 2;
    }
  }
}

RC_GTEST_PROP(RoundTrip, KeepsEveryContactOfAFile, ()) {
  const std::vector<Contact> contacts = {AnyContact(), AnyContact(), AnyContact()};
  std::string text;
  for (const Contact& contact : contacts) text += WriteVCard(contact, VCardVersion::k30);
  const VCardFile file = ReadVCards(text);
  RC_ASSERT(file.contacts.size() == contacts.size());
  for (std::size_t i = 0; i < contacts.size(); ++i) {
    RC_ASSERT(file.contacts[i].contact == contacts[i]);
  }
}

struct KeptCase {
  const char* name;
  FieldTexts fields;
};
class KeptTest : public ::testing::TestWithParam<KeptCase> {};

TEST_P(KeptTest, ComesBackAsItWas) {
  const Contact contact = ContactOf(GetParam().fields);
  for (VCardVersion version : kVersions) {
    const VCardFile file = ReadVCards(WriteVCard(contact, version));
    ASSERT_EQ(file.contacts.size(), 1u);
    EXPECT_EQ(file.contacts[0].contact, contact);
    EXPECT_EQ(Texts(file.contacts[0].notices), std::vector<std::string>{});
  }
}

INSTANTIATE_TEST_SUITE_P(
    RoundTrip, KeptTest,
    ::testing::Values(
        KeptCase{"Nothing", {}}, KeptCase{"SecondEmailAlone", {{Field::kEmail2Address, "a@b"}}},
        KeptCase{"ThirdEmailAlone", {{Field::kEmail3Address, "a@b"}}},
        KeptCase{"GapInEmails", {{Field::kEmail1Address, "a@b"}, {Field::kEmail3Address, "c@d"}}},
        KeptCase{"SameEmails", {{Field::kEmail1Address, "a@b"}, {Field::kEmail3Address, "a@b"}}},
        KeptCase{"SecondPhoneAlone", {{Field::kBusiness2TelephoneNumber, "1"}}},
        KeptCase{"SamePhones",
                 {{Field::kHomeTelephoneNumber, "1"}, {Field::kHome2TelephoneNumber, "1"}}},
        KeptCase{"SameNumberOfEveryKind",
                 {{Field::kHomeTelephoneNumber, "1"},
                  {Field::kBusinessTelephoneNumber, "1"},
                  {Field::kMobileTelephoneNumber, "1"},
                  {Field::kBusinessFaxNumber, "1"},
                  {Field::kHomeFaxNumber, "1"}}},
        KeptCase{"CompanyAlone", {{Field::kCompanyName, "Acme"}}},
        KeptCase{"DepartmentAlone", {{Field::kDepartment, "A; B"}}},
        KeptCase{"BlankName", {{Field::kFirstName, " "}, {Field::kCompanyName, "Acme"}}},
        KeptCase{"FileAsAlone", {{Field::kFileAs, "The plumber"}}},
        KeptCase{"OtherFileAs", {{Field::kLastName, "Lee"}, {Field::kFileAs, "Boss"}}},
        KeptCase{"NumberWithAScheme", {{Field::kMobileTelephoneNumber, "TEL:+1;ext=2"}}},
        KeptCase{"MixedLineBreaks", {{Field::kBody, "\r\na\nb\rc\n\r\r\n"}}},
        KeptCase{"LineBreaksInAName", {{Field::kLastName, "a\rb"}, {Field::kFirstName, "c\r\nd"}}},
        KeptCase{"ForgedCard", {{Field::kBody, "x\r\nEND:VCARD\r\nBEGIN:VCARD\r\nVERSION:2.1"}}},
        KeptCase{"SeparatorsAlone", {{Field::kWebPage, ";"}, {Field::kBody, ";;"}}},
        KeptCase{"Escapes", {{Field::kBody, "\\n\\\\;\\,:\\"}, {Field::kWebPage, "a\\nb\nc,;"}}}),
    [](const auto& test) { return std::string(test.param.name); });

VCardFile ReadSample(const std::string& name) {
  std::ifstream in(corvane::testing::SourcePath("samples/" + name), std::ios::binary);
  EXPECT_TRUE(in.is_open());
  return ReadVCards(std::string(std::istreambuf_iterator<char>(in), {}));
}

TEST(Samples, FillEveryFieldWithoutLoss) {
  const VCardFile file = ReadSample("people.vcf");
  EXPECT_GE(file.contacts.size(), 25u);
  EXPECT_EQ(Texts(file.notices), std::vector<std::string>{});
  for (const ParsedContact& read : file.contacts) {
    EXPECT_EQ(Texts(read.notices), std::vector<std::string>{}) << DisplayName(read.contact);
  }
  for (std::size_t i = 0; i < kContactFieldCount; ++i) {
    EXPECT_TRUE(std::any_of(file.contacts.begin(), file.contacts.end(), [&](const auto& read) {
      return !read.contact.fields[i].empty();
    })) << ContactFieldName(static_cast<Field>(i));
  }
}

TEST(Samples, OfAnOldPhoneTellWhatIsLost) {
  const VCardFile file = ReadSample("old-phone.vcf");
  EXPECT_GE(file.contacts.size(), 5u);
  EXPECT_EQ(Texts(file.notices), std::vector<std::string>{});
  std::size_t notices = 0;
  for (const ParsedContact& read : file.contacts) {
    EXPECT_NE(DisplayName(read.contact), "(no name)");
    notices += read.notices.size();
  }
  EXPECT_GE(notices, 3u);
}

}  // namespace
}  // namespace testing
}  // namespace formats
