#include <gtest/gtest.h>

#include "tests/common/formats/vcard/card_support.h"

namespace formats::testing {
namespace {

class NameTest : public ::testing::TestWithParam<CardCase> {};
TEST_P(NameTest, IsRead) {
  ExpectCard(GetParam());
}

INSTANTIATE_TEST_SUITE_P(
    Name, NameTest,
    ::testing::Values(
        CardCase{"AllParts",
                 "3.0",
                 "N:Doe;John;Quincy;Dr.;Jr.\nFN:Johnny",
                 {{Field::kLastName, "Doe"},
                  {Field::kFirstName, "John"},
                  {Field::kMiddleName, "Quincy"},
                  {Field::kTitle, "Dr."},
                  {Field::kSuffix, "Jr."}}},
        CardCase{"Lists",
                 "4.0",
                 "N:Stevenson;John;Philip,Paul;Prof.,Dr.;Jr.,M.D.",
                 {{Field::kLastName, "Stevenson"},
                  {Field::kFirstName, "John"},
                  {Field::kMiddleName, "Philip Paul"},
                  {Field::kTitle, "Prof. Dr."},
                  {Field::kSuffix, "Jr., M.D."}}},
        CardCase{"CommasIn21",
                 "2.1",
                 "N:Doe, the Elder;John;Q,R",
                 {{Field::kLastName, "Doe, the Elder"},
                  {Field::kFirstName, "John"},
                  {Field::kMiddleName, "Q,R"}}},
        CardCase{"LowerCase",
                 "3.0",
                 "n:Doe;John",
                 {{Field::kLastName, "Doe"}, {Field::kFirstName, "John"}}},
        CardCase{"TooManyParts",
                 "4.0",
                 "N:Doe;John;;;;Smith;III",
                 {{Field::kLastName, "Doe"}, {Field::kFirstName, "John"}},
                 {"3: N: a name has five parts, what follows was left out"}},
        CardCase{"TwoNames",
                 "4.0",
                 "N;ALTID=1:Doe;John\nN;ALTID=1;LANGUAGE=jp:X;Y\nN:Doe;John",
                 {{Field::kLastName, "Doe"}, {Field::kFirstName, "John"}},
                 {"4: N: a contact has one name, this one was left out"}},
        CardCase{
            "FormattedNameAlone",
            "3.0",
            "FN:Dr. Ann van Dam",
            {{Field::kTitle, "Dr."}, {Field::kFirstName, "Ann"}, {Field::kLastName, "van Dam"}}},
        CardCase{"FormattedNameBesideAnEmptyOne",
                 "3.0",
                 "N:;;;;\nFN:Ann Lee",
                 {{Field::kFirstName, "Ann"}, {Field::kLastName, "Lee"}}},
        CardCase{"FormattedNameBesideABlankOne",
                 "3.0",
                 "N: ; \nFN:Ann Lee",
                 {{Field::kFirstName, "Ann"}, {Field::kLastName, "Lee"}}},
        CardCase{
            "PreferredFormattedName", "4.0", "FN:Ann\nFN;PREF=1:Bea", {{Field::kFirstName, "Bea"}}},
        CardCase{"FormattedNameThatIsTheCompany",
                 "3.0",
                 "FN:Acme Works\nORG:Acme Works",
                 {{Field::kCompanyName, "Acme Works"}}},
        CardCase{"FormattedNameThatIsTheAddress",
                 "3.0",
                 "FN:A@B.example\nEMAIL:a@b.example",
                 {{Field::kEmail1Address, "a@b.example"}}},
        CardCase{"FormattedNameThatIsDerived", "4.0", "FN;DERIVED=true:Ann Lee", {}},
        CardCase{"Organization",
                 "4.0",
                 "KIND:org\nFN:Acme Works",
                 {{Field::kCompanyName, "Acme Works"}}},
        CardCase{"OrganizationWithItsName",
                 "4.0",
                 "KIND:org\nFN:Acme\nORG:Acme Works;Sales",
                 {{Field::kCompanyName, "Acme Works"}, {Field::kDepartment, "Sales"}}},
        CardCase{"ShownAsCompany",
                 "3.0",
                 "FN:Acme Works\nX-ABShowAs:COMPANY",
                 {{Field::kCompanyName, "Acme Works"}}},
        CardCase{"Phonetic",
                 "3.0",
                 "X-PHONETIC-FIRST-NAME:たろう\nX-PHONETIC-LAST-NAME:やまだ\nX-PHONETIC-ORG:かぶ",
                 {{Field::kYomiFirstName, "たろう"},
                  {Field::kYomiLastName, "やまだ"},
                  {Field::kYomiCompanyName, "かぶ"}}},
        CardCase{"PhoneticOfTelephones",
                 "2.1",
                 "SOUND;X-IRMC-N;CHARSET=Shift_JIS:\xD4\xCF\xC0\xDE;\xC0\xDB\xB3;;;",
                 {{Field::kYomiLastName, "ﾔﾏﾀﾞ"}, {Field::kYomiFirstName, "ﾀﾛｳ"}}},
        CardCase{"FileAs", "3.0", "X-EVOLUTION-FILE-AS:Lee\\, Ann", {{Field::kFileAs, "Lee, Ann"}}},
        CardCase{"SortString", "3.0", "SORT-STRING:Harten", {{Field::kFileAs, "Harten"}}},
        CardCase{"SortStringBesideFileAs",
                 "3.0",
                 "SORT-STRING:Harten\nX-FILE-AS:van Harten",
                 {{Field::kFileAs, "van Harten"}},
                 {"3: SORT-STRING: a contact has one FileAs, left out: Harten"}},
        CardCase{"SortAs",
                 "4.0",
                 "N;SORT-AS=\"Harten,Rene\":van der Harten;Rene",
                 {{Field::kLastName, "van der Harten"},
                  {Field::kFirstName, "Rene"},
                  {Field::kFileAs, "Harten, Rene"}}}),
    CaseName);

class TextFieldTest : public ::testing::TestWithParam<CardCase> {};
TEST_P(TextFieldTest, IsRead) {
  ExpectCard(GetParam());
}

INSTANTIATE_TEST_SUITE_P(
    TextField, TextFieldTest,
    ::testing::Values(
        CardCase{"CompanyAndUnits",
                 "3.0",
                 "ORG:IBM;Accounting;Dungeon",
                 {{Field::kCompanyName, "IBM"}, {Field::kDepartment, "Accounting; Dungeon"}}},
        CardCase{"UnescapedCommaInCompany",
                 "3.0",
                 "ORG:Foo, Inc.",
                 {{Field::kCompanyName, "Foo, Inc."}}},
        CardCase{"UnitAlone", "3.0", "ORG:;Sales", {{Field::kDepartment, "Sales"}}},
        CardCase{"TwoCompanies",
                 "3.0",
                 "ORG:One;A\nORG:One\nORG:Two",
                 {{Field::kCompanyName, "One"}, {Field::kDepartment, "A"}},
                 {"5: ORG: a contact has one organization, left out: Two"}},
        CardCase{"PreferredTitle",
                 "4.0",
                 "TITLE;PREF=2:Boss\nTITLE;PREF=1:Owner",
                 {{Field::kJobTitle, "Owner"}},
                 {"3: TITLE: a contact has one JobTitle, left out: Boss"}},
        CardCase{"RoleWithoutTitle", "3.0", "ROLE:Counting", {{Field::kJobTitle, "Counting"}}},
        CardCase{"RoleBesideTitle",
                 "3.0",
                 "ROLE:Counting\nTITLE:Counter",
                 {{Field::kJobTitle, "Counter"}},
                 {"3: ROLE: a contact has one JobTitle, left out: Counting"}},
        CardCase{"RoleLikeTitle", "3.0", "ROLE:A\nTITLE:A", {{Field::kJobTitle, "A"}}},
        CardCase{"Notes",
                 "3.0",
                 "NOTE:one\\ntwo\nNOTE:three\nNOTE:three",
                 {{Field::kBody, "one\ntwo\nthree"}}},
        CardCase{"Office", "3.0", "X-MS-OFFICE:B 12", {{Field::kOfficeLocation, "B 12"}}},
        CardCase{"SpouseMs", "2.1", "X-MS-SPOUSE:Ann", {{Field::kSpouse, "Ann"}}},
        CardCase{"SpouseEvolution", "3.0", "X-EVOLUTION-SPOUSE:Ann", {{Field::kSpouse, "Ann"}}},
        CardCase{"SpousePlain", "3.0", "X-SPOUSE:Ann", {{Field::kSpouse, "Ann"}}},
        CardCase{"SpouseRelated",
                 "4.0",
                 "RELATED;TYPE=spouse;VALUE=text:Ann",
                 {{Field::kSpouse, "Ann"}}},
        CardCase{"RelatedCard",
                 "4.0",
                 "RELATED;TYPE=spouse:urn:uuid:f81d",
                 {},
                 {"3: RELATED: a contact holds no links to other cards"}},
        CardCase{"RelatedFriend",
                 "4.0",
                 "RELATED;TYPE=friend;VALUE=text:Bob",
                 {},
                 {"3: RELATED: of related people a contact names spouse, children and assistant"}},
        CardCase{"Assistant", "3.0", "X-EVOLUTION-ASSISTANT:Bob", {{Field::kAssistantName, "Bob"}}},
        CardCase{"Children",
                 "2.1",
                 "X-MS-CHILD:Ann\nX-MS-CHILD:Bob\nX-MS-CHILD:Ann",
                 {{Field::kChildren, "Ann, Bob"}}},
        CardCase{
            "ChildrenInOne", "3.0", "X-CHILDREN:Ann and Bob", {{Field::kChildren, "Ann and Bob"}}},
        CardCase{
            "AppleRelatives",
            "3.0",
            "item1.X-ABRELATEDNAMES;type=pref:Ann\nitem1.X-ABLabel:_$!<Spouse>!$_\n"
            "item2.X-ABRELATEDNAMES:Bob\nitem2.X-ABLabel:_$!<Son>!$_\n"
            "item3.X-ABRELATEDNAMES:Cid\nitem3.X-ABLabel:Assistant\n"
            "item4.X-ABRELATEDNAMES:Dee\nitem4.X-ABLabel:_$!<Mother>!$_",
            {{Field::kSpouse, "Ann"}, {Field::kChildren, "Bob"}, {Field::kAssistantName, "Cid"}},
            {"9: X-ABRELATEDNAMES (_$!<Mother>!$_): of related people a contact names spouse, "
             "children and assistant"}},
        CardCase{
            "AndroidRelatives",
            "2.1",
            "X-ANDROID-CUSTOM:vnd.android.cursor.item/relation;Ann;14;;;\n"
            "X-ANDROID-CUSTOM:vnd.android.cursor.item/relation;Bob;3\n"
            "X-ANDROID-CUSTOM:vnd.android.cursor.item/relation;Cid;1\n"
            "X-ANDROID-CUSTOM:vnd.android.cursor.item/nickname;Di;1",
            {{Field::kSpouse, "Ann"}, {Field::kChildren, "Bob"}, {Field::kAssistantName, "Cid"}},
            {"6: X-ANDROID-CUSTOM: a contact has no field for it (nickname)"}},
        CardCase{"WebPage",
                 "3.0",
                 "URL:http\\://a.example/b?c\\,d",
                 {{Field::kWebPage, "http://a.example/b?c,d"}}},
        CardCase{"WebPageForWork",
                 "3.0",
                 "URL;TYPE=HOME,PREF:http://h.example\nURL;TYPE=WORK:http://w.example\nURL:http://"
                 "w.example",
                 {{Field::kWebPage, "http://w.example"}},
                 {"3: URL: a contact has one web page, no slot is left for http://h.example"}}),
    CaseName);

constexpr char kPicture[] = "3: PHOTO: a contact holds no pictures";

class NotKeptTest : public ::testing::TestWithParam<CardCase> {};
TEST_P(NotKeptTest, MakesANotice) {
  ExpectCard(GetParam());
}

INSTANTIATE_TEST_SUITE_P(
    NotKept, NotKeptTest,
    ::testing::Values(
        CardCase{"Nickname",
                 "3.0",
                 "NICKNAME:Jo",
                 {},
                 {"3: NICKNAME: a contact has no field for a nickname"}},
        CardCase{"Photo", "3.0", "PHOTO;ENCODING=b;TYPE=JPEG:/9j/4AA\n QSkZ", {}, {kPicture}},
        CardCase{"PhotoOfAPhone", "2.1", "PHOTO;JPEG;BASE64:\n /9j/4AA\n QSkZ\n\n", {}, {kPicture}},
        CardCase{
            "Logo", "4.0", "LOGO:http://x.example", {}, {"3: LOGO: a contact holds no pictures"}},
        CardCase{
            "Sound", "3.0", "SOUND;TYPE=WAVE:AAAA", {}, {"3: SOUND: a contact holds no sounds"}},
        CardCase{
            "Key", "2.1", "KEY;X509;BASE64:\n AAAA\n\n", {}, {"3: KEY: a contact holds no keys"}},
        CardCase{
            "Geo", "4.0", "GEO:geo:1,2", {}, {"3: GEO: a contact holds no position or time zone"}},
        CardCase{
            "Zone", "4.0", "TZ:-0500", {}, {"3: TZ: a contact holds no position or time zone"}},
        CardCase{"Chat",
                 "4.0",
                 "IMPP:xmpp:a@b",
                 {},
                 {"3: IMPP: a contact holds no chat or call addresses"}},
        CardCase{
            "Aim", "3.0", "X-AIM:a", {}, {"3: X-AIM: a contact holds no chat or call addresses"}},
        CardCase{
            "Gender", "4.0", "GENDER:F", {}, {"3: GENDER: a contact has no field for a gender"}},
        CardCase{"Xml", "4.0", "XML:<a/>", {}, {"3: XML: a contact holds no documents"}},
        CardCase{"Private",
                 "3.0",
                 "CLASS:PRIVATE",
                 {},
                 {"3: CLASS: a contact cannot be marked as private"}},
        CardCase{
            "Group",
            "4.0",
            "KIND:group\nMEMBER:urn:uuid:1",
            {},
            {"3: KIND: kept as if it were a person: group", "4: MEMBER: a contact has no members"}},
        CardCase{"AgentInOneLine",
                 "3.0",
                 "AGENT:BEGIN:VCARD\\nEND:VCARD",
                 {},
                 {"3: AGENT: a contact holds no other card"}},
        CardCase{"Manager",
                 "2.1",
                 "X-MS-MANAGER:Big",
                 {},
                 {"3: X-MS-MANAGER: a contact has no field for a manager"}},
        CardCase{"Unknown",
                 "3.0",
                 "X-SHOE-SIZE:44",
                 {},
                 {"3: X-SHOE-SIZE: a contact has no field for it"}},
        CardCase{
            "UnknownWithoutX", "3.0", "HOBBY:x", {}, {"3: HOBBY: a contact has no field for it"}},
        CardCase{"OwnLabel",
                 "3.0",
                 "a.TEL;TYPE=CELL:1\na.X-ABLabel:Boat",
                 {{Field::kMobileTelephoneNumber, "1"}},
                 {"3: TEL (Boat): a contact keeps no labels of a person's own"}},
        CardCase{"NothingOfThePerson",
                 "4.0",
                 "REV:2020\nPRODID:x\nSOURCE:x\nKIND:individual\nCLASS:PUBLIC\nPROFILE:VCARD\n"
                 "CLIENTPIDMAP:1;x\nitem1.X-ABADR:us",
                 {}},
        CardCase{"EmptyValues",
                 "3.0",
                 "PHOTO:\nX-FOO:\nTITLE:\nADR:;;;;;;\nN:;;;;\nBDAY:\nNICKNAME:",
                 {}}),
    CaseName);

TEST(Categories, AreAList) {
  const ParsedContact read = ReadCard("3.0", "CATEGORIES:Work, Friends,,Work\nCATEGORIES:Chess");
  EXPECT_EQ(read.contact.categories, (std::vector<std::string>{"Work", "Friends", "Chess"}));
  EXPECT_EQ(Texts(read.notices), std::vector<std::string>{});
}

TEST(Categories, AreSeparatedBySemicolonsToo21) {
  const ParsedContact read = ReadCard("2.1", "CATEGORIES:Work;Friends,Chess");
  EXPECT_EQ(read.contact.categories, (std::vector<std::string>{"Work", "Friends", "Chess"}));
}

TEST(Categories, LoseTheirCommasWithANotice) {
  const ParsedContact read = ReadCard("3.0", "CATEGORIES:Friends\\, close,Work");
  EXPECT_EQ(read.contact.categories, (std::vector<std::string>{"Friends; close", "Work"}));
  EXPECT_EQ(Texts(read.notices),
            (std::vector<std::string>{
                "3: CATEGORIES: a category's name cannot hold a comma, kept with a semicolon"}));
}

TEST(Uid, IsKeptOnce) {
  const ParsedContact read = ReadCard("4.0", "UID:urn:uuid:1\nUID:urn:uuid:1\nUID:2");
  EXPECT_EQ(read.contact.uid, "urn:uuid:1");
  EXPECT_EQ(Texts(read.notices),
            (std::vector<std::string>{"5: UID: a contact has one identity, left out: 2"}));
}

struct DateCase {
  const char* name;
  const char* lines;
  std::optional<Date> birthday;
  std::optional<Date> anniversary;
  std::vector<std::string> notices = {};
};
class DatePropertyTest : public ::testing::TestWithParam<DateCase> {};

TEST_P(DatePropertyTest, IsRead) {
  const ParsedContact read = ReadCard("3.0", GetParam().lines);
  EXPECT_EQ(read.contact.birthday, GetParam().birthday);
  EXPECT_EQ(read.contact.anniversary, GetParam().anniversary);
  EXPECT_EQ(Texts(read.notices), GetParam().notices);
}

INSTANTIATE_TEST_SUITE_P(
    DateProperty, DatePropertyTest,
    ::testing::Values(
        DateCase{"Birthday", "BDAY;VALUE=date:1980-03-22", Date{1980, 3, 22}, std::nullopt},
        DateCase{"Anniversary", "ANNIVERSARY:20090808T1430-0500", std::nullopt, Date{2009, 8, 8}},
        DateCase{"AnniversaryPlain", "X-ANNIVERSARY:2009-08-08", std::nullopt, Date{2009, 8, 8}},
        DateCase{"AnniversaryMs", "X-MS-ANNIVERSARY:20090808", std::nullopt, Date{2009, 8, 8}},
        DateCase{"AnniversaryEvolution", "X-EVOLUTION-ANNIVERSARY:2009-08-08", std::nullopt,
                 Date{2009, 8, 8}},
        DateCase{"AnniversaryByLabel",
                 "item1.X-ABDATE:2009-08-08\nitem1.X-ABLabel:_$!<Anniversary>!$_", std::nullopt,
                 Date{2009, 8, 8}},
        DateCase{"AndroidEvents",
                 "X-ANDROID-CUSTOM:vnd.android.cursor.item/contact_event;2009-08-08;1;;\n"
                 "X-ANDROID-CUSTOM:vnd.android.cursor.item/contact_event;1980-03-22;3;;",
                 Date{1980, 3, 22}, Date{2009, 8, 8}},
        DateCase{"OtherDate",
                 "item1.X-ABDATE:2009-08-08\nitem1.X-ABLabel:Graduation",
                 std::nullopt,
                 std::nullopt,
                 {"3: X-ABDATE (Graduation): of dates a contact keeps the birthday and an "
                  "anniversary"}},
        DateCase{"SameTwice", "ANNIVERSARY:20090808\nX-MS-ANNIVERSARY:2009-08-08", std::nullopt,
                 Date{2009, 8, 8}},
        DateCase{"TwoDates",
                 "BDAY:19800322\nBDAY:19800323",
                 Date{1980, 3, 22},
                 std::nullopt,
                 {"4: BDAY: a contact has one such date, left out: 19800323"}},
        DateCase{"NoYear",
                 "BDAY:--0322",
                 std::nullopt,
                 std::nullopt,
                 {"3: BDAY: a date without a year cannot be kept: --0322"}},
        DateCase{"OmittedYear",
                 "BDAY;X-APPLE-OMIT-YEAR=1604:1604-03-22",
                 std::nullopt,
                 std::nullopt,
                 {"3: BDAY: no day of the years 1900 to 2999: 1604-03-22"}},
        DateCase{"OmittedYearOfTheRange",
                 "BDAY;X-APPLE-OMIT-YEAR=1904:1904-03-22",
                 std::nullopt,
                 std::nullopt,
                 {"3: BDAY: a date without a year cannot be kept: 1904-03-22"}},
        DateCase{"Text",
                 "BDAY;VALUE=text:circa 1800",
                 std::nullopt,
                 std::nullopt,
                 {"3: BDAY: not a date: circa 1800"}}),
    [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace formats::testing
