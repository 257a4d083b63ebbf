#include "desktop/folder/card_edit.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "common/text/unicode.h"
#include "desktop/folder/item_facts.h"
#include "tests/desktop/folder/edit_support.h"

namespace desktop::testing {
namespace {

using formats::Contact;
using formats::ContactField;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

using F = ContactField;

// All that a contact cannot hold, in an order and a spelling of its own.
const std::string kRichCard =
    "begin:vcard\r\n"
    "PRODID:-//Other//EN\r\n"
    "VERSION:3.0\r\n"
    "N;LANGUAGE=de:Berg;Anna;Maria,Eva;;\r\n"
    "fn:Anna Maria Berg\r\n"
    "NICKNAME:Nan\r\n"
    "item1.EMAIL;type=pref:anna@a.example\r\n"
    "item1.X-ABLabel:Holiday home\r\n"
    "EMAIL;TYPE=WORK:anna@b.example\r\n"
    "EMAIL:anna@c.example\r\n"
    "EMAIL:anna@d.example\r\n"
    "TEL;TYPE=CELL;X-SERVICE=fast:+49 170 1\r\n"
    "ADR;TYPE=HOME:Box 1;;Main St 1;Ulm;;89073;Germany\r\n"
    "PHOTO;ENCODING=b;TYPE=JPEG:AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA\r\n"
    " AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA\r\n"
    " AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA\r\n"
    "NOTE:A long note that another program has folded at \r\n"
    "  a place of its own\r\n"
    "X-UNKNOWN;A=1:kept\r\n"
    "REV:2020-01-01T00:00:00Z\r\n"
    "UID:anna\r\n"
    "END:VCARD\r\n";
const std::string kNewRev = "REV:2027-01-15T08:00:00Z\r\n";
const std::string kOldRev = "REV:2020-01-01T00:00:00Z\r\n";

std::string Rev(const std::string& card) {
  return Replaced(card, kOldRev, kNewRev);
}

TEST(CardEdit, ChangesNoByteWithoutAChange) {
  const EditResult result = EditContact(kRichCard, [](Contact&) {});
  EXPECT_EQ(result.bytes, kRichCard);
}

TEST(CardEdit, KeepsGroupNameAndParametersOfALineWhoseValueChanges) {
  EditResult result =
      EditContact(kRichCard, [](Contact& c) { c[F::kEmail1Address] = "new@a.example"; });
  EXPECT_EQ(result.bytes, Rev(Replaced(kRichCard, ":anna@a.example", ":new@a.example")));
  result = EditContact(kRichCard, [](Contact& c) { c[F::kMobileTelephoneNumber] = "+49 170 2"; });
  EXPECT_EQ(result.bytes, Rev(Replaced(kRichCard, "+49 170 1", "+49 170 2")));
}

TEST(CardEdit, ChangesOnePartOfAValueAndKeepsTheOthersSpelling) {
  EditResult result = EditContact(kRichCard, [](Contact& c) { c[F::kHomeAddressCity] = "Bonn"; });
  EXPECT_EQ(result.bytes, Rev(Replaced(kRichCard, ";Ulm;", ";Bonn;")));
  result = EditContact(kRichCard, [](Contact& c) { c[F::kLastName] = "Tal"; });
  EXPECT_EQ(result.bytes, Rev(Replaced(Replaced(kRichCard, ":Berg;Anna", ":Tal;Anna"),
                                       "fn:Anna Maria Berg", "fn:Anna Maria Tal")));
}

TEST(CardEdit, InsertsALineBehindItsLike) {
  const EditResult result =
      EditContact(kRichCard, [](Contact& c) { c[F::kHomeTelephoneNumber] = "+49 731 1"; });
  EXPECT_EQ(result.bytes, Rev(Replaced(kRichCard, "fast:+49 170 1\r\n",
                                       "fast:+49 170 1\r\nTEL;TYPE=HOME,VOICE:+49 731 1\r\n")));
}

TEST(CardEdit, RemovesALineWithTheLabelOfItsGroup) {
  const EditResult result =
      EditContact(kRichCard, [](Contact& c) { c[F::kEmail1Address].clear(); });
  EXPECT_EQ(result.bytes, Rev(Replaced(kRichCard,
                                       "item1.EMAIL;type=pref:anna@a.example\r\n"
                                       "item1.X-ABLabel:Holiday home\r\n",
                                       "")));
}

TEST(CardEdit, LetsAValueThatHadNoPlaceTakeTheOneThatIsFree) {
  const EditResult result =
      EditContact(kRichCard, [](Contact& c) { c[F::kEmail3Address].clear(); });
  EXPECT_EQ(result.bytes, Rev(Replaced(kRichCard, "EMAIL:anna@c.example\r\n", "")));
  EXPECT_EQ(std::get<Contact>(result.now)[F::kEmail3Address], "anna@d.example");
  EXPECT_THAT(result.losses, IsEmpty());
}

TEST(CardEdit, KeepsTheFoldsInFrontOfWhatANoteAdds) {
  const std::string card = Card("a", "N:Berg;Anna;;;\r\nNOTE:one\r\nNOTE:two\r\nX-A:1\r\n");
  const EditResult result = EditContact(card, [](Contact& c) { c[F::kBody] += " and more"; });
  EXPECT_EQ(result.bytes, Replaced(card, "NOTE:two", "NOTE:two and more"));
}

TEST(CardEdit, KnowsALongFirstLineThatBeginsWithABlank) {
  const std::string number(300, '1');
  const std::string card = "BEGIN:VCARD\r\n TEL;TYPE=CELL:" + number + "\r\nEND:VCARD\r\n";
  EXPECT_EQ(EditContact(card, [](Contact&) {}).bytes, card);
  const EditResult result =
      EditContact(card, [](Contact& c) { c[F::kMobileTelephoneNumber] = "2"; });
  EXPECT_EQ(std::get<Contact>(result.now)[F::kMobileTelephoneNumber], "2");
}

TEST(CardEdit, KnowsAnEmptyLineBehindACarriageReturn) {
  const std::string card = "BEGIN:VCARD\nNOTE:a\r\r b\rEND:VCARD\r";
  EXPECT_EQ(EditContact(card, [](Contact&) {}).bytes, card);
}

TEST(CardEdit, RemovesNotesThatRepeatEachOther) {
  for (const char* notes :
       {"NOTE:one\r\nNOTE:two\r\nNOTE:one\r\n", "NOTE:one\r\nNOTE:one\r\nNOTE:two\r\n"}) {
    const std::string card = Card("a", "N:Berg;Anna;;;\r\n" + std::string(notes));
    const EditResult result = EditContact(card, [](Contact& c) { c[F::kBody].clear(); });
    EXPECT_EQ(result.bytes, Card("a", "N:Berg;Anna;;;\r\n")) << notes;
    EXPECT_THAT(result.losses, IsEmpty());
  }
}

TEST(CardEdit, ClearsATextThatSeveralLinesSay) {
  const std::string card = Card("a", "N:Berg;Anna;;;\r\nNOTE:one\r\nX-A:1\r\nNOTE:two\r\n");
  const EditResult result = EditContact(card, [](Contact& c) { c[F::kBody].clear(); });
  EXPECT_EQ(result.bytes, Card("a", "N:Berg;Anna;;;\r\nX-A:1\r\n"));
}

TEST(CardEdit, ChangesCategoriesByEntry) {
  const std::string card =
      Card("a", "N:Berg;Anna;;;\r\nCATEGORIES:Friends,Work\r\nCATEGORIES:VIP\r\n");
  EditResult result = EditContact(card, [](Contact& c) {
    c.categories = {"Friends", "VIP", "New"};
  });
  EXPECT_EQ(result.bytes,
            Card("a", "N:Berg;Anna;;;\r\nCATEGORIES:Friends\r\nCATEGORIES:VIP,New\r\n"));
  result = EditContact(card, [](Contact& c) { c.categories = {"VIP"}; });
  EXPECT_EQ(result.bytes, Card("a", "N:Berg;Anna;;;\r\nCATEGORIES:VIP\r\n"));
  result =
      EditContact(Card("a", "N:Berg;Anna;;;\r\n"), [](Contact& c) { c.categories = {"a, b"}; });
  EXPECT_THAT(result.losses, ElementsAre(HasSubstr("Categories")));
}

TEST(CardEdit, WritesADayInTheFormThatTheLineHas) {
  const auto set = [](Contact& c) { c.birthday = std::chrono::year(1990) / 3 / 4; };
  EXPECT_EQ(EditContact(Card("", "N:Berg;Anna;;;\r\nBDAY;VALUE=date:19800322\r\n"), set).bytes,
            Card("", "N:Berg;Anna;;;\r\nBDAY;VALUE=date:19900304\r\n"));
  EXPECT_EQ(EditContact(Card("", "N:Berg;Anna;;;\r\nBDAY:1980-03-22T00:00:00Z\r\n"), set).bytes,
            Card("", "N:Berg;Anna;;;\r\nBDAY:1990-03-04T00:00:00Z\r\n"));
  // There can be one alone.
  EXPECT_EQ(EditContact(Card("", "N:Berg;Anna;;;\r\nBDAY:--0322\r\n"), set).bytes,
            Card("", "N:Berg;Anna;;;\r\nBDAY:1990-03-04\r\n"));
}

TEST(CardEdit, FollowsTheNameInWhatTheCardCallsItsContact) {
  const auto set = [](Contact& c) { c[F::kLastName] = "Tal"; };
  EXPECT_EQ(EditContact(Card("", "FN:Dr. A. Berg (Ulm)\r\nN:Berg;Anna;;;\r\n"), set).bytes,
            Card("", "FN:Dr. A. Tal (Ulm)\r\nN:Tal;Anna;;;\r\n"));
  EXPECT_EQ(EditContact(Card("", "FN:Nan\r\nN:Berg;Anna;;;\r\n"), set).bytes,
            Card("", "FN:Anna Tal\r\nN:Tal;Anna;;;\r\n"));
  EXPECT_EQ(EditContact(Card("", "FN:Anna Berg\r\n"), set).bytes, Card("", "FN:Anna Tal\r\n"));
}

TEST(CardEdit, LetsANameGoForANumberThatIsNew) {
  const EditResult result =
      EditContact(Card("", "FN:Anna Berg\r\nN:Berg;Anna;;;\r\nX-A:1\r\n"), [](Contact& c) {
        c[F::kFirstName] = c[F::kLastName] = "";
        c[F::kMobileTelephoneNumber] = "+49 170 1";
      });
  EXPECT_THAT(result.losses, IsEmpty());
  EXPECT_EQ(result.bytes, Card("", "FN:+49 170 1\r\nX-A:1\r\nTEL;TYPE=CELL:+49 170 1\r\n"));
}

TEST(CardEdit, WritesANoteWithTheEmptyLinesAroundIt) {
  const auto set = [](Contact& c) { c[F::kBody] = "\n\nfirst\r\nmore\n"; };
  const std::string note = "NOTE:\\n\\nfirst\\nmore\\n\r\n";
  EXPECT_EQ(EditContact(Card("", "N:Berg;Anna;;;\r\n"), set).bytes,
            Card("", "N:Berg;Anna;;;\r\n" + note));
  EXPECT_EQ(EditContact(Card("", "N:Berg;Anna;;;\r\nNOTE:old\r\nX-A:1\r\n"), set).bytes,
            Card("", "N:Berg;Anna;;;\r\n" + note + "X-A:1\r\n"));
  // Empty lines alone are no change.
  const std::string card = Card("", "N:Berg;Anna;;;\r\nNOTE:first\\nmore\r\n");
  EXPECT_EQ(EditContact(card, set).bytes, card);
}

TEST(CardEdit, KeepsTheNameThatACompanyIsCalledBy) {
  const EditResult result = EditContact(Card("", "FN:Old Ltd\r\nORG:Old Ltd;Sales\r\n"),
                                        [](Contact& c) { c[F::kCompanyName] = "New Ltd"; });
  EXPECT_EQ(result.bytes, Card("", "FN:New Ltd\r\nORG:New Ltd;Sales\r\n"));
}

TEST(CardEdit, ChangesAPropertyThatHasAnotherProgramsName) {
  const std::string card = Card("",
                                "N:Berg;Anna;;;\r\nX-MS-SPOUSE;X-A=1:Bert\r\n"
                                "X-ANDROID-CUSTOM:vnd.android.cursor.item/relation;Cora;1;;;\r\n");
  const EditResult result = EditContact(card, [](Contact& c) {
    c[F::kSpouse] = "Carl";
    c[F::kAssistantName] = "Dora";
  });
  EXPECT_EQ(result.bytes, Replaced(Replaced(card, "Bert", "Carl"), "Cora", "Dora"));
}

TEST(CardEdit, MakesANumberThatWasAnAddressAText) {
  std::string card =
      "BEGIN:VCARD\nVERSION:4.0\nN:Berg;Anna;;;\n"
      "TEL;VALUE=uri;TYPE=\"cell,voice\":tel:+49-170-1\nEND:VCARD\n";
  const EditResult result =
      EditContact(card, [](Contact& c) { c[F::kMobileTelephoneNumber] = "+49 170 2"; });
  EXPECT_EQ(result.bytes, Replaced(card, "TEL;VALUE=uri;TYPE=\"cell,voice\":tel:+49-170-1",
                                   "TEL;TYPE=\"cell,voice\":+49 170 2"));
}

TEST(CardEdit, ChangesEveryLineThatRepeatsANumber) {
  const std::string card =
      Card("", "N:Berg;Anna;;;\r\nTEL;TYPE=CELL:1\r\nX-MS-TEL;TYPE=CALLBACK:1\r\n");
  const EditResult result =
      EditContact(card, [](Contact& c) { c[F::kMobileTelephoneNumber] = "2"; });
  EXPECT_EQ(result.bytes,
            Card("", "N:Berg;Anna;;;\r\nTEL;TYPE=CELL:2\r\nX-MS-TEL;TYPE=CALLBACK:2\r\n"));
}

TEST(CardEdit, RemovesThePrintedFormOfAnAddressThatChanged) {
  const std::string card = Card("",
                                "N:Berg;Anna;;;\r\nADR;TYPE=HOME:;;A 1;Ulm;;;\r\n"
                                "LABEL;TYPE=HOME:A 1\\nUlm\r\nLABEL;TYPE=WORK:B 2\r\n");
  EditResult result = EditContact(card, [](Contact& c) { c[F::kHomeAddressCity] = "Bonn"; });
  EXPECT_EQ(result.bytes, Card("",
                               "N:Berg;Anna;;;\r\nADR;TYPE=HOME:;;A 1;Bonn;;;\r\n"
                               "LABEL;TYPE=WORK:B 2\r\n"));
  result = EditContact(card, [](Contact& c) {
    c[F::kHomeAddressCity].clear();
    c[F::kHomeAddressStreet].clear();
  });
  EXPECT_EQ(result.bytes, Card("", "N:Berg;Anna;;;\r\nLABEL;TYPE=WORK:B 2\r\n"));
}

TEST(CardEdit, KeepsLineEndsAndTheOtherCardsOfTheFile) {
  const std::string first = "BEGIN:VCARD\nVERSION:3.0\nN:Berg;Anna;;;\n\nEND:VCARD\n";
  const std::string second = Card("b", "N:Tal;Bert;;;\r\n");
  const EditResult result =
      EditContact("junk\r" + first + "\n\n" + second, [](Contact& c) { c[F::kBody] = "a\r\nb"; });
  EXPECT_EQ(result.bytes,
            "junk\r" + Replaced(first, "\n\nEND", "\n\nNOTE:a\\nb\nEND") + "\n\n" + second);
}

TEST(CardEdit, WritesQuotedPrintableInOldCards) {
  const std::string card =
      "BEGIN:VCARD\r\nVERSION:2.1\r\nN:Berg;Anna\r\n"
      "NOTE;CHARSET=ISO-8859-1;ENCODING=QUOTED-PRINTABLE:=E4=\r\n=F6\r\nEND:VCARD\r\n";
  EditResult result = EditContact(card, [](Contact& c) { c[F::kBody] = "ß = a\nb"; });
  EXPECT_EQ(result.bytes,
            Replaced(card, "NOTE;CHARSET=ISO-8859-1;ENCODING=QUOTED-PRINTABLE:=E4=\r\n=F6",
                     "NOTE;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:=C3=9F =3D a=0D=0Ab"));
  result = EditContact(card, [](Contact& c) { c[F::kBusinessTelephoneNumber] = "1"; });
  EXPECT_EQ(result.bytes, Replaced(card, "END:VCARD", "TEL;WORK;VOICE:1\r\nEND:VCARD"));
}

TEST(CardEdit, KeepsTheCharacterSetOfAFile) {
  const std::string western = "BEGIN:VCARD\r\nVERSION:3.0\r\nN:B\xE4r;Anna;;;\r\nEND:VCARD\r\n";
  EditResult result = EditContact(western, [](Contact& c) { c[F::kBody] = "\u00DCbung"; });
  EXPECT_EQ(result.bytes, Replaced(western, "END:",
                                   "NOTE:\xDC"
                                   "bung\r\nEND:"));
  // What it cannot say is UTF-8.
  result = EditContact(western, [](Contact& c) { c[F::kBody] = "\u5C71"; });
  EXPECT_EQ(result.bytes, Replaced(western, "END:", "NOTE:\u5C71\r\nEND:"));
  EXPECT_EQ(std::get<Contact>(result.now)[F::kBody], "\u5C71");

  const auto utf16 = [](const std::string& text) {
    return "\xFF\xFE" + text::ToUtf16Le(text::FromUtf8Lossy(text));
  };
  const std::string card = Card("", "N:B\u00E4r;Anna;;;\r\n");
  result = EditContact(utf16(card), [](Contact& c) { c[F::kBody] = "\u5C71"; });
  EXPECT_EQ(result.bytes, utf16(Replaced(card, "END:", "NOTE:\u5C71\r\nEND:")));
  result = EditContact("\xEF\xBB\xBF" + card, [](Contact& c) { c[F::kBody] = "x"; });
  EXPECT_EQ(result.bytes, "\xEF\xBB\xBF" + Replaced(card, "END:", "NOTE:x\r\nEND:"));
}

TEST(CardEdit, JoinsNothingAcrossAnEmptyLine) {
  const std::string card = "BEGIN:VCARD\nVERSION:3.0\nN:Lee\n\n e\nEND:VCARD\n";
  EXPECT_EQ(EditContact(card, [](formats::Contact&) {}).bytes, card);
}

TEST(CardEdit, LetsNoBytesBecomeTheMarkOfAFile) {
  const std::string bytes =
      "BEGIN:VCARD\r\nVERSION:3.0\r\nN:One\r\nEND:VCARD\r\n"
      "\xFF\xFE lost\r\n"
      "BEGIN:VCARD\r\nVERSION:3.0\r\nN:Two\r\nEND:VCARD\r\n";
  const DeskReading before = ReadDeskBytes("a.vcf", bytes, Berlin());
  ASSERT_EQ(before.items.size(), 2u);
  TextEdit text(bytes, Berlin(), kEditTime);
  EXPECT_TRUE(text.Remove(before.items[0].line, before.items[0].item).done);
  const DeskReading after = ReadDeskBytes("a.vcf", text.bytes(), Berlin());
  ASSERT_EQ(after.items.size(), 1u);
  EXPECT_TRUE(FactsOf(after.items[0].item) == FactsOf(before.items[1].item));
}

TEST(CardEdit, KeepsAQuotedValueThatEndsInAnEmptyLine) {
  const std::string card =
      "BEGIN:VCARD\r\nVERSION:2.1\r\nN:Berg;Anna\r\n"
      "ORG;ENCODING=QUOTED-PRINTABLE:a=\r\n\r\nTITLE:b\r\nEND:VCARD\r\n";
  const EditResult result = EditContact(card, [](Contact& c) { c[F::kJobTitle] = "c"; });
  EXPECT_EQ(result.bytes, Replaced(card, "TITLE:b", "TITLE:c"));
}

TEST(CardEdit, KeepsTheCardOfAnAgent) {
  const std::string card =
      "BEGIN:VCARD\r\nVERSION:2.1\r\nN:Berg;Anna\r\nAGENT:\r\nBEGIN:VCARD\r\n"
      "VERSION:2.1\r\nN:Tal;Bert\r\nTEL;CELL:1\r\nEND:VCARD\r\nEND:VCARD\r\n";
  const EditResult result =
      EditContact(card, [](Contact& c) { c[F::kMobileTelephoneNumber] = "2"; });
  EXPECT_EQ(result.bytes, Replaced(card, "END:VCARD\r\nEND:", "END:VCARD\r\nTEL;CELL:2\r\nEND:"));
}

TEST(CardEdit, WritesNoNameToSortByThatFollowsFromTheName) {
  const std::string card = Card("", "N:Berg;Anna;;;\r\n");
  EditResult result = EditContact(card, [](Contact& c) { c[F::kFileAs] = "Berg, Anna"; });
  EXPECT_EQ(result.bytes, card);
  result = EditContact(Card("", "N:Berg;Anna;;;\r\nX-FILE-AS:Berg\\, Anna\r\n"), [](Contact& c) {
    c[F::kLastName] = "Tal";
    c[F::kFileAs] = "Tal, Anna";
  });
  EXPECT_EQ(result.bytes, Card("", "N:Tal;Anna;;;\r\nX-FILE-AS:Tal\\, Anna\r\n"));
}

TEST(CardEdit, RefusesACardWithoutAnEnd) {
  const std::string cards =
      "BEGIN:VCARD\r\nVERSION:3.0\r\nN:Berg;Anna;;;\r\n" + Card("b", "N:Tal;;;;\r\n");
  const DeskReading reading = ReadDeskBytes("a.vcf", cards, Berlin());
  ASSERT_EQ(reading.items.size(), 2u);
  TextEdit text(cards, Berlin(), kEditTime);
  Contact to = std::get<Contact>(reading.items[0].item);
  to[F::kBody] = "note";
  EXPECT_FALSE(text.Change(1, reading.items[0].item, to).done);
  EXPECT_EQ(text.bytes(), cards);
}

TEST(CardEdit, EditsACardOfManyLines) {
  std::string lines = "N:Berg;Anna;;;\r\nPHOTO;ENCODING=b:" + std::string(1 << 20, 'A') + "\r\n";
  for (int i = 0; i < 200; ++i) lines += "X-LINE-" + std::to_string(i) + ":value\r\n";
  const std::string card = Card("", lines + "NOTE:old\r\n");
  const EditResult result = EditContact(card, [](Contact& c) { c[F::kBody] = "new"; });
  EXPECT_EQ(result.bytes, Replaced(card, "NOTE:old", "NOTE:new"));
}

}  // namespace
}  // namespace desktop::testing
