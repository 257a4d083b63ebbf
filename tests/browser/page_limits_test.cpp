// The page of what no sample has: nothing, very much, and what means no good.
#include <fmt/core.h>

#include <chrono>

#include "tests/browser/browser_test.h"

namespace corvane::testing {
namespace {

using formats::ContactField;
using page::Contents;
using ::testing::HasSubstr;

class PageLimits : public BrowserTest {
 protected:
  static Contents Nothing() {
    const auto day = std::chrono::local_days{std::chrono::year{2026} / 11 / 26};
    return {
        .name = "pda", .zone = *calendar::Zone::Find("UTC"), .now = day + std::chrono::hours(9)};
  }
  static formats::TextMessage Message(const std::string& address, int minute,
                                      const std::string& text) {
    formats::TextMessage message;
    message.from.address = address;
    message.time = formats::MessageTime{std::chrono::minutes(29'000'000 + minute)};
    message.text = text;
    return message;
  }
};

TEST_F(PageLimits, NothingAtAllIsSaid) {
  Open(WritePage(Nothing()));
  const std::pair<const char*, const char*> kWords[] = {{"people", "No people."},
                                                        {"calendar/agenda", "No appointments."},
                                                        {"tasks", "No tasks."},
                                                        {"messages", "No messages."},
                                                        {"calls", "No calls."}};
  for (const auto& [place, words] : kWords) {
    GoTo(place);
    EXPECT_THAT(Texts("#view"), HasSubstr(words));
  }
  EXPECT_EQ(CountOf("#views a"), 5);
}

// Whatever is in any field is shown and never done.
TEST_F(PageLimits, WhatLooksLikeMarkupIsText) {
  for (const std::string evil :
       {"<script>document.title = 'evil'</script>", "</script><script>alert(1)</script>",
        "<img src=x onerror=\"document.title = 'evil'\">", "\"><svg onload=alert(1)>",
        "javascript:document.title='evil'", "--><!--", "\xE2\x80\xA8</title>\xE2\x80\xA9",
        "{{script}} ${alert(1)} `", "\xD7\x90<b>\xE2\x80\xAE"}) {
    Contents contents = Nothing();
    contents.name = contents.owner = evil;
    contents.remarks = {evil};
    formats::Contact contact;
    contact.fields.fill(evil);
    contact.categories = {evil};
    contents.people = {contact};
    formats::Appointment appointment;
    appointment.subject = appointment.location = appointment.body = evil;
    appointment.categories = {evil};
    appointment.start = contents.now;
    appointment.end = contents.now + std::chrono::hours(1);
    contents.appointments = {appointment};
    formats::Task task;
    task.subject = task.body = evil;
    task.categories = {evil};
    contents.tasks = {task};
    contents.messages = {Message(evil, 0, evil)};
    contents.messages[0].folder = evil;
    formats::Call call;
    call.number = call.name = call.note = evil;
    contents.calls = {call};
    contents.notes = {{evil, evil}};
    contents.volumes = {{evil, 100, 50}};

    const std::string file = WritePage(contents);
    Open(file);
    const std::string title = browser().Value("document.title");
    // Blanks at its ends are no part of a title.
    EXPECT_EQ(title, browser().Value("document.getElementById('name').textContent"
                                     ".replace(/[ \\t\\n\\f\\r]+/g, ' ').replace(/^ | $/g, '')"));
    for (const char* place : {"people/0", "calendar/month", "calendar/week", "calendar/agenda",
                              "tasks", "messages/0", "calls", "notes/0", "storage"}) {
      GoTo(place);
      ASSERT_FALSE(browser().HasDialog()) << place << " of " << evil;
      EXPECT_EQ(browser().Value("document.title"), title);
      EXPECT_TRUE(browser()
                      .Value("document.getElementById('view').textContent.includes(" +
                             json(evil.substr(0, evil.find('\n'))).dump() + ")")
                      .get<bool>())
          << place << " of " << evil;
    }
    EXPECT_EQ(CountOf("script"), 2);
    EXPECT_EQ(CountOf("img, svg *:not(path), iframe, object, b:not([dir]), a[href^=javascript]"),
              0);
    EXPECT_EQ(browser().ConsoleMessages(), "") << evil;
  }
}

TEST_F(PageLimits, AScriptThatGotInWouldNotRun) {
  Open(WritePage(Nothing()));
  browser().Run(
      "const script = document.createElement('script');"
      "script.textContent = \"document.title = 'evil'\";"
      "document.body.append(script);"
      "document.body.insertAdjacentHTML('beforeend', '<p style=\"color: red\">');");
  EXPECT_EQ(browser().Value("document.title"), "pda");
  const std::string complaints = browser().ConsoleMessages();
  EXPECT_THAT(complaints, HasSubstr("Content Security Policy"));
  EXPECT_THAT(complaints, HasSubstr("script-src"));
  EXPECT_THAT(complaints, HasSubstr("style-src"));
}

TEST_F(PageLimits, NamesRunFromRightToLeftWhereTheyDo) {
  Contents contents = Nothing();
  for (const char* name : {"\xD8\xA3\xD8\xAD\xD9\x85\xD8\xAF", "\xD7\x93\xD7\x95\xD7\x93", "Ada"})
    contents.people.emplace_back()[ContactField::kFirstName] = name;
  Open(WritePage(contents), "people");
  const std::string directions = browser().Value(
      "[...document.querySelectorAll('.row .first')].map((node) => node.textContent + ' ' + "
      "getComputedStyle(node).direction).sort().join(', ')");
  EXPECT_EQ(directions,
            "Ada ltr, \xD7\x93\xD7\x95\xD7\x93 rtl, \xD8\xA3\xD8\xAD\xD9\x85\xD8\xAF rtl");
}

// Opens and scrolls with all of it; how fast is printed.
TEST_F(PageLimits, FiftyThousandMessagesAndTenThousandPeople) {
  constexpr int kPeople = 10'000;
  constexpr int kMessages = 50'000;
  Contents contents = Nothing();
  for (int i = 0; i < kPeople; ++i) {
    formats::Contact& contact = contents.people.emplace_back();
    contact[ContactField::kFirstName] = fmt::format("First{}", i % 97);
    contact[ContactField::kLastName] = fmt::format("Last{:05}", i);
    contact[ContactField::kCompanyName] = fmt::format("Company {}", i % 501);
    contact[ContactField::kMobileTelephoneNumber] = fmt::format("+49170{:07}", i);
    contact[ContactField::kEmail1Address] = fmt::format("someone{}@example.org", i);
    contact[ContactField::kHomeAddressStreet] = fmt::format("Street {}", i % 77);
    contact.categories = {fmt::format("Category {}", i % 12)};
  }
  for (int i = 0; i < kMessages; ++i) {
    // Half of them are one long thread.
    const int person = i % 2 == 0 ? 0 : i % 300;
    contents.messages.push_back(
        Message(fmt::format("+49170{:07}", person), i * 7,
                fmt::format("Message {}: shall we meet at the usual place, or later?", i)));
    contents.messages.back().flags.fromMe = false;
  }
  const std::string file = WritePage(contents);
  Open(file, "people");
  browser().Await("document.querySelector('.row')");
  const double opened =
      browser().Value("performance.getEntriesByType('navigation')[0].domContentLoadedEventEnd");
  EXPECT_EQ(browser().Value("document.getElementById('status').textContent"), "10,000 people");

  // The longest time between two frames while a list goes by.
  const auto scroll = [](const std::string& selector, int step) -> double {
    browser().Run(
        "window.longest = undefined; const node = document.querySelector(`" + selector +
        "`); let frames = 0, before = performance.now(), longest = 0;"
        "const next = (now) => { longest = Math.max(longest, now - before); before = now;"
        "  node.scrollTop += " +
        std::to_string(step) +
        "; if (++frames < 60) requestAnimationFrame(next); else window.longest = longest; };"
        "requestAnimationFrame((now) => { before = now; requestAnimationFrame(next); });");
    browser().Await("window.longest !== undefined");
    return browser().Value("window.longest");
  };
  const double people = scroll("[role=listbox]", 2'000);
  EXPECT_LT(CountOf("[role=option]"), 60);
  Search("last09999");
  browser().Await("document.getElementById('status').textContent === '1 person'");

  browser().Press(kEscapeKey);
  GoTo("messages/1");  // the long one
  browser().Await("document.querySelector('.bubble')");
  EXPECT_LT(CountOf(".bubble"), 1'000);
  const double talk = scroll(".talks", -400);
  EXPECT_GT(CountOf(".bubble"), 120);
  Click(".segments button");
  EXPECT_THAT(Texts(".talk:first-of-type .bubble:first-child p"), HasSubstr("[Message 0:"));
  Search("49999");
  browser().Await("document.getElementById('status').textContent === '1 conversation'");
  fmt::print(
      "{} people, {} messages, {} MB: open after {:.0f} ms; longest frame of 60: people "
      "{:.0f} ms, messages {:.0f} ms\n",
      kPeople, kMessages, std::filesystem::file_size(file) / 1'000'000, opened, people, talk);
}

}  // namespace
}  // namespace corvane::testing
