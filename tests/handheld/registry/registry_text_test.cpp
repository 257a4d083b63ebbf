#include "handheld/registry/registry_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "common/text/unicode.h"
#include "platform/registry.h"

namespace corvane {
namespace {

using ce::BYTE;
using ce::DWORD;
using ce::host::FormatRegistry;
using ce::host::FormatRegistryData;
using ce::host::ParseRegistry;
using ce::host::RegistryTextError;
using ce::host::RegistryTree;
using ce::host::RegistryValue;
using ::testing::HasSubstr;

constexpr char16_t kKey[] = u"HKEY_LOCAL_MACHINE\\SOFTWARE\\Tenbrook";

std::string Document(const std::string& body) {
  return "Windows Registry Editor Version "
         "5.00\r\n\r\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\Tenbrook]\r\n" +
         body;
}

// The value "v" of a document that holds one line.
RegistryValue ValueOf(const std::string& line) {
  const RegistryTree tree = ParseRegistry(Document(line));
  const RegistryValue* value = tree.Find(kKey, u"v");
  return value ? *value : RegistryValue{0xBAD, {}};
}

TEST(ParseRegistry, ReadsTextWithItsEscapes) {
  EXPECT_EQ(ValueOf(R"("v"="a \"quoted\" C:\\path")"),
            RegistryValue::Text(u"a \"quoted\" C:\\path"));
  EXPECT_EQ(ValueOf("\"v\"=\"\""), RegistryValue::Text(u""));
  EXPECT_EQ(ValueOf("\"v\"=\"Gr\xC3\xBC\xC3\x9F"
                    "e\""),
            RegistryValue::Text(u"Grüße"));
}

TEST(ParseRegistry, ReadsNumbersAndBytes) {
  EXPECT_EQ(ValueOf("\"v\"=dword:0000002a"), RegistryValue::Number(42));
  EXPECT_EQ(ValueOf("\"v\"=DWORD:FFFFFFFF"), RegistryValue::Number(0xFFFFFFFF));
  EXPECT_EQ(ValueOf("\"v\"=hex:01,fe,Ff"), (RegistryValue{ce::REG_BINARY, {1, 0xFE, 0xFF}}));
  EXPECT_EQ(ValueOf("\"v\"=hex:"), (RegistryValue{ce::REG_BINARY, {}}));
  EXPECT_EQ(ValueOf("\"v\"=hex(7):61,00,00,00"), (RegistryValue{7, {0x61, 0, 0, 0}}));
  EXPECT_EQ(ValueOf("\"v\"=hex(ffff0012):07"), (RegistryValue{0xFFFF0012, {7}}));
}

TEST(ParseRegistry, ReadsContinuedLines) {
  EXPECT_EQ(ValueOf("\"v\"=hex:01,02,\\\r\n  03,\\\n\t04\r\n"),
            (RegistryValue{ce::REG_BINARY, {1, 2, 3, 4}}));
}

TEST(ParseRegistry, ReadsTheDefaultValue) {
  const RegistryTree tree = ParseRegistry(Document("@=\"default\"\r\n"));
  ASSERT_NE(tree.Find(kKey, u""), nullptr);
  EXPECT_EQ(*tree.Find(kKey, u""), RegistryValue::Text(u"default"));
}

TEST(ParseRegistry, SkipsCommentsAndEmptyLines) {
  EXPECT_EQ(ValueOf("\r\n; a remark\r\n  \"v\" = dword:1\r\n"), RegistryValue::Number(1));
  EXPECT_EQ(ValueOf("\"v\"=\"text\" ; why\r\n"), RegistryValue::Text(u"text"));
}

TEST(ParseRegistry, ReadsUtf8WithAByteOrderMark) {
  const RegistryTree tree = ParseRegistry("\xEF\xBB\xBF" + Document("\"v\"=dword:1"));
  EXPECT_NE(tree.Find(kKey, u"v"), nullptr);
}

TEST(ParseRegistry, ReadsUtf16) {
  const std::u16string text = *text::FromUtf8(Document("\"v\"=\"\xE2\x82\xAC\"\r\n"));
  const std::string bytes = "\xFF\xFE" + text::ToUtf16Le(text);
  EXPECT_EQ(*ParseRegistry(bytes).Find(kKey, u"v"), RegistryValue::Text(u"€"));
}

TEST(ParseRegistry, LetsTheLastOfTwoEqualNamesStand) {
  EXPECT_EQ(ValueOf("\"V\"=dword:1\r\n\"v\"=dword:2\r\n"), RegistryValue::Number(2));
}

TEST(ParseRegistry, CarriesDeletionsOut) {
  const RegistryTree tree = ParseRegistry(
      Document("\"v\"=dword:1\r\n\"w\"=dword:2\r\n\"v\"=-\r\n"
               "[HKEY_LOCAL_MACHINE\\Gone\\Below]\r\n[-HKEY_LOCAL_MACHINE\\gone]\r\n"));
  EXPECT_EQ(tree.Find(kKey, u"v"), nullptr);
  EXPECT_NE(tree.Find(kKey, u"w"), nullptr);
  EXPECT_FALSE(tree.HasKey(u"HKEY_LOCAL_MACHINE\\Gone"));
  EXPECT_FALSE(tree.HasKey(u"HKEY_LOCAL_MACHINE\\Gone\\Below"));
}

struct DamagedText {
  const char* name;
  std::string text;
  std::size_t line;
  const char* problem;
};

class ParseRegistryDamaged : public ::testing::TestWithParam<DamagedText> {};

TEST_P(ParseRegistryDamaged, NamesTheLine) {
  try {
    ParseRegistry(GetParam().text);
    FAIL() << "the text was taken";
  } catch (const RegistryTextError& error) {
    EXPECT_EQ(error.line(), GetParam().line) << error.what();
    EXPECT_THAT(error.what(), HasSubstr(GetParam().problem));
  }
}

INSTANTIATE_TEST_SUITE_P(
    Texts, ParseRegistryDamaged,
    ::testing::Values(
        DamagedText{"Empty", "", 1, "first line"},
        DamagedText{"OtherHeading", "REGEDIT4\r\n", 1, ""},
        DamagedText{"Binary", std::string("\x00\x01\xFF", 3), 1, "UTF-8"},
        DamagedText{"HalfUnit", "\xFF\xFEW", 1, "UTF-16"},
        DamagedText{"TooLarge", std::string(ce::host::kMaxRegistryText + 1, ' '), 1, "too large"},
        DamagedText{"OpenBracket", Document("[HKEY_LOCAL_MACHINE\\a"), 4, "bracket"},
        DamagedText{"LoneBracket", Document("["), 4, "bracket"},
        DamagedText{"NoRoot", Document("[]"), 4, "key's name"},
        DamagedText{"UnknownRoot", Document("[HKEY_ELSEWHERE\\a]"), 4, "key's name"},
        DamagedText{"EmptyComponent", Document("[HKEY_LOCAL_MACHINE\\\\a]"), 4, "key's name"},
        DamagedText{
            "TooDeep",
            Document("[HKEY_LOCAL_MACHINE\\a\\a\\a\\a\\a\\a\\a\\a\\a\\a\\a\\a\\a\\a\\a\\a]"), 4,
            "key's name"},
        DamagedText{"LongKey", Document("[HKEY_LOCAL_MACHINE\\" + std::string(256, 'a') + "]"), 4,
                    "key's name"},
        DamagedText{"Homeless", "Windows Registry Editor Version 5.00\n\"v\"=dword:1", 2,
                    "outside of any key"},
        DamagedText{"AfterDeletion", Document("[-HKEY_LOCAL_MACHINE\\a]\n\"v\"=dword:1"), 5,
                    "outside of any key"},
        DamagedText{"Rubbish", Document("\r\nrubbish\r\n"), 5, "neither"},
        DamagedText{"OpenName", Document("\"v"), 4, "closing quote"},
        DamagedText{"LongName", Document("\"" + std::string(256, 'v') + "\"=dword:1"), 4, "name"},
        DamagedText{"NoEquals", Document("\"v\" dword:1"), 4, "\"=\""},
        DamagedText{"NoData", Document("\"v\"="), 4, "kind"},
        DamagedText{"UnknownKind", Document("\"v\"=qword:1"), 4, "kind"},
        DamagedText{"OpenText", Document("\"v\"=\"text"), 4, "closing quote"},
        DamagedText{"EndsInEscape", Document("\"v\"=\"text\\"), 4, "closing quote"},
        DamagedText{"TextAndMore", Document("\"v\"=\"text\" more"), 4, "after the value"},
        DamagedText{"LongNumber", Document("\"v\"=dword:123456789"), 4, "dword"},
        DamagedText{"NoNumber", Document("\"v\"=dword:"), 4, "dword"},
        DamagedText{"BadNumber", Document("\"v\"=dword:-1"), 4, "dword"},
        DamagedText{"BadByte", Document("\"v\"=hex:01,zz"), 4, "bytes"},
        DamagedText{"LongByte", Document("\"v\"=hex:001"), 4, "bytes"},
        DamagedText{"BadType", Document("\"v\"=hex(x):01"), 4, "hex("},
        DamagedText{"OpenType", Document("\"v\"=hex(7:01"), 4, "hex("},
        DamagedText{"ContinuedInNothing", Document("\"v\"=hex:01,\\"), 4, "continued"},
        DamagedText{"ContinuedWithoutComma", Document("\"v\"=hex:01\\\n02"), 4, "comma"},
        DamagedText{"BadContinuation", Document("\"v\"=hex:01,\\\n02,\\\nxx"), 6, "bytes"},
        DamagedText{"ZeroInText", Document(std::string("\"v\"=\"a\0b\"", 9)), 4, "zero"}),
    [](const auto& test) { return test.param.name; });

TEST(FormatRegistry, WritesTheForm) {
  RegistryTree tree;
  tree.Set(kKey, u"Logging", RegistryValue::Number(42));
  tree.Set(kKey, u"Owner \"Al\"", RegistryValue::Text(u"C:\\Grüße"));
  tree.Set(kKey, u"", RegistryValue{7, {0x61, 0}});
  tree.Set(kKey, u"Long", RegistryValue{ce::REG_BINARY, std::vector<BYTE>(26, 0xAB)});
  const std::string ab25 =
      "ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab";
  EXPECT_EQ(FormatRegistry(tree),
            "Windows Registry Editor Version 5.00\r\n"
            "\r\n[HKEY_LOCAL_MACHINE]\r\n"
            "\r\n[HKEY_LOCAL_MACHINE\\SOFTWARE]\r\n"
            "\r\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\Tenbrook]\r\n"
            "@=hex(7):61,00\r\n"
            "\"Logging\"=dword:0000002a\r\n"
            "\"Long\"=hex:" +
                ab25 +
                ",\\\r\n  ab\r\n"
                "\"Owner \\\"Al\\\"\"=\"C:\\\\Gr\xC3\xBC\xC3\x9F"
                "e\"\r\n");
}

TEST(FormatRegistryData, WritesAsBytesWhatTextWouldNotBringBack) {
  EXPECT_EQ(FormatRegistryData({ce::REG_SZ, {0x61, 0}}), "hex(1):61,00") << "no terminator";
  EXPECT_EQ(FormatRegistryData({ce::REG_SZ, {0x61, 0, 0}}), "hex(1):61,00,00") << "odd";
  EXPECT_EQ(FormatRegistryData({ce::REG_SZ, {0, 0xD8, 0, 0}}), "hex(1):00,d8,00,00");
  EXPECT_EQ(FormatRegistryData(RegistryValue::Text(u"two\r\nlines")).substr(0, 9), "hex(1):74");
  EXPECT_EQ(FormatRegistryData({ce::REG_DWORD, {1, 2}}), "hex(4):01,02");
}

std::u16string RandomName(std::mt19937& random, std::size_t longest) {
  const std::u16string characters = u"aZ09 _-.;=[]\"'@äÖ€中/";
  std::u16string name;
  const std::size_t length = 1 + random() % longest;
  while (name.size() < length) name.push_back(characters[random() % characters.size()]);
  return name;
}

RegistryTree RandomTree(std::mt19937& random) {
  RegistryTree tree;
  for (auto keys = random() % 8; keys > 0; --keys) {
    std::u16string path = u"HKEY_LOCAL_MACHINE";
    for (auto depth = random() % 4; depth > 0; --depth) path += u"\\" + RandomName(random, 12);
    tree.AddKey(path);
    for (auto values = random() % 5; values > 0; --values) {
      RegistryValue value{static_cast<DWORD>(random() % 12), {}};
      for (auto bytes = random() % 60; bytes > 0; --bytes) {
        value.data.push_back(static_cast<BYTE>(random() % 3 == 0 ? 0 : random()));
      }
      if (random() % 3 == 0) value = RegistryValue::Text(RandomName(random, 40));
      if (random() % 4 == 0) value = RegistryValue::Number(static_cast<DWORD>(random()));
      tree.Set(path, random() % 6 == 0 ? u"" : RandomName(random, 20), value);
    }
  }
  return tree;
}

TEST(FormatRegistry, IsReadBackAsItWas) {
  for (unsigned seed = 0; seed < 500; ++seed) {
    std::mt19937 random(seed);
    const RegistryTree tree = RandomTree(random);
    const std::string text = FormatRegistry(tree);
    ASSERT_EQ(ParseRegistry(text), tree) << "seed " << seed << "\n" << text;
  }
}

// Whatever stands in the file: a registry or an error with a line, and nothing else.
TEST(ParseRegistry, SurvivesDamageOfAnyKind) {
  for (unsigned seed = 0; seed < 2000; ++seed) {
    std::mt19937 random(seed);
    std::string text = FormatRegistry(RandomTree(random));
    for (auto changes = 1 + random() % 4; changes > 0 && !text.empty(); --changes) {
      const std::size_t at = random() % text.size();
      const std::string_view special = "\"\\[]=,()\r\n@-;h\xFF\x80";
      if (random() % 4 == 0)
        text.resize(at);
      else if (random() % 2 == 0)
        text[at] = special[random() % special.size()];
      else
        text.insert(at, 1, static_cast<char>(random()));
    }
    try {
      const RegistryTree tree = ParseRegistry(text);
      ASSERT_EQ(ParseRegistry(FormatRegistry(tree)), tree) << "seed " << seed;
    } catch (const RegistryTextError& error) {
      ASSERT_THAT(error.what(), HasSubstr("line "));
    }
  }
}

TEST(RegistryTree, ListsDirectSubKeysOnly) {
  RegistryTree tree;
  tree.AddKey(u"HKEY_LOCAL_MACHINE\\b\\below");
  tree.AddKey(u"HKEY_LOCAL_MACHINE\\B-side");
  tree.AddKey(u"HKEY_LOCAL_MACHINE\\a");
  EXPECT_THAT(tree.SubKeys(u"hkey_local_machine"), ::testing::ElementsAre(u"a", u"b", u"B-side"));
  EXPECT_TRUE(tree.DeleteKey(u"HKEY_LOCAL_MACHINE\\B"));
  EXPECT_THAT(tree.SubKeys(u"HKEY_LOCAL_MACHINE"), ::testing::ElementsAre(u"a", u"B-side"))
      << "a name that begins alike stays";
}

}  // namespace
}  // namespace corvane
