#include "common/text/search_text.h"

#include <gtest/gtest.h>

#include <rapidcheck/gtest.h>

#include <string>

#include "common/text/unicode.h"

namespace text {
namespace {

TEST(SearchForm, IsTheSameWhateverTheCaseAndTheMarks) {
  for (const auto& [a, b] :
       std::initializer_list<std::pair<const char*, const char*>>{{"Åsa Björkman", "asa bjorkman"},
                                                                  {"CAFÉ", "cafe\u0301"},
                                                                  {"Ứng", "ung"},
                                                                  {"Ёлка", "елка"},
                                                                  {"Ἀθῆναι", "αθηναι"},
                                                                  {"\u212B", "a"},
                                                                  {"ḱ\u0323", "K"},
                                                                  {"ガ", "カ"},
                                                                  {"हिन्दी", "हनद"},
                                                                  {"\u05E9\u05C1", "\u05E9"},
                                                                  {"\uFB2A", "\u05E9"},
                                                                  {"a\U0001D165b", "AB"}})
    EXPECT_EQ(SearchForm(a), SearchForm(b)) << a;
}

TEST(SearchForm, KeepsLettersApart) {
  EXPECT_NE(SearchForm("ø"), SearchForm("o"));
  EXPECT_NE(SearchForm("ß"), SearchForm("ss"));
  EXPECT_NE(SearchForm("a b"), SearchForm("ab"));
}

TEST(SearchForm, HasTheLettersOfHangulSyllables) {
  EXPECT_EQ(SearchForm("한"), u"\u1112\u1161\u11AB");
  EXPECT_EQ(SearchForm("하"), u"\u1112\u1161");
  EXPECT_EQ(SearchForm("힣"), u"\u1112\u1175\u11C2");
}

TEST(SearchForm, KeepsWhatLiesBeyondTheBasicPlane) {
  EXPECT_EQ(SearchForm("😀x"), FromUtf8Lossy("😀X"));
}

RC_GTEST_PROP(SearchFormProperty, TakesAnyBytesAndFormsNothingTwice, (const std::string& bytes)) {
  const std::u16string form = SearchForm(bytes);
  RC_ASSERT(SearchForm(ToUtf8Lossy(form)) == form);
}

TEST(SearchWords, AreAllToBeFoundInAnyOrder) {
  const SearchWords words("  Björk\tåsa ");
  EXPECT_TRUE(words.AreIn(SearchForm("Åsa Björkman")));
  EXPECT_FALSE(words.AreIn(SearchForm("Åsa")));
  EXPECT_TRUE(words.HasOneIn(SearchForm("Åsa")));
  EXPECT_FALSE(words.HasOneIn(SearchForm("Nils")));
  EXPECT_FALSE(words.empty());
  EXPECT_TRUE(SearchWords(" \u0301 ").empty());
}

}  // namespace
}  // namespace text
