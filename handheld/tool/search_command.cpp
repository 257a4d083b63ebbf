#include "handheld/tool/search_command.h"

#include <fmt/core.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <iterator>
#include <nlohmann/json.hpp>
#include <optional>
#include <string_view>
#include <type_traits>
#include <vector>

#include "common/calendar/wall_time.h"
#include "common/page/directory.h"
#include "common/page/json.h"
#include "common/terminal/width.h"
#include "common/text/search_text.h"
#include "common/text/text.h"
#include "handheld/tool/handheld_facts.h"
#include "handheld/tool/note_texts.h"
#include "handheld/tool/record_json.h"
#include "handheld/tool/records.h"
#include "handheld/tool/table.h"

namespace tool {
namespace {

using formats::Appointment;
using formats::Call;
using formats::Contact;
using formats::MessageParty;
using formats::MessageTime;
using formats::Occurrence;
using formats::Task;
using formats::TextMessage;
using Texts = std::vector<std::string>;

// What a found text is shown with at most.
constexpr std::size_t kTitleWidth = 44;
constexpr std::size_t kPartWidth = 60;

std::string Excerpt(std::string_view text) {
  return terminal::Cut(text::OnOneLine(text), kPartWidth);
}

std::string Digits(const std::string& number) {
  std::string digits;
  std::ranges::copy_if(number, std::back_inserter(digits),
                       [](char c) { return (c >= '0' && c <= '9') || c == '+'; });
  return digits;
}

// The line from a little in front of the first of the words on, which is in it.
std::string PartFrom(const text::SearchWords& words, std::string_view line) {
  constexpr std::size_t kWordsBefore = 3;
  std::vector<std::size_t> begins = {0};
  if (line.size() > kPartWidth)
    for (std::size_t at = line.find(' '); at != line.npos; at = line.find(' ', at + 1)) {
      if (words.HasOneIn(text::SearchForm(line.substr(begins.back(), at - begins.back())))) break;
      begins.push_back(at + 1);
    }
  const std::size_t from = begins[begins.size() - 1 - std::min(begins.size() - 1, kWordsBefore)];
  return (from > 0 ? "…" : "") + Excerpt(line.substr(from));
}

// What shows why texts were found: of the first line with one of the words.
std::string PartWith(const text::SearchWords& words, const Texts& texts) {
  for (const std::string& text : texts) {
    if (!words.HasOneIn(text::SearchForm(text))) continue;
    for (std::size_t at = 0; at < text.size();) {
      const std::size_t end = std::min(text.find_first_of("\r\n", at), text.size());
      const std::string_view line = std::string_view(text).substr(at, end - at);
      if (words.HasOneIn(text::SearchForm(line))) return PartFrom(words, line);
      at = end + 1;
    }
  }
  return {};
}

class SearchRun {
 public:
  SearchRun(Session& session, const std::string& query, bool json, const Report& report)
      : session_(session),
        words_(query),
        json_(json),
        report_(report),
        zone_(session.Zone()),
        numbers_(CountryOf(session.handheld())) {
    if (words_.empty()) throw UsageError("a text to search for has a letter or a digit");
    ForEachRecord<Contact>(
        session, [this](std::int64_t, const Contact& contact) { people_.push_back(contact); });
    directory_.emplace(people_, numbers_);
  }

  template <typename Record>
  void SearchKind() {
    ForEachRecord<Record>(session_, [this](std::int64_t id, const Record& record) {
      const Texts texts = TextsOf(record);
      if (!Fits(texts)) return;
      if (json_) return PrintJsonLine(kRecordName<Record>, ToJson(record, id));
      const std::string title = TitleOf(record);
      std::string part = PartOf(title, texts);
      if constexpr (std::is_same_v<Record, TextMessage>)
        if (part.empty()) part = Excerpt(record.text);
      PrintLine(kRecordName<Record>, std::to_string(id), title, part);
    });
  }

  void SearchNotes() {
    const auto visit = [this](const std::string& path, const std::string& text) {
      if (!Fits({path, text})) return;
      if (json_)
        PrintJsonLine("note",
                      page::Json{{"path", page::Clean(path)}, {"text", page::Clean(text)}}.dump());
      else
        PrintLine("note", "", path, PartOf(path, {text}));
    };
    ForEachNote(session_.handheld().filesRoot(), visit, [this](const std::string& problem) {
      isWhole_ = false;
      Tell(report_.err, "corvane-device: {}\n", problem);
    });
  }

  Outcome Finish() const {
    if (!json_) fmt::print(report_.out, "{} found\n", found_);
    if (!isWhole_) return Outcome::kPartlyDone;
    return found_ > 0 ? Outcome::kDone : Outcome::kFailed;
  }

 private:
  bool Fits(const Texts& texts) {
    std::string all;
    for (const std::string& text : texts) all += text + '\n';
    const bool fits = words_.AreIn(text::SearchForm(all));
    found_ += fits;
    return fits;
  }

