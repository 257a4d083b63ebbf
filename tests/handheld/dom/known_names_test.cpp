#include "handheld/dom/known_names.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "tests/handheld/dom/dom_support.h"

namespace ce::testing {
namespace {

using host::dom::KnownName;

TEST(KnownName, IsTheSamePlaceForAllWhoAskForIt) {
  const std::u16string name = u"FIRST_NAME";
  std::vector<const char16_t*> places(8);
  {
    std::vector<std::thread> threads;
    for (auto& place : places) threads.emplace_back([&] { place = KnownName(name).text.data(); });
    for (std::thread& thread : threads) thread.join();
  }
  EXPECT_NE(places[0], name.data());
  EXPECT_EQ(places, std::vector<const char16_t*>(8, KnownName(u"FIRST_NAME").text.data()));
  EXPECT_EQ(KnownName(name).text, name);
  EXPECT_EQ(KnownName(name).utf8, "FIRST_NAME");
  EXPECT_EQ(KnownName(u"\u00E9\U00010000").utf8, "\xC3\xA9\xF0\x90\x80\x80");
}

TEST(KnownName, IsANameOfXmlOfOrdinaryLength) {
  EXPECT_EQ(KnownName(u"").text, u"");
  EXPECT_EQ(KnownName(u"1a").text, u"");
  EXPECT_EQ(KnownName(u"a b").text, u"");
  EXPECT_EQ(KnownName(std::u16string(64, u'n')).text, std::u16string(64, u'n'));
  EXPECT_EQ(KnownName(std::u16string(65, u'n')).text, u"");
}

// Behind the others: it leaves no room.
class KnownNames : public DomTest {};

TEST_F(KnownNames, AreSoManyAndNoMore) {
  std::size_t known = 0;
  for (int i = 0; i < 5000; ++i) {
    if (!KnownName(u"n" + std::u16string(i, u'x').substr(0, 40) +
                   std::u16string(1, static_cast<char16_t>(0x4E00 + i)))
             .text.empty()) {
      ++known;
    }
  }
  EXPECT_GT(known, 100u);
  EXPECT_LE(known, 512u);
  // Others are names as well.
  const Document document = MakeDocument();
  Append(document, MakeElement(document, u"unknown"));
  EXPECT_EQ(Saved(document), "<unknown/>");
  EXPECT_FALSE(MakeElement(document, u"<"));
}

}  // namespace
}  // namespace ce::testing
