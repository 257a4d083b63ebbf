#include "handheld/tool/show_messages.h"

#include <fmt/core.h>

#include <algorithm>
#include <chrono>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "common/calendar/wall_time.h"
#include "common/formats/items/message_places.h"
#include "common/formats/json/message_json.h"
#include "common/page/json.h"
#include "common/page/threads.h"
#include "common/text/text.h"
#include "handheld/tool/day_entries.h"
#include "handheld/tool/handheld_facts.h"
#include "handheld/tool/records.h"
#include "handheld/tool/table.h"

namespace tool {
namespace {

using formats::Contact;
using formats::MessageParty;
using formats::MessageType;
using formats::TextMessage;
using page::Json;
using page::Thread;
using page::ThreadMessage;

// Records, each with its number.
template <typename Record>
struct Numbered {
  explicit Numbered(Session& session) {
    ForEachRecord<Record>(session, [this](std::int64_t id, const Record& record) {
      records.push_back(record);
      ids.push_back(id);
    });
  }
  std::int64_t IdOf(const Record& record) const {
    return ids[static_cast<std::size_t>(&record - records.data())];
  }

  std::vector<Record> records;
  std::vector<std::int64_t> ids;
};

struct Correspondence {
  explicit Correspondence(Session& session)
      : people(session),
        messages(session),
        threads(page::ThreadsOf(
            messages.records, session.Zone(),
            page::Directory(people.records, phone::PhoneNumbers(CountryOf(session.handheld()))))) {}

  Numbered<Contact> people;
  Numbered<TextMessage> messages;
  std::vector<Thread> threads;
};

formats::local_seconds LocalTimeOf(std::int64_t seconds) {
  return formats::local_seconds(std::chrono::seconds(seconds));
}

std::string NameOfParty(const MessageParty& party) {
  if (party.name.empty() || party.name == party.address) return party.address;
  return party.address.empty() ? party.name : party.name + " (" + party.address + ")";
}

std::string NamesOf(const Thread& thread, const std::vector<Contact>& people) {
  std::string names;
  const auto add = [&](const std::string& name) {
    if (!name.empty()) names += (names.empty() ? "" : ", ") + text::OnOneLine(name);
  };
  for (const int place : thread.people)
    add(page::FullName(people[static_cast<std::size_t>(place)]));
  for (const MessageParty& party : thread.parties) add(NameOfParty(party));
  return names.empty() ? "(nobody)" : names;
}

std::string StateOf(const TextMessage& message) {
  std::string words;
  const auto add = [&](bool is, const char* word) {
    if (is) words += (words.empty() ? "" : ", ") + std::string(word);
  };
  const MessageType type = TypeOf(message.folder, message.flags);
  add(type == MessageType::kDraft, "draft");
  add(type == MessageType::kOutbox, "on its way");
  add(type == MessageType::kFailed, "not sent");
  add(!message.flags.fromMe && !message.flags.read, "unread");
  add(message.flags.hasAttachment, "with an attachment");
  return words.empty() ? words : " [" + words + "]";
}

std::string Indented(const std::string& text, std::string_view indentation) {
  std::string indented;
  for (const char c : text) {
    indented += c;
    if (c == '\n') indented += indentation;
  }
  return indented;
}

void PrintMessage(const ThreadMessage& each, const Report& report) {
  const TextMessage& message = *each.message;
  const std::string time = each.time ? ClockTime(LocalTimeOf(*each.time)) : "     ";
  const std::string shown = text::Shown(text::NormalizeLineBreaks(message.text));
  fmt::print(report.out, "    {}  {}{}{}\n", time, message.flags.fromMe ? "I: " : "",
             Indented(shown, "           "), StateOf(message));
}

void PrintThread(const Thread& thread, const std::vector<Contact>& people, const Report& report) {
  fmt::print(report.out, "{}\n", Heading(NamesOf(thread, people), report));
  std::optional<std::string> before;
  for (const ThreadMessage& each : thread.messages) {
    std::string day = "Without a time";
    if (each.time) day = LongDay(formats::DayOf(LocalTimeOf(*each.time)));
    if (day != before) fmt::print(report.out, "  {}\n", day);
    before = day;
    PrintMessage(each, report);
  }
  fmt::print(report.out, "\n");
}

std::string JsonOf(const Thread& thread, const Correspondence& all) {
  Json people = Json::array();
  for (const int place : thread.people) {
    const Contact& person = all.people.records[static_cast<std::size_t>(place)];
    people.push_back(
        {{"oid", all.people.IdOf(person)}, {"name", page::Clean(page::FullName(person))}});
  }
  Json others = Json::array();
  for (const MessageParty& party : thread.parties) {
    Json other = Json::object();
    page::AddText(other, "address", party.address);
    page::AddText(other, "name", party.name);
    others.push_back(std::move(other));
  }
  std::string line =
      fmt::format(R"({{"people":{},"others":{},"messages":[)", people.dump(), others.dump());
  const char* before = "";
  for (const ThreadMessage& each : thread.messages) {
    line += before;
    line += MessageToJson(*each.message, std::to_string(all.messages.IdOf(*each.message)));
    before = ",";
  }
  return line + "]}";
}

}  // namespace

Outcome ShowThreads(Session& session, bool json, const Report& report) {
  const Correspondence all(session);
  for (const Thread& thread : all.threads) {
    if (json)
      fmt::print(report.out, "{}\n", JsonOf(thread, all));
    else
      PrintThread(thread, all.people.records, report);
  }
  if (!json)
    fmt::print(report.out, "{}{}\n", Counted(all.messages.records.size(), "message"),
               all.threads.empty() ? "" : " in " + Counted(all.threads.size(), "thread"));
  return Outcome::kDone;
}

}  // namespace tool
