#include "handheld/tool/handheld_commands.h"

#include <fmt/core.h>

#include <charconv>
#include <limits>
#include <tuple>

#include "common/text/unicode.h"
#include "handheld/base/settings.h"
#include "handheld/clock/zone.h"
#include "handheld/outlook/outlook_app.h"
#include "handheld/store/item_row.h"
#include "handheld/store/store_check.h"
#include "handheld/system/language.h"
#include "handheld/tool/card_commands.h"
#include "handheld/tool/records.h"
#include "handheld/tool/result.h"
#include "handheld/tool/status_error.h"
#include "platform/clock.h"

namespace tool {
namespace {

using ce::host::Handheld;
namespace setting = ce::host::setting;

std::uint32_t ParseNumber(const std::string& key, const std::string& text) {
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size())
    throw UsageError(fmt::format("{}: \"{}\" is no number from 0 to 4294967295", key, text));
  return number;
}

std::uint32_t ParseFirstOid(std::uint32_t number) {
  if (number == 0) throw UsageError("first-oid: 0 names no item; identifiers start at 1");
  return number;
}

ce::LANGID ParseLanguage(const std::string& tag) {
  if (const auto* language = ce::host::FindLanguage(tag)) return language->id;
  throw UsageError(fmt::format("language: \"{}\" is no tag that is known, such as de-DE", tag));
}

std::pair<std::uint32_t, std::uint32_t> ParseVersion(const std::string& text) {
  const std::size_t dot = text.find('.');
  if (dot == std::string::npos)
    throw UsageError(fmt::format("os-version: \"{}\" is not MAJOR.MINOR", text));
  return {ParseNumber("os-version", text.substr(0, dot)),
          ParseNumber("os-version", text.substr(dot + 1))};
}

std::string TagOf(ce::LANGID id) {
  const auto* language = ce::host::FindLanguage(id);
  return language ? std::string(language->tag) : fmt::format("0x{:04X}", id);
}

std::string ParseZone(const std::string& name) {
  if (!ce::host::ValidZoneName(name) || !ce::host::ReadZone(name))
    throw UsageError(
        fmt::format("zone: \"{}\" is not in the zone database; try Europe/Berlin", name));
  return name;
}

void SetLanguage(Session& session, const std::string&, const std::string& value) {
  session.handheld().Set(setting::kLanguage, ParseLanguage(value));
}
void SetOsVersion(Session& session, const std::string&, const std::string& value) {
  const auto [major, minor] = ParseVersion(value);
  session.handheld().Set(setting::kOsMajor, major);
  session.handheld().Set(setting::kOsMinor, minor);
}
void SetZone(Session& session, const std::string&, const std::string& value) {
  session.handheld().Set(setting::kZone, *text::FromUtf8(ParseZone(value)));
}
void SetOwner(Session& session, const std::string&, const std::string& value) {
  const auto owner = text::FromUtf8(value);
  if (!owner) throw UsageError("owner: the text is no UTF-8");
  session.handheld().Set(setting::kOwner, *owner);
}
template <const char16_t* Name>
void SetSwitch(Session& session, const std::string& key, const std::string& value) {
  if (value != "on" && value != "off")
    throw UsageError(fmt::format("{}: \"{}\" is neither on nor off", key, value));
  session.handheld().Set(Name, value == "on" ? 1 : 0);
}
template <const char16_t* Name>
void SetNumber(Session& session, const std::string& key, const std::string& value) {
  session.handheld().Set(Name, ParseNumber(key, value));
}

template <const char16_t* Name>
void SetMinutes(Session& session, const std::string& key, const std::string& value) {
  const std::uint32_t minutes = ParseNumber(key, value);
  if (minutes > std::numeric_limits<ce::LONG>::max())
    throw UsageError(fmt::format("{}: {} minutes are too many", key, value));
  session.handheld().Set(Name, minutes);
}

void SetFirstOid(Session& session, const std::string&, const std::string& value) {
  const std::uint32_t first = ParseFirstOid(ParseNumber("first-oid", value));
  ce::host::SessionPtr open;
  Check(ce::host::SessionOf(session.Outlook().get(), open), "the store");
  const ce::HRESULT status = ce::host::StartOidsAt(*open->store(), first);
  if (status == ce::E_INVALIDARG)
    throw UsageError(
        fmt::format("first-oid: identifiers up to {} or beyond have been given", value));
  Check(status, "the store");
  session.handheld().Set(setting::kFirstOid, first);
}

struct SettingRow {
  const char* key;
  const char* values;
  void (*set)(Session&, const std::string& key, const std::string& value);
};
constexpr SettingRow kSettings[] = {
    {"language", "a tag such as de-DE", SetLanguage},
    {"os-version", "MAJOR.MINOR", SetOsVersion},
    {"zone", "a name of the zone database, such as Europe/Berlin", SetZone},
    {"first-oid", "where the identifiers of new items go on; none is given twice", SetFirstOid},
    {"owner", "text", SetOwner},
    {"yomi", "on or off: whether contacts have phonetic names", SetSwitch<setting::kYomiFields>},
    {"phone", "on or off: whether it has a telephone, and so a call log",
     SetSwitch<setting::kPhone>},
    {"ink", "on or off: whether it has the control that reads ink notes",
     SetSwitch<setting::kRichInk>},
    {"peer-timeout", "seconds after which a silent peer counts as gone",
     SetNumber<setting::kPeerTimeout>},
    {"request-timeout", "seconds that a peer may take to send its whole request",
     SetNumber<setting::kRequestTimeout>},
    {"max-block", "bytes: the largest block of memory, and so of an upload's chunk",
     SetNumber<setting::kMaxBlock>},
    {"max-contact-text", "characters of a contact's field", SetNumber<setting::kMaxContactText>},
    {"max-subject", "characters of the subject of an appointment or a task",
     SetNumber<setting::kMaxSubject>},
    {"max-calendar-text", "characters of another field of an appointment or a task",
     SetNumber<setting::kMaxCalendarText>},
    {"max-body", "bytes of a note", SetNumber<setting::kMaxBody>},
    {"reminder", "on or off: whether a new appointment reminds", SetSwitch<setting::kReminderSet>},
    {"reminder-minutes", "minutes before its start at which a new appointment reminds",
     SetMinutes<setting::kReminderMinutes>},
};

struct Facts {
  std::string directory, language, zone, owner, clock;
  std::uint32_t osMajor = 0, osMinor = 0;
  std::size_t contacts = 0, appointments = 0, tasks = 0, messages = 0, calls = 0;
  bool phone = true, ink = true;
  std::vector<Card> cards;
  std::uintmax_t storeBytes = 0;
};

Json CardsAsJson(const std::vector<Card>& cards) {
  auto array = Json::array();
  for (const Card& card : cards) array.push_back(AsJson(card));
  return array;
}

std::string CardNames(const std::vector<Card>& cards) {
  std::string names;
  for (const Card& card : cards)
    names += (names.empty() ? "" : ", ") + card.name + (card.present ? "" : " (taken out)");
  return names.empty() ? "-" : names;
}

Facts FactsOf(Session& session) {
  Handheld& handheld = session.handheld();
  Facts facts;
  facts.directory = handheld.directory().string();
  facts.language =
      TagOf(static_cast<ce::LANGID>(handheld.Number(setting::kLanguage, ce::host::kLangEnglishUs)));
  facts.zone = text::ToUtf8Lossy(handheld.Text(setting::kZone, u"UTC"));
  facts.owner = text::ToUtf8Lossy(handheld.Text(setting::kOwner, u""));
  facts.osMajor = handheld.Number(setting::kOsMajor, 5);
  facts.osMinor = handheld.Number(setting::kOsMinor, 2);
  ce::SYSTEMTIME now{};
  ce::GetSystemTime(&now);
  facts.clock = fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}Z", now.wYear, now.wMonth, now.wDay,
                            now.wHour, now.wMinute, now.wSecond);
  facts.contacts = CountRecords<formats::Contact>(session);
  facts.appointments = CountRecords<formats::Appointment>(session);
  facts.tasks = CountRecords<formats::Task>(session);
  facts.messages = CountRecords<formats::TextMessage>(session);
  facts.calls = CountRecords<formats::Call>(session);
  facts.phone = handheld.Number(setting::kPhone, 1) != 0;
  facts.ink = handheld.Number(setting::kRichInk, 1) != 0;
  facts.cards = ListCards(handheld);
  std::error_code none;
  facts.storeBytes = std::filesystem::file_size(handheld.storePath(), none);
  return facts;
}

}  // namespace

