#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <regex>
#include <utility>

#include "agent/pim_export/download_requests.h"
#include "agent/vocabulary/contact_fields.h"
#include "tests/support/sample_contacts.h"
#include "tests/support/upload_runs.h"

namespace corvane::testing {
namespace {

using namespace ce;

std::vector<std::string> DownloadContacts() {
  return RunDownload(DownloadAllPIMRecords, Word(1)).documents;
}

class RoundTrip : public PimTest {};

TEST_F(RoundTrip, ChangesNothingInAFullContact) {
  handheld_.SetLanguage(0x0411);
  store_->Add(FillContact);
  const std::vector<std::string> before = DownloadContacts();
  ExpectAllStored(before);
  EXPECT_EQ(DownloadContacts(), before);
  // The names are joined without the blank, which the wire does not show.
  EXPECT_EQ(store_->Text(1, &IContact::get_Categories), u"Business,Personal");
}

TEST_F(RoundTrip, MovesAFullContactToAnEmptyHandheld) {
  handheld_.SetLanguage(0x0411);
  const LONG oid = store_->Add(FillContact);
  std::vector<std::string> documents = DownloadContacts();
  store_->Delete(oid);
  ExpectAllStored(documents);
  // Ink does not travel.
  std::string expected = WithoutOids(documents);
  expected.erase(expected.find("<BodyInk>"), std::string("<BodyInk>TRUE</BodyInk>").size());
  EXPECT_EQ(WithoutOids(DownloadContacts()), expected);
}

// A contact's texts, dates and categories as they come.
using RandomText = std::pair<std::size_t, std::u16string>;  // by the row of the field
struct RandomContact {
  RandomContact(std::vector<RandomText> someTexts, int someDay)
      : texts(std::move(someTexts)), birthday(someDay) {}

  std::vector<RandomText> texts;
  int birthday;
};

// Characters that documents, stores or people have trouble with.
rc::Gen<std::u16string> NastyText() {
  const auto unit = rc::gen::oneOf(
      rc::gen::element<char16_t>(u'&', u'<', u'>', u'"', u'\'', u' ', u'\t', u'\r', u'\n', u',',
                                 u']', u'%', u'\\', u';', u'#'),
      rc::gen::element<char16_t>(u'\0', u'\x01', u'\x1F', u'\x7F', u'\x85', u'\u2028', u'\uFEFF',
                                 u'\uFFFE', u'\uFFFF', char16_t{0xD83D}, char16_t{0xDE00}),
      rc::gen::inRange<char16_t>(u'a', u'z'), rc::gen::arbitrary<char16_t>());
  return rc::gen::container<std::u16string>(unit);
}

bool IsText(const ContactField& field) {
  return field.getText != nullptr;
}

rc::Gen<RandomContact> AnyContact() {
  const auto text =
      rc::gen::pair(rc::gen::suchThat(rc::gen::inRange<std::size_t>(0, ContactFields().size()),
                                      [](std::size_t row) { return IsText(ContactFields()[row]); }),
                    NastyText());
  return rc::gen::construct<RandomContact>(rc::gen::container<std::vector<RandomText>>(text),
                                           rc::gen::inRange(10000, 70000));
}

rc::Gen<std::vector<RandomContact>> SomeContacts() {
  return rc::gen::scale(0.25, rc::gen::container<std::vector<RandomContact>>(AnyContact()));
}

void Fill(IContact& contact, const RandomContact& random) {
  for (const auto& [row, text] : random.texts) {
    SetText(contact, ContactFields()[row].putText, text.substr(0, 1000));
  }
  EXPECT_EQ(contact.put_Birthday(random.birthday), S_OK);
}

// A handheld of its own for every case.
template <typename Case>
void OnAHandheld(Case test) {
  TestHandheld handheld;
  handheld.SetLanguage(0x0411);
  ContactStore store;
  test(store);
}

// Categories with an empty name are written without one, which fails the record that is read back.
bool HasNamelessCategory(const std::vector<std::string>& documents) {
  return std::ranges::any_of(documents, [](const std::string& document) {
    return document.find("<CATEGORY/>") != std::string::npos ||
           std::regex_search(document, std::regex("<Name>[ \t\r\n]*</Name>"));
  });
}

RC_GTEST_PROP(RoundTripProperty, SettlesAfterOneUpload, ()) {
  const auto contacts = *SomeContacts();
  OnAHandheld([&](ContactStore& store) {
    for (const RandomContact& random : contacts) {
      store.Add([&](IContact& contact) { Fill(contact, random); });
    }
    const std::vector<std::string> first = DownloadContacts();
    RC_PRE(!HasNamelessCategory(first));
    ExpectAllStored(first);
    // Line ends and texts of blanks alone are what an XML reader makes of them, once.
    const std::vector<std::string> second = DownloadContacts();
    ExpectAllStored(second);
    RC_ASSERT(DownloadContacts() == second);
    RC_ASSERT(second.size() == first.size());
  });
}

// Texts that an XML reader leaves as they are.
std::u16string Plain(std::u16string text, bool multiline) {
  std::u16string plain;
  for (const char16_t unit : text) {
    const bool kept = unit >= u' ' && unit != 0xFFFE && unit != 0xFFFF && (unit & 0xF800) != 0xD800;
    if (kept) plain += unit;
    if (unit == u'\n' && multiline) plain += u"\r\n";
  }
  const bool blank = plain.find_first_not_of(u" \r\n") == std::u16string::npos;
  return blank && !plain.empty() ? plain + u"x" : plain;
}

RC_GTEST_PROP(RoundTripProperty, KeepsPlainTextByteForByte, ()) {
  auto contacts = *SomeContacts();
  for (RandomContact& random : contacts) {
    for (auto& [row, text] : random.texts) {
      const ContactField& field = ContactFields()[row];
      const bool multiline =
          field.kind == ContactFieldKind::kMultilineText || field.kind == ContactFieldKind::kNotes;
      text = Plain(text.substr(0, 400), multiline);
      if (field.kind == ContactFieldKind::kCategoryList) std::erase(text, u',');
    }
  }
  OnAHandheld([&](ContactStore& store) {
    for (const RandomContact& random : contacts) {
      store.Add([&](IContact& contact) { Fill(contact, random); });
    }
    const std::vector<std::string> first = DownloadContacts();
    ExpectAllStored(first);
    RC_ASSERT(DownloadContacts() == first);
    for (const LONG oid : store.Oids()) store.Delete(oid);
    ExpectAllStored(first);
    RC_ASSERT(WithoutOids(DownloadContacts()) == WithoutOids(first));
  });
}

}  // namespace
}  // namespace corvane::testing
