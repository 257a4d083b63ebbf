// A page in a browser, for one test; the browser itself serves all tests of the program.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>

#include "common/page/page_file.h"
#include "tests/browser/web_driver.h"
#include "tests/support/temporary_directory.h"

namespace corvane::testing {

class BrowserTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { browser_ = std::make_unique<Browser>(); }
  static void TearDownTestSuite() { browser_.reset(); }

  void SetUp() override {
    browser().PreferDark(false);
    browser().Resize(1280, 800);
  }
  // No page has anything to complain of.
  void TearDown() override { EXPECT_EQ(browser().ConsoleMessages(), ""); }

  static Browser& browser() { return *browser_; }
  std::string WritePage(const page::Contents& contents) const {
    std::string text;
    page::WritePage(contents, [&](std::string_view piece) { text += piece; });
    directory_.Write("page.html", text);
    return directory_ / "page.html";
  }
  static void Open(const std::string& file, const std::string& place = {}) {
    browser().Open("file://" + file + (place.empty() ? "" : "#" + place));
    browser().Await("document.readyState === 'complete'");
  }
  static void GoTo(const std::string& place) {
    browser().Run("location.hash = '#" + place + "'");
    const std::string title = place.substr(0, place.find('/'));
    browser().Await("document.getElementById('heading').textContent.toLowerCase() === '" + title +
                    "'");
  }
  // What is written in all elements that match, each in brackets.
  static std::string Texts(const std::string& selector) {
    return browser().Value("[...document.querySelectorAll(`" + selector +
                           "`)].map((node) => '[' + node.textContent.trim() + ']').join('')");
  }
  static int CountOf(const std::string& selector) {
    return browser().Value("document.querySelectorAll(`" + selector + "`).length");
  }
  static void Click(const std::string& selector) {
    browser().Run("document.querySelector(`" + selector + "`).click()");
  }
  static void Search(const std::string& text) {
    browser().Press("/");
    browser().Await("document.activeElement.id === 'search'");
    browser().Press(text);
  }

  const TemporaryDirectory directory_;

 private:
  inline static std::unique_ptr<Browser> browser_;
};

}  // namespace corvane::testing