Outcome InitHandheld(const std::filesystem::path& directory, const InitOptions& options,
                     const Report& report) {
  ce::host::HandheldSettings settings;
  settings.language =
      options.language ? ParseLanguage(*options.language) : ce::host::HostLanguage();
  settings.zone = options.zone ? ParseZone(*options.zone) : ce::host::HostZoneName();
  if (options.osVersion)
    std::tie(settings.osMajor, settings.osMinor) = ParseVersion(*options.osVersion);
  if (options.firstOid) settings.firstOid = ParseFirstOid(*options.firstOid);
  Handheld::Create(directory, settings);
  const std::string version = fmt::format("{}.{}", settings.osMajor, settings.osMinor);
  const std::string language = TagOf(settings.language);
  TellResult(report,
             {{"directory", directory.string()},
              {"language", language},
              {"osVersion", version},
              {"zone", settings.zone}},
             "{}: a handheld, {}, {}, version {}\n", directory.string(), language, settings.zone,
             version);
  return Outcome::kDone;
}

std::vector<SettingHelp> SettingKeys() {
  std::vector<SettingHelp> keys;
  for (const SettingRow& row : kSettings) keys.push_back({row.key, row.values});
  return keys;
}

Outcome SetSetting(Session& session, const std::string& key, const std::string& value,
                   const Report& report) {
  for (const SettingRow& row : kSettings) {
    if (key != row.key) continue;
    row.set(session, key, value);
    TellResult(report, {{"key", key}, {"value", value}}, "{} = {}\n", key, value);
    return Outcome::kDone;
  }
  std::string known;
  for (const SettingRow& row : kSettings) known += fmt::format(" {}", row.key);
  throw UsageError(fmt::format("there is no setting \"{}\"; there are:{}", key, known));
}

