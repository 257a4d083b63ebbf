#include "common/page/page_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

namespace page::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

Contents Named(const std::string& name) {
  Contents contents{
      .name = name, .zone = *calendar::Zone::Find("UTC"), .now = formats::local_seconds{}};
  contents.people.emplace_back()[formats::ContactField::kFirstName] = name;
  return contents;
}

std::string Written(const Contents& contents) {
  std::string file;
  WritePage(contents, [&](std::string_view piece) { file += piece; });
  return file;
}

std::size_t CountOf(const std::string& text, const std::string& what) {
  std::size_t count = 0;
  for (std::size_t at = text.find(what); at != text.npos; at = text.find(what, at + 1)) ++count;
  return count;
}

std::string Between(const std::string& text, const std::string& begin, const std::string& end) {
  const std::size_t from = text.find(begin) + begin.size();
  return text.substr(from, text.find(end, from) - from);
}

nlohmann::json DataIn(const std::string& file) {
  return nlohmann::json::parse(
      Between(file, "<script type=\"application/json\" id=\"data\">", "</script>"));
}

TEST(PageFile, AllowsItsOwnStyleAndScriptAlone) {
  const std::string file = Written(Named("pda"));
  const std::string policy =
      Between(file, "http-equiv=\"Content-Security-Policy\" content=\"", "\"");
  EXPECT_THAT(policy,
              ::testing::MatchesRegex("default-src 'none'; style-src 'sha256-[A-Za-z0-9+/]+='; "
                                      "script-src 'sha256-[A-Za-z0-9+/]+='; base-uri 'none'; "
                                      "form-action 'none'"));
  EXPECT_LT(file.find("Content-Security-Policy"), file.find("<style>"));
}

TEST(PageFile, NamesNothingOfANetwork) {
  const std::string file = Written(Named("pda"));
  for (const char* what :
       {" src=", "<link", "@import", "url(", "fetch(", "XMLHttpRequest", "innerHTML", "outerHTML",
        "insertAdjacentHTML", "document.write", "eval(", "{{"})
    EXPECT_THAT(file, Not(HasSubstr(what)));
}

TEST(PageFile, TakesWhatLooksLikeMarkupForData) {
  const std::size_t scripts = CountOf(Written(Named("pda")), "<script");
  for (const std::string name :
       {"<script>alert(1)</script>", "</script><script>alert(1)</script>", "</title><b>", "<!--",
        "--><img src=x onerror=alert(1)>", "{{script}}{{title}}", "a\xE2\x80\xA8z\xE2\x80\xA9",
        "&lt;&amp;\"'", "\\u003c/script>", "]]>"}) {
    const std::string file = Written(Named(name));
    EXPECT_EQ(CountOf(file, "<script"), scripts) << name;
    EXPECT_EQ(CountOf(file, "</script"), scripts) << name;
    EXPECT_EQ(CountOf(file, "</title"), 1u) << name;
    EXPECT_EQ(CountOf(file, "<!--"), 0u) << name;
    EXPECT_EQ(DataIn(file)["people"][0]["name"], name);
    EXPECT_EQ(DataIn(file)["name"], name);
  }
}

}  // namespace
}  // namespace page::testing
