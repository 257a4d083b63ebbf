// corvane-device: makes, fills, shows and maintains a virtual handheld.
#include <fmt/core.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <functional>
#include <string>
#include <type_traits>
#include <vector>

#include "common/command_line/description.h"
#include "common/command_line/paging.h"
#include "common/command_line/run.h"
#include "common/files/standard_streams.h"
#include "common/terminal/pager.h"
#include "common/terminal/screen.h"
#include "handheld/tool/backup_commands.h"
#include "handheld/tool/card_commands.h"
#include "handheld/tool/chosen_records.h"
#include "handheld/tool/clock_commands.h"
#include "handheld/tool/export_records.h"
#include "handheld/tool/handheld_commands.h"
#include "handheld/tool/import_files.h"
#include "handheld/tool/note_commands.h"
#include "handheld/tool/page_command.h"
#include "handheld/tool/records.h"
#include "handheld/tool/registry_commands.h"
#include "handheld/tool/remove_command.h"
#include "handheld/tool/repair_command.h"
#include "handheld/tool/search_command.h"
#include "handheld/tool/session.h"
#include "handheld/tool/show_calendar.h"
#include "handheld/tool/show_messages.h"
#include "handheld/tool/show_records.h"

namespace {

using tool::Outcome;
using tool::Report;
using tool::Session;
using tool::UsageError;

constexpr int kExitUsage = 2;

// What the command line asks for; filled in by the options of the chosen command.
struct Arguments {
  std::string directory;
  tool::InitOptions init;
  std::string key, value;
  bool json = false, quiet = false, verbose = false;
  bool write = false, list = false, birthdays = false;
  tool::CalendarChoice days;
  std::string kind;
  std::vector<std::filesystem::path> files;
  tool::ImportOptions import;
  tool::ChosenRecords chosen;
  std::optional<std::filesystem::path> output;
  std::string vcardVersion = "3.0";
  std::optional<std::string> format;
  formats::Overflow overflow = formats::Overflow::kLeftOut;  // of an export
  tool::RemoveCommand remove;
  std::string verb = "show";
  std::optional<std::string> name, typedValue;
  std::string time, text;
  std::string file, target;
  std::optional<std::string> verified;
};

using Command = std::function<Outcome(const Report&)>;

// `run` takes the handheld in use, if it is to be there, and the report.
template <typename Run>
CLI::App* AddCommand(CLI::App& app, const char* name, const char* description, Arguments& a,
                     Command& chosen, Run run, tool::Use use = tool::Use::kChange) {
  CLI::App* command = app.add_subcommand(name, description);
  command->add_option("DIR", a.directory, "The handheld's directory")->required();
  Command whole;
  if constexpr (std::is_invocable_v<Run, Session&, const Report&>) {
    whole = [&a, run, use](const Report& report) {
      Session session(a.directory, use);
      return run(session, report);
    };
  } else {
    whole = run;
  }
  command->callback([&chosen, whole] { chosen = whole; });
  return command;
}

void AddHandheldCommands(CLI::App& app, Arguments& a, Command& chosen) {
  auto* init = AddCommand(app, "init", "Make a handheld", a, chosen, [&](const Report& report) {
    return tool::InitHandheld(a.directory, a.init, report);
  });
  init->add_option("--language", a.init.language, "Its language (default: this computer's)")
      ->type_name("TAG");
  init->add_option("--os-version", a.init.osVersion, "Its system's version (default: 5.2)")
      ->type_name("MAJOR.MINOR");
  init->add_option("--zone", a.init.zone, "Its time zone (default: this computer's)")
      ->type_name("NAME");
  init->add_option("--first-oid", a.init.firstOid, "Its first object identifier (default: 1)")
      ->type_name("N");

  auto* set =
      AddCommand(app, "set", "Change a setting", a, chosen, [&](auto& session, auto& report) {
        return tool::SetSetting(session, a.key, a.value, report);
      });
  set->add_option("KEY", a.key, "The setting")->required();
  set->add_option("VALUE", a.value, "Its new value")->required();
  std::string keys = "Settings:\n";
  for (const auto& [key, values] : tool::SettingKeys())
    keys += fmt::format("  {:<18}{}\n", key, values);
  set->footer(keys);

  command_line::AddPaging(
      *AddCommand(app, "info", "Say what it is", a, chosen, tool::ShowHandheld, tool::Use::kLook));
  AddCommand(app, "check", "Look for damage in the store", a, chosen, tool::CheckHandheld,
             tool::Use::kLook);

  auto* repair = AddCommand(
      app, "repair", "Say what can be saved of a damaged store", a, chosen,
      [&](auto& session, auto& report) { return tool::Repair(session, a.write, report); });
  repair->add_flag("--write", a.write,
                   "Put what can be saved in the store's place; the damaged one stays beside it");
}

CLI::Option* AddKind(CLI::App& command, Arguments& a) {
  return command.add_option("KIND", a.kind, "contacts, calendar, tasks, messages or calls")
      ->required()
      ->check(
          CLI::IsMember({"contacts", "calendar", "appointments", "tasks", "messages", "calls"}));
}

bool IsOfTelephone(const std::string& kind) {
  return kind == "messages" || kind == "calls";
}

// Runs it with an empty record of the kind, which says by its type which one it is.
template <typename Run>
Outcome WithRecord(const std::string& kind, Run run) {
  if (kind == "contacts") return run(formats::Contact());
  if (kind == "tasks") return run(formats::Task());
  if (kind == "messages") return run(formats::TextMessage());
  if (kind == "calls") return run(formats::Call());
  return run(formats::Appointment());
}

// Runs it with what is chosen, if any of it is there.
template <typename Record, typename Run>
Outcome WithChosen(Session& session, const Arguments& a, const Report& report, Run run) {
  if (a.chosen.all()) return run();
  const Outcome found = tool::ChooseRecords<Record>(session, a.chosen, report);
  if (found == Outcome::kFailed) return found;
  const Outcome done = run();
  return done == Outcome::kDone ? found : done;
}

void AddChosen(CLI::App& command, Arguments& a) {
  command.add_option("--oid", a.chosen.numbers, "Only what has this number")->type_name("N");
  command.add_option("--uid", a.chosen.uids, "Only the item that other programs know by this UID")
      ->type_name("UID");
}

Outcome RunExport(const Arguments& a, const Report& report) {
  const bool csv = a.format == "csv";
  if (a.format && !(csv ? a.kind == "contacts" || a.kind == "calls" : IsOfTelephone(a.kind)))
    throw UsageError(csv ? "--format csv is of contacts and calls only"
                         : "--format " + *a.format + " is of messages and calls only");
  using formats::VCardVersion;
  const tool::ExportOptions options = {
      .file = a.output,
      .vcardVersion = a.vcardVersion == "4.0" ? VCardVersion::k40 : VCardVersion::k30,
      .jsonLines = a.format == "json",
      .csv = csv,
      .overflow = a.overflow};
  Session session(a.directory, tool::Use::kLook);
  if (a.birthdays) {
    return WithChosen<formats::Contact>(
        session, a, report, [&] { return tool::ExportBirthdays(session, options, report); });
  }
  return WithRecord(a.kind, [&](auto record) {
    return WithChosen<decltype(record)>(session, a, report, [&] {
      return tool::ExportRecords<decltype(record)>(session, options, report);
    });
  });
}

void AddOverflow(CLI::App& command, formats::Overflow& overflow, const char* help) {
  command
      .add_option_function<std::string>(
          "--overflow", [&](const std::string&) { overflow = formats::Overflow::kNote; }, help)
      ->check(CLI::IsMember({"note"}));
}

void AddImport(CLI::App& app, Arguments& a, Command& chosen) {
  auto* import = AddCommand(app, "import", "Put vCards, iCalendar files, messages and calls on it",
                            a, chosen, [&](auto& session, auto& report) {
                              return tool::ImportFiles(session, a.files, a.import, report);
                            });
  import
      ->add_option("FILE", a.files,
                   "vCard (2.1, 3.0, 4.0), iCalendar, backups of messages and calls (XML), "
                   "messages and calls as lines of JSON; - for the standard input")
      ->required();
  import->add_flag("--dry-run", a.import.dryRun, "Only say what would be done");
  import->add_flag("--duplicate", a.import.duplicate, "Add what was imported before once more");
  AddOverflow(
      *import, a.import.overflow,
      "Keep numbers, addresses, nicknames and labels that a contact has no field for: at the "
      "end of its note");
}

// "-" is the standard output, which is meant without the option, too.
void AddOutput(CLI::App& command, Arguments& a, const char* help) {
  const auto set = [&a](const std::string& file) {
    if (!files::IsStandard(file)) a.output = file;
  };
  command.add_option_function<std::string>("-o,--output", set, help)->type_name("FILE");
}

void AddExport(CLI::App& app, Arguments& a, Command& chosen) {
  auto* out = AddCommand(app, "export", "Write vCards, iCalendar, messages or calls of it", a,
                         chosen, [&](const Report& report) { return RunExport(a, report); });
  AddKind(*out, a)->required(false);
  out->add_flag("--birthdays", a.birthdays,
                "In place of a kind: the birthdays and anniversaries of contacts as a calendar");
  out->parse_complete_callback([&a] {
    if (a.birthdays != a.kind.empty())
      throw CLI::ValidationError("KIND", "or --birthdays: one of them is wanted");
  });
  AddOutput(*out, a, "The file (default: standard output)");
  out->add_option("--vcard-version", a.vcardVersion, "Of contacts: 3.0 or 4.0")
      ->check(CLI::IsMember({"3.0", "4.0"}))
      ->capture_default_str();
  AddOverflow(*out, a.overflow, "Take what was kept so off the end of the note again");
  out->add_option("--format", a.format,
                  "Of messages and calls: smsbackup (XML) or json (a line each) [smsbackup]; of "
                  "contacts and calls: csv")
      ->check(CLI::IsMember({"smsbackup", "json", "csv"}));
  AddChosen(*out, a);
}

void AddPage(CLI::App& app, Arguments& a, Command& chosen) {
  auto* page = AddCommand(
      app, "page", "Write all of it as one page, to look at in any browser", a, chosen,
      [&](auto& session, auto& report) { return tool::MakePage(session, a.output, report); },
      tool::Use::kLook);
  AddOutput(*page, a, "The HTML file (default: standard output)");
}

bool IsCalendar(const std::string& kind) {
  return kind == "calendar" || kind == "appointments";
}

Outcome RunShow(const Arguments& a, const Report& report) {
  if (a.days.isMade() && (a.list || !a.chosen.all() || !IsCalendar(a.kind)))
    throw UsageError("--month, --week, --from and --to choose days of the calendar");
  Session session(a.directory, tool::Use::kLook);
  const bool list = a.list || !a.chosen.all();
  if (!list && IsCalendar(a.kind)) return tool::ShowCalendar(session, a.days, a.json, report);
  if (!list && a.kind == "messages") return tool::ShowThreads(session, a.json, report);
  return WithRecord(a.kind, [&](auto record) {
    return WithChosen<decltype(record)>(session, a, report, [&] {
      return tool::ShowRecords<decltype(record)>(session, a.json, report);
    });
  });
}

// A day of the calendar's; one that may be missing is today then.
void AddDay(CLI::App& command, const char* name, std::optional<std::string>& day, bool mayBeMissing,
            const char* help) {
  auto* option = command.add_option_function<std::string>(
      name, [&day](const std::string& word) { day = word; }, help);
  option->type_name("DATE");
  if (mayBeMissing) option->expected(0, 1);
}

void AddShow(CLI::App& app, Arguments& a, Command& chosen) {
  auto* show = AddCommand(app, "show", "Show what is on it", a, chosen,
                          [&](const Report& report) { return RunShow(a, report); });
  AddKind(*show, a);
  show->add_flag("--list", a.list,
                 "Of the calendar and messages: a line each, with its number, a series once");
  AddChosen(*show, a);
  AddDay(*show, "--month", a.days.month, true, "Of the calendar: a month, such as 2026-11");
  AddDay(*show, "--week", a.days.week, true, "Of the calendar: the week of a day");
  AddDay(*show, "--from", a.days.from, false, "Of the calendar: its days from there [today]");
  AddDay(*show, "--to", a.days.to, false, "Of the calendar: its days until there [four weeks]");
  command_line::AddPaging(*show);
  show->footer(
      "The calendar is shown day by day, every occurrence of a series in its place, messages by\n"
      "whom they went to and fro with. With --json an occurrence, or such a thread, is a line.");
}

void AddSearch(CLI::App& app, Arguments& a, Command& chosen) {
  auto* search = AddCommand(
      app, "search", "Find what is on it by words of it", a, chosen,
      [&](auto& session, auto& report) { return tool::Search(session, a.text, a.json, report); },
      tool::Use::kLook);
  search->add_option("TEXT", a.text, "Words that are all in it, in any order")->required();
  command_line::AddPaging(*search);
  search->footer(
      "Exit codes: 0 found, 1 nothing found or failed, 2 wrong use, 3 not all was read.");
}

void AddItemCommands(CLI::App& app, Arguments& a, Command& chosen) {
  AddImport(app, a, chosen);
  AddShow(app, a, chosen);
  AddSearch(app, a, chosen);
  AddExport(app, a, chosen);
  AddPage(app, a, chosen);
  auto* remove = AddCommand(
      app, "remove", "Remove what is on it", a, chosen,
      [&](const Report& report) { return tool::RunRemove(a.directory, a.remove, report); });
  remove->add_option("OID", a.remove.what,
                     "Identifiers of contacts, appointments and tasks; or the word messages or "
                     "calls and their numbers");
  remove->add_option("--uid", a.remove.uids, "Items that other programs know by this UID")
      ->type_name("UID");
  remove->parse_complete_callback([&a] {
    if (a.remove.what.empty() && a.remove.uids.empty())
      throw CLI::ValidationError("OID", "or --uid is required");
  });
  remove->add_flag("--all", a.remove.all, "All messages, or all calls");
  remove->add_option("--folder", a.remove.folder, "The messages of this folder, such as /Inbox")
      ->type_name("PATH");
}

Outcome RunRegistry(Session& session, const Arguments& a, const Report& report) {
  if (a.verb == "get") return RegistryGet(session.handheld(), a.key, a.name, report);
  if (a.verb == "delete") return RegistryDelete(session.handheld(), a.key, a.name, report);
  return RegistrySet(session.handheld(), a.key, a.name, a.typedValue, report);
}

Outcome RunClock(Session& session, const Arguments& a, const Report& report) {
  if (a.verb == "set") return SetClock(session, a.time, report);
  if (a.verb == "reset") return ResetClock(session, report);
  return ShowClock(session, report);
}

void AddSystemCommands(CLI::App& app, Arguments& a, Command& chosen) {
  auto* registry =
      AddCommand(app, "registry", "Look at and change its registry", a, chosen,
                 [&](auto& session, auto& report) { return RunRegistry(session, a, report); });
  registry->add_option("VERB", a.verb, "get, set or delete")
      ->required()
      ->check(CLI::IsMember({"get", "set", "delete"}));
  registry->add_option("KEY", a.key, "Such as 'SOFTWARE\\Tenbrook\\Corvane'")->required();
  registry->add_option("NAME", a.name, "A value of the key");
  registry->add_option("VALUE", a.typedValue, "sz:TEXT, dword:NUMBER or binary:HEX")
      ->type_name("TYPE:VALUE");

  auto* clock =
      AddCommand(app, "clock", "Show or set its clock", a, chosen,
                 [&](auto& session, auto& report) { return RunClock(session, a, report); });
  clock->add_option("VERB", a.verb, "set or reset (default: show)")
      ->check(CLI::IsMember({"show", "set", "reset"}));
  clock->add_option("TIME", a.time, "For set: 2008-02-15T13:45:00Z; UTC unless it says otherwise");
  clock->parse_complete_callback([&a] {
    if ((a.verb == "set") != !a.time.empty())
      throw CLI::ValidationError("TIME", "goes with set, and set wants it");
  });
}

Outcome RunCard(Session& session, const Arguments& a, const Report& report) {
  if (a.verb == "add") return AddCard(session, a.key, a.target, report);
  if (a.verb == "remove") return RemoveCard(session, a.key, report);
  return ShowCards(session, report);
}

void AddFileCommands(CLI::App& app, Arguments& a, Command& chosen) {
  auto* note = AddCommand(
      app, "note", "Put a note on it", a, chosen,
      [&](auto& session, auto& report) { return tool::AddNote(session, a.file, a.name, report); });
  note->add_option("VERB", a.verb, "add")->required()->check(CLI::IsMember({"add"}));
  note->add_option("FILE", a.file, "The note's file; - for the standard input")->required();
  note->add_option("NAME", a.name,
                   "Its name in \"\\My Documents\", or its path from a separator on (default: the "
                   "file's name)");

  auto* card = AddCommand(app, "card", "List, add and remove its storage cards", a, chosen,
                          [&](auto& session, auto& report) { return RunCard(session, a, report); });
  card->add_option("VERB", a.verb, "list, add or remove")
      ->required()
      ->check(CLI::IsMember({"list", "add", "remove"}));
  card->add_option("NAME", a.key, "For add and remove: the card's name on the handheld");
  card->add_option("DIRECTORY", a.target, "For add: the directory that is the card");
  card->parse_complete_callback([&a] {
    if ((a.verb == "list") != a.key.empty())
      throw CLI::ValidationError("NAME", "goes with add and remove, and they want it");
    if ((a.verb == "add") != !a.target.empty())
      throw CLI::ValidationError("DIRECTORY", "goes with add, and add wants it");
  });
}

Outcome RunBackup(const Arguments& a, const Report& report) {
  if (a.verified) return tool::VerifyBackup(*a.verified, report);
  Session session(a.directory, tool::Use::kLook);
  return tool::BackUp(session, a.file, report);
}

void AddCopyCommands(CLI::App& app, Arguments& a, Command& chosen) {
  auto* backup = app.add_subcommand("backup", "Put it all into one file, also while it is served");
  backup->add_option("DIR", a.directory, "The handheld's directory");
  backup->add_option("FILE", a.file, "The file (a tar archive); - for the standard output");
  backup->add_option("--verify", a.verified, "Make none, but see whether this one can be restored")
      ->type_name("FILE");
  backup->parse_complete_callback([&a] {
    if (a.verified ? !a.directory.empty() : a.file.empty())
      throw CLI::ValidationError("backup", "it takes DIR and FILE, or --verify and a FILE");
  });
  backup->callback([&] { chosen = [&a](const Report& report) { return RunBackup(a, report); }; });

  auto* restore = app.add_subcommand("restore", "Make a handheld of a backup");
  restore->add_option("FILE", a.file, "The backup; - for the standard input")->required();
  restore->add_option("DIR", a.directory, "Where to, a directory that is empty or not yet there")
      ->required();
  restore->callback([&] {
    chosen = [&a](const Report& report) { return tool::Restore(a.file, a.directory, report); };
  });

  auto* clone = AddCommand(
      app, "clone", "Make a second handheld that is the same", a, chosen,
      [&](auto& session, auto& report) { return tool::Clone(session, a.target, report); },
      tool::Use::kLook);
  clone->add_option("NEW", a.target, "Its directory, one that is empty or not yet there")
      ->required();
}

// How a command says what it has to say: alike for all of them, and last among their options.
void AddReporting(CLI::App& app, Arguments& a) {
  for (CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
    command->add_flag("--json", a.json, "Facts and results as JSON, a line each");
    auto* quiet = command->add_flag("-q,--quiet", a.quiet, "Only errors, and what is asked for");
    command->add_flag("-v,--verbose", a.verbose, "Each notice and each item by itself")
        ->excludes(quiet);
  }
}

Report ReportOf(const Arguments& a) {
  Report report;
  if (a.quiet) report.verbosity = tool::Verbosity::kErrors;
  if (a.verbose) report.verbosity = tool::Verbosity::kAll;
  report.json = a.json;
  report.outIsTerminal = isatty(STDOUT_FILENO) == 1;
  report.errIsTerminal = isatty(STDERR_FILENO) == 1;
  report.emphasises = terminal::ShowsEmphasis(STDOUT_FILENO);
  report.columns = terminal::ColumnsOf(STDOUT_FILENO);
  return report;
}

int ParseAndRun(int argc, char** argv) {
  Arguments arguments;
  Command chosen;
  CLI::App app("Makes, fills, shows and maintains a virtual handheld.", "corvane-device");
  app.set_version_flag("--version", "corvane-device " CORVANE_VERSION);
  command_line::AddDescription(app);
  // Not required: CLI11 would ask for one before it names a word that it does not know.
  app.require_subcommand(0, 1);
  app.footer("Exit codes: 0 all done, 1 failed, 2 wrong use, 3 partly done.");
  AddHandheldCommands(app, arguments, chosen);
  AddItemCommands(app, arguments, chosen);
  AddFileCommands(app, arguments, chosen);
  AddSystemCommands(app, arguments, chosen);
  AddCopyCommands(app, arguments, chosen);
  AddReporting(app, arguments);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : kExitUsage;
  }
  if (!chosen) {
    fmt::print(stderr, "A command is required\nRun with --help for more information.\n");
    return kExitUsage;
  }
  const Report report = ReportOf(arguments);
  const int code = terminal::Paged(command_line::WantsPager(app),
                                   [&] { return static_cast<int>(chosen(report)); });
  if (std::fflush(stdout) != 0 || std::ferror(stdout))
    throw std::runtime_error("the standard output cannot be written");
  return code;
}

int RunTool(int argc, char** argv) {
  try {
    return ParseAndRun(argc, argv);
  } catch (const tool::UsageError& error) {
    tool::Tell(stderr, "corvane-device: {}\n", error.what());
    return kExitUsage;
  }
}

}  // namespace

int main(int argc, char** argv) {
  std::signal(SIGXFSZ, SIG_IGN);  // a file that may not grow is an error like a full disk
  return command_line::RunToTheEnd("corvane-device", [&] { return RunTool(argc, argv); });
}