Outcome ShowHandheld(Session& session, const Report& report) {
  const Facts facts = FactsOf(session);
  if (report.json) {
    TellJson(report, {{"directory", facts.directory},
                      {"language", facts.language},
                      {"osVersion", fmt::format("{}.{}", facts.osMajor, facts.osMinor)},
                      {"zone", facts.zone},
                      {"owner", facts.owner},
                      {"clock", facts.clock},
                      {"contacts", facts.contacts},
                      {"appointments", facts.appointments},
                      {"tasks", facts.tasks},
                      {"messages", facts.messages},
                      {"calls", facts.calls},
                      {"phone", facts.phone},
                      {"ink", facts.ink},
                      {"cards", CardsAsJson(facts.cards)},
                      {"storeBytes", facts.storeBytes}});
    return Outcome::kDone;
  }
  Tell(report.out,
       "Directory   {}\nLanguage    {}\nVersion     {}.{}\nZone        {}\nOwner       {}\n"
       "Clock       {}\nContacts    {}\nCalendar    {}\nTasks       {}\nMessages    {}\n"
       "Calls       {}\nPhone       {}\nInk         {}\nCards       {}\nStore       {} bytes\n",
       facts.directory, facts.language, facts.osMajor, facts.osMinor, facts.zone,
       facts.owner.empty() ? "-" : facts.owner, facts.clock, facts.contacts, facts.appointments,
       facts.tasks, facts.messages, facts.calls, facts.phone ? "on" : "off",
       facts.ink ? "on" : "off", CardNames(facts.cards), facts.storeBytes);
  return Outcome::kDone;
}

Outcome CheckHandheld(Session& session, const Report& report) {
  const std::vector<std::string> problems = ce::host::CheckStore(session.handheld());
  for (const std::string& problem : problems) Tell(report.err, "corvane-device: {}\n", problem);
  const bool sound = problems.empty();
  if (sound || report.json)
    TellResult(report, {{"sound", sound}, {"problems", problems}}, "The store is sound.\n");
  return sound ? Outcome::kDone : Outcome::kFailed;
}

}  // namespace tool
