// corvane-desktop: the desk's end of the wire.
#include <fmt/format.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <initializer_list>
#include <iostream>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "common/command_line/description.h"
#include "common/command_line/run.h"
#include "common/text/text.h"
#include "desktop/commands/clock_text.h"
#include "desktop/commands/command_options.h"
#include "desktop/commands/commands_agent.h"
#include "desktop/commands/commands_convert.h"
#include "desktop/commands/commands_delete.h"
#include "desktop/commands/commands_device.h"
#include "desktop/commands/commands_page.h"
#include "desktop/commands/commands_pair.h"
#include "desktop/commands/commands_pull.h"
#include "desktop/commands/commands_push.h"
#include "desktop/commands/commands_restore.h"
#include "desktop/commands/commands_sync.h"
#include "desktop/commands/commands_time.h"
#include "desktop/commands/sync_targets.h"
#include "desktop/config/pair.h"
#include "desktop/wire/target.h"
#include "desktop/wire/xml_records.h"

namespace {

using namespace desktop;

// A word behind "pull --format".
struct FormatWord {
  RecordFormat format = RecordFormat::kXml;
  const char* isFor = "";  // said of a kind that cannot be had so
};
const std::map<std::string, FormatWord> kFormatWords = {
    {"vcf", {RecordFormat::kVcf, "vcf is for contacts"}},
    {"ics", {RecordFormat::kIcs, "ics is for the calendar and tasks"}},
    {"xml", {RecordFormat::kXml}},
    {"json", {RecordFormat::kJson}},
    {"csv", {RecordFormat::kCsv, "csv is for contacts and calls"}},
    {"smsbackup", {RecordFormat::kSmsBackup, "smsbackup is for messages and calls"}},
};

// Everything that a command line can say; the command chosen is run once all of it is read.
struct CommandLine {
  ConnectionOptions connection;
  std::optional<FormatWord> format;
  PullOptions pull;
  PushOptions push;
  DeleteOptions remove;
  SyncCommand sync;
  PlaceOptions place;
  PairOptions pair;
  std::set<RecordKind> kinds{std::begin(kPairKinds), std::end(kPairKinds)};
  RestoreCommand restore;
  PageCommand page;
  RecordKind keys = RecordKind::kContacts;
  std::optional<UtcTime> time;
  LoggingLevel logging = LoggingLevel::kOn;
  std::optional<std::string> directory;
  ConvertOptions convert;
  Reporting reporting;
  std::function<int(const Console&)> run;
};

// For a command's callback: it is to run with these options, once all of the line is read.
template <typename Run, typename... Options>
std::function<void()> ToRun(CommandLine& line, Run run, Options&... options) {
  return [&line, run, &options...] {
    line.run = [&line, run, &options...](const Console& console) {
      return run(line.connection, options..., console);
    };
  };
}

// Kind, identifiers and format may stand in any order on the command line.
void BringTogether(const std::optional<FormatWord>& format, PullOptions& pull) {
  if (!WordsOf(pull.kind).isItem && !(pull.oids.empty() && pull.uids.empty())) {
    throw CLI::ValidationError("--oid", "messages and calls are pulled all together");
  }
  if (!format) return;
  if (!IsFormatOf(format->format, pull.kind)) {
    throw CLI::ValidationError("--format", format->isFor);
  }
  pull.format = format->format;
}

void AddPlace(CLI::App& command, CommandLine& line) {
  command.add_option("--pair", line.place.pair, "The handheld of that pair, with its zone")
      ->type_name("NAME");
  AddZone(command, line.place.zone,
          "The handheld's time zone, such as Europe/Berlin; by default that of the pair with its "
          "address, or else this computer's");
}

int PullFrom(const ConnectionOptions& connection, const PlaceOptions& place, PullOptions& pull,
             const Console& console) {
  return RunGuarded(console, [&] {
    ConnectionOptions there = connection;
    const Place chosen = ChoosePlace(place, there);
    pull.zone = chosen.zone;
    pull.zoneIsGuessed = chosen.zoneIsGuessed;
    return Pull(there, pull, console);
  });
}

int PushTo(const ConnectionOptions& connection, const PlaceOptions& place, PushOptions& push,
           const Console& console) {
  return RunGuarded(console, [&] {
    ConnectionOptions there = connection;
    const Place chosen = ChoosePlace(place, there);
    push.zone = chosen.zone;
    push.zoneIsGuessed = chosen.zoneIsGuessed;
    push.country = chosen.country;
    return Push(there, push, console);
  });
}

int WritePairWith(const ConnectionOptions& connection, const PlaceOptions& place, PairOptions& pair,
                  const Console& console) {
  if (place.addressGiven) pair.address = connection.target;
  return SetPair(connection, pair, console);
}

void AddPair(CLI::App& app, CommandLine& line) {
  CLI::App& command = *app.add_subcommand(
      "pair",
      "A folder and a handheld under a name, with --to for its address; without options "
      "what is known of it, without a name of all");
  command.add_option("name", line.pair.name, "Of letters, digits, - and _")->type_name("NAME");
  command.add_option("--folder", line.pair.folder, "Where the desk has its files")
      ->type_name("FOLDER");
  AddZone(command, line.pair.zone,
          "The handheld's time zone, such as Europe/Berlin; asked for when it is left out");
  AddCountry(command, line.pair.country,
             "Where telephone numbers without a country are dialled, such as DE");
  AddKinds(command, line.kinds);
  std::map<std::string, std::string> policies;
  for (const std::string_view policy : kPairPolicies) policies.emplace(policy, policy);
  AddChoice<std::string>(command, "--conflict", line.pair.policy, policies,
                         "What becomes of an item in which both sides have changed the same: "
                         "keep-both, desk, handheld or ask")
      ->type_name("POLICY");
  command.callback([&line, &command, run = ToRun(line, WritePairWith, line.place, line.pair)] {
    const bool all = line.kinds.size() == std::size(kPairKinds);
    if (command.count("--kinds") > 0) {
      line.pair.kinds = all ? std::set<RecordKind>() : line.kinds;
    }
    run();
  });
}

void AddPull(CLI::App& app, CommandLine& line) {
  CLI::App& command = *app.add_subcommand(
      "pull", "Contacts, calendar, tasks, text messages or calls from the handheld");
  AddKind(command, line.pull.kind,
          {RecordKind::kContacts, RecordKind::kContacts2, RecordKind::kAppointments,
           RecordKind::kTasks, RecordKind::kMessages, RecordKind::kCalls},
          "contacts, contacts2 for their second form, calendar, tasks, messages or calls");
  AddOids(command, line.pull.oids);
  AddUids(command, line.pull.uids);
  AddChoice<FormatWord>(
      command, "--format", line.format, kFormatWords,
      "vcf (contacts), ics (calendar, tasks) and json (messages, calls: an "
      "object a line) are the defaults; xml or json; smsbackup (messages, calls); csv "
      "(contacts, calls)")
      ->type_name("FORMAT");
  AddPlace(command, line);
  AddCardForm(command, line.pull.version, line.pull.overflow);
  AddOutput(command, line.pull.output, "Where to, instead of the standard output")
      ->type_name("FILE");
  command.add_flag("--overwrite", line.pull.overwrite,
                   "Replace an output that holds more than the handheld sends");
  AddMapping(command, line.pull.mapping);
  command.footer("More than 4 GiB are not taken for an answer: it would never end.");
  command.callback([&line, run = ToRun(line, PullFrom, line.place, line.pull)] {
    BringTogether(line.format, line.pull);
    run();
  });
}

void AddPush(CLI::App& app, CommandLine& line) {
  CLI::App& command = *app.add_subcommand("push", "Contacts, calendar and tasks to the handheld");
  command
      .add_option("files", line.push.files,
                  "vCard (.vcf), iCalendar (.ics) or record documents (.xml); - for the "
                  "standard input")
      ->required()
      ->type_name("FILE");
  command.add_option("--chunk", line.push.policy.chunk, "Records to a document; default 20")
      ->type_name("N")
      ->check(CLI::Range(1, 10000).description(""));
  command.add_flag("--force", line.push.policy.force,
                   "Send what has not changed or what the check finds in conflict, too");
  command.add_flag("--dry-run", line.push.policy.dryRun,
                   "Look at the handheld and show what would be sent, send nothing");
  AddOverflow(command, line.push.overflow);
  AddPlace(command, line);
  AddMapping(command, line.push.mapping);
  line.push.policy.recognise = true;
  AddCountry(command, line.place.country,
             "Where telephone numbers without a country are dialled, such as DE; the pair's or the "
             "locale's by default");
  command.callback(ToRun(line, PushTo, line.place, line.push));
}

void AddDelete(CLI::App& app, CommandLine& line) {
  CLI::App& command = *app.add_subcommand(
      "delete", "Contacts, calendar, tasks or text messages away from the handheld");
  AddKind(
      command, line.remove.kind,
      {RecordKind::kContacts, RecordKind::kAppointments, RecordKind::kTasks, RecordKind::kMessages},
      "contacts, calendar, tasks or messages");
  AddOids(command, line.remove.oids);
  AddUids(command, line.remove.uids);
  command.add_flag("--yes", line.remove.yes, "Delete all without asking");
  AddMapping(command, line.remove.mapping);
  command.callback([&line, run = ToRun(line, Delete, line.remove)] {
    if (!WordsOf(line.remove.kind).isItem &&
        !(line.remove.oids.empty() && line.remove.uids.empty())) {
      throw CLI::ValidationError("--oid", "messages are deleted all together");
    }
    run();
  });
}

void AddSync(CLI::App& app, CommandLine& line) {
  CLI::App& command =
      *app.add_subcommand("sync", "A folder and the handheld, brought in step; or all pairs");
  SyncChoices& choices = line.sync.choices;
  command
      .add_option("what", line.sync.what,
                  "A pair, or a folder with contacts/, calendar/, tasks/, messages/ and calls/, of "
                  "which what is missing is made; all pairs when left out")
      ->type_name("NAME|FOLDER");
  AddZone(command, line.place.zone,
          "The handheld's time zone, such as Europe/Berlin; remembered from then on");
  AddKinds(command, line.kinds);
  AddChoice<ConflictPolicy>(command, "--conflict", choices.conflict, kConflictPolicies,
                            "What becomes of an item in which both sides have changed the same: "
                            "keep-both (the default), desk, handheld or ask")
      ->type_name("POLICY");
  AddCountry(command, line.place.country,
             "Where telephone numbers without a country are dialled, such as DE; remembered from "
             "then on, the locale's by default");
  command.add_flag("--allow-deletions", choices.allowDeletions,
                   "Even when most of a side, or all of it, is gone");
  CLI::Option& dryRun =
      *command.add_flag("--dry-run", choices.dryRun, "Show what would be done, change nothing");
  CLI::Option& watch =
      *command.add_flag("--watch", line.sync.watch, "Stay, and do it again when a file changes");
  watch.excludes(&dryRun);
  command
      .add_option_function<unsigned>(
          "--every",
          [&line](const unsigned& seconds) { line.sync.every = std::chrono::seconds(seconds); },
          "In a watch, for what changes on the handheld, after so long as well; default 300")
      ->type_name("SECONDS")
      ->check(CLI::Range(1, 1000000).description(""))
      ->needs(&watch);
  command.footer("A folder that has the name of a pair is meant by ./NAME.");
  command.callback([&line, &command, run = ToRun(line, Sync, line.place, line.sync)] {
    if (command.count("--kinds") > 0) line.sync.choices.kinds = line.kinds;
    line.sync.json = line.reporting.json;
    line.sync.quiet = line.reporting.quiet;
    line.sync.verbose = line.reporting.verbose;
    run();
  });
}

void AddRestore(CLI::App& app, CommandLine& line) {
  CLI::App& command = *app.add_subcommand(
      "restore", "A folder and the handheld, brought back to what they were before a sync");
  command.add_option("what", line.restore.what, "A pair, or a folder that has been synchronised")
      ->required()
      ->type_name("NAME|FOLDER");
  command
      .add_option("time", line.restore.time,
                  "As it is listed when left out, or latest for the last sync")
      ->type_name("TIME");
  command.callback(ToRun(line, RestoreSync, line.place, line.restore));
}

void AddPage(CLI::App& app, CommandLine& line) {
  CLI::App& command = *app.add_subcommand(
      "page", "A folder that is kept in step, as one page to look at in any browser");
  command.add_option("what", line.page.what, "A pair, or a folder that has been synchronised")
      ->required()
      ->type_name("NAME|FOLDER");
  AddOutput(command, line.page.output, "The HTML file (default: standard output)")
      ->type_name("FILE");
  AddZone(command, line.place.zone,
          "The handheld's time zone, such as Europe/Berlin; the one that is remembered by default");
  AddCountry(command, line.place.country,
             "Where telephone numbers without a country are dialled, such as DE; the one that is "
             "remembered by default");
  command.callback(ToRun(line, MakePage, line.place, line.page));
}

void AddKeys(CLI::App& app, CommandLine& line) {
  CLI::App& command = *app.add_subcommand("keys", "The elements that the handheld's records have");
  AddKind(command, line.keys,
          {RecordKind::kContacts, RecordKind::kContacts2, RecordKind::kAppointments,
           RecordKind::kTasks},
          "contacts, contacts2 for their second form, calendar or tasks");
  command.callback(ToRun(line, PrintKeys, line.keys, line.reporting.json));
}

void AddTime(CLI::App& app, CommandLine& line) {
  CLI::App& command = *app.add_subcommand("time", "The handheld's clock");
  command.require_subcommand(1);
  CLI::App& get = *command.add_subcommand("get", "Prints its time, in UTC");
  get.callback(ToRun(line, GetTime, line.reporting.json));
  CLI::App& set = *command.add_subcommand("set", "Sets its time");
  set.add_option_function<std::string>(
         "time",
         [&line](const std::string& text) {
           line.time = ParseTime(text);
           if (!line.time) throw CLI::ValidationError("time", text + " is no time");
         },
         "ISO 8601 with a zone, or else in UTC; this computer's time when left out")
      ->type_name("TIME");
  set.callback(ToRun(line, SetTime, line.time));
}

void AddDevice(CLI::App& app, CommandLine& line) {
  CLI::App& info =
      *app.add_subcommand("info", "The agent's version; the handheld's language, time and cards");
  info.callback(ToRun(line, PrintInfo, line.reporting.json));
  CLI::App& storage = *app.add_subcommand("storage", "The room on the handheld's storage cards");
  storage
      .add_option("directory", line.directory,
                  "On its volume instead; a directory of the handheld, with / or \\")
      ->type_name("PATH");
  storage.callback(ToRun(line, PrintStorage, line.directory, line.reporting.json));
  CLI::App& cards = *app.add_subcommand("cards", "The handheld's storage cards, one by one");
  cards.callback(ToRun(line, PrintCards, line.reporting.json));
}

void RequireOneWay(const ConvertOptions& convert) {
  if (convert.file.has_value() == convert.devicePath.has_value()) {
    throw CLI::ValidationError("convert", "it takes either a FILE or --device-path");
  }
  if (convert.format.has_value() == convert.toDevice.has_value()) {
    throw CLI::ValidationError("convert", "it takes either --to or --to-device");
  }
  if (convert.toDevice && convert.devicePath) {
    throw CLI::ValidationError("--to-device", "only a FILE can be put on the handheld");
  }
  if (convert.toDevice && convert.output) {
    throw CLI::ValidationError("--output", "with --to-device nothing comes back");
  }
  if (convert.from && convert.devicePath) {
    throw CLI::ValidationError("--from", "the handheld goes by the name of its note");
  }
}

void AddConvert(CLI::App& app, CommandLine& line) {
  CLI::App& command = *app.add_subcommand(
      "convert", "Notes from one format into another, by the handheld's own means");
  const std::map<std::string, NoteFormat> formats = {{"txt", NoteFormat::kText},
                                                     {"rtf", NoteFormat::kRichText},
                                                     {"unicode", NoteFormat::kUnicode},
                                                     {"pwi", NoteFormat::kInk}};
  command
      .add_option("file", line.convert.file, "A note on this computer; - for the standard input")
      ->type_name("FILE");
  command.add_option("--device-path", line.convert.devicePath, "A note on the handheld instead")
      ->type_name("PATH");
  AddChoice<NoteFormat>(command, "--to", line.convert.format, formats,
                        "rtf, txt (the handheld's 8-bit characters), unicode (UTF-16LE) or pwi "
                        "(ink); the agent's address stands before \"convert\"")
      ->type_name("FORMAT");
  command
      .add_option("--to-device", line.convert.toDevice,
                  "Put the FILE there on the handheld, in the format of that name")
      ->type_name("PATH");
  AddChoice<NoteFormat>(command, "--from", line.convert.from, formats,
                        "The FILE's format, where its name does not tell")
      ->type_name("FORMAT");
  AddOutput(command, line.convert.output, "Where to, instead of the standard output")
      ->type_name("OUT");
  command.footer(
      "A FILE travels in one request, which has room for about 900 bytes. While it is converted "
      "it\n"
      "lies in \\~note.pwi on the handheld, a file that is emptied afterwards and stays.");
  command.callback([&line, run = ToRun(line, Convert, line.convert)] {
    RequireOneWay(line.convert);
    run();
  });
}

void AddAgent(CLI::App& app, CommandLine& line) {
  CLI::App& logging = *app.add_subcommand("logging", "The agent's diagnostic log");
  AddChoice<LoggingLevel>(
      logging, "state", line.logging,
      {{"on", LoggingLevel::kOn}, {"verbose", LoggingLevel::kVerbose}, {"off", LoggingLevel::kOff}},
      "on, verbose or off")
      ->required()
      ->type_name("STATE");
  logging.callback(ToRun(line, SetLogging, line.logging));
  app.add_subcommand("quit", "Asks the agent to end")->callback(ToRun(line, Quit));
}

void AddConnection(CLI::App& app, CommandLine& line) {
  app.add_option_function<std::string>(
         "--to",
         [&line](const std::string& text) {
           const std::optional<Target> target = ParseTarget(text);
           if (!target) throw CLI::ValidationError("--to", text + " is no HOST[:PORT]");
           line.connection.target = *target;
           line.place.addressGiven = true;
         },
         "Where the agent listens; default 127.0.0.1:2005")
      ->type_name("HOST[:PORT]");
  app.add_option_function<double>(
         "--timeout",
         [&line](const double& seconds) {
           line.connection.timeout =
               std::chrono::milliseconds(static_cast<std::int64_t>(seconds * 1000));
         },
         "How long the agent may be silent; default 30")
      ->type_name("SECONDS")
      ->check(CLI::Range(0.001, 1e6).description(""));
}

int Run(int argc, char** argv) {
  CommandLine line;
  CLI::App app("Talks to the synchronisation agent of a handheld.", "corvane-desktop");
  app.set_version_flag("--version", "corvane-desktop " CORVANE_VERSION);
  command_line::AddDescription(app);
  // Not required: CLI11 would ask for one before it names a word that it does not know.
  app.require_subcommand(0, 1);
  app.fallthrough();
  app.footer("Exit status: 0 all done, 1 failed, 2 wrong usage, 3 partly done.");
  AddConnection(app, line);
  AddPull(app, line);
  AddPush(app, line);
  AddDelete(app, line);
  AddSync(app, line);
  AddPair(app, line);
  AddRestore(app, line);
  AddPage(app, line);
  AddKeys(app, line);
  AddTime(app, line);
  AddDevice(app, line);
  AddConvert(app, line);
  AddAgent(app, line);
  AddReporting(app, line.reporting);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kDone : kUsage;
  }
  if (!line.run) {
    std::fprintf(stderr, "A command is required\nRun with --help for more information.\n");
    return kUsage;
  }
  line.connection.interruptFd = CatchInterruptions();
  const Console console{
      .out = std::cout,
      .err = std::cerr,
      .in = std::cin,
      .errIsTerminal = isatty(STDERR_FILENO) == 1,
      .inIsTerminal = isatty(STDIN_FILENO) == 1,
      .inFd = STDIN_FILENO,
      .outIsTerminal = isatty(STDOUT_FILENO) == 1,
      .verbosity = line.reporting.verbosity(),
      .json = line.reporting.json,
  };
  return line.run(console);
}

}  // namespace

int main(int argc, char** argv) {
  return command_line::RunToTheEnd("corvane-desktop", [&] { return Run(argc, argv); });
}