  void PrintJsonLine(std::string_view kind, const std::string& object) const {
    fmt::print(report_.out, "{{\"kind\":\"{}\",{}\n", kind, object.substr(1));
  }

  // With what the title does not say.
  std::string PartOf(const std::string& title, const Texts& texts) const {
    return PartWith(words_.Without(text::SearchForm(title)), texts);
  }

  void PrintLine(std::string_view kind, const std::string& number, const std::string& title,
                 const std::string& part) const {
    fmt::print(report_.out, "{:<11} {:>6}  {}{}{}\n", kind, number,
               text::OnOneLine(Column(title, kTitleWidth)), part.empty() ? "" : " | ", part);
  }

  // What the contacts call whoever has the address.
  std::string NameFor(const std::string& address) const {
    const int place = directory_->Find(directory_->KeyOf(address));
    return place < 0 ? std::string() : page::FullName(people_[static_cast<std::size_t>(place)]);
  }

  Texts TextsOf(const Contact& contact) const {
    Texts texts = {page::FullName(contact)};
    texts.insert(texts.end(), contact.fields.begin(), contact.fields.end());
    texts.insert(texts.end(), contact.categories.begin(), contact.categories.end());
    for (const page::LabelledField& number : page::NumberFields())
      texts.push_back(Digits(contact[number.field]));
    for (const auto& date : {contact.birthday, contact.anniversary})
      if (date) texts.push_back(formats::IsoDate(*date));
    return texts;
  }

  static void AddOccurrence(const Occurrence& occurrence, Texts& texts) {
    texts.insert(texts.end(), {occurrence.subject, occurrence.location, occurrence.body});
  }
  Texts TextsOf(const Appointment& appointment) const {
    Texts texts = appointment.categories;
    AddOccurrence(appointment, texts);
    if (appointment.series)
      for (const formats::ChangedOccurrence& changed : appointment.series->changed)
        AddOccurrence(changed.occurrence, texts);
    return texts;
  }

  Texts TextsOf(const Task& task) const {
    Texts texts = task.categories;
    texts.insert(texts.end(), {task.subject, task.body});
    return texts;
  }

  void AddParty(const MessageParty& party, Texts& texts) const {
    texts.insert(texts.end(),
                 {party.name, NameFor(party.address), party.address, Digits(party.address)});
  }
  Texts TextsOf(const TextMessage& message) const {
    Texts texts = {message.text};
    if (!message.flags.fromMe) AddParty(message.from, texts);
    for (const MessageParty& party : message.to) AddParty(party, texts);
    return texts;
  }

  Texts TextsOf(const Call& call) const {
    return {call.name, NameFor(call.number), call.number, Digits(call.number), call.note};
  }

  std::string TimeText(const std::optional<MessageTime>& time) const {
    if (!time) return "-";
    const auto seconds = std::chrono::floor<std::chrono::seconds>(*time);
    return DayAndTime(zone_.ToLocal(seconds));
  }
  static std::string DayAndTime(formats::local_seconds time) {
    std::string text = formats::IsoDateTime(time).substr(0, 16);
    text[10] = ' ';
    return text;
  }
  std::string NameOf(const MessageParty& party) const {
    if (std::string name = NameFor(party.address); !name.empty()) return name;
    return party.name.empty() ? party.address : party.name;
  }

  std::string TitleOf(const Contact& contact) const { return DisplayName(contact); }
  std::string TitleOf(const Appointment& appointment) const {
    if (!appointment.start) return DisplayName(appointment);
    return (appointment.allDay ? formats::IsoDate(formats::DayOf(*appointment.start))
                               : DayAndTime(*appointment.start)) +
           "  " + DisplayName(appointment);
  }
  std::string TitleOf(const Task& task) const {
    return (task.due ? formats::IsoDate(*task.due) + "  " : "") + DisplayName(task);
  }
  std::string TitleOf(const TextMessage& message) const {
    std::string names = message.flags.fromMe ? "to" : "from " + NameOf(message.from);
    if (message.flags.fromMe)
      for (const MessageParty& party : message.to) names += " " + NameOf(party);
    return TimeText(message.time) + "  " + names;
  }
  std::string TitleOf(const Call& call) const {
    return TimeText(call.start) + (call.outgoing ? "  to " : "  from ") +
           NameOf({call.number, call.name});
  }

  Session& session_;
  const text::SearchWords words_;
  const bool json_;
  const Report report_;
  const calendar::Zone zone_;
  const phone::PhoneNumbers numbers_;
  std::vector<Contact> people_;
  std::optional<page::Directory> directory_;
  std::size_t found_ = 0;
  bool isWhole_ = true;
};

}  // namespace

Outcome Search(Session& session, const std::string& text, bool json, const Report& report) {
  SearchRun run(session, text, json, report);
  run.SearchKind<Contact>();
  run.SearchKind<Appointment>();
  run.SearchKind<Task>();
  run.SearchKind<TextMessage>();
  run.SearchKind<Call>();
  run.SearchNotes();
  return run.Finish();
}

}  // namespace tool
