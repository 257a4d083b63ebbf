// corvane-device: makes, fills, shows and maintains a virtual handheld.
#include <fmt/core.h>

#include <CLI/CLI.hpp>
#include <functional>
#include <string>
#include <vector>

#include "maintenance/clock_commands.h"
#include "maintenance/export_items.h"
#include "maintenance/handheld_commands.h"
#include "maintenance/import_files.h"
#include "maintenance/registry_commands.h"
#include "maintenance/remove_items.h"
#include "maintenance/session.h"
#include "maintenance/show_items.h"
#include "maintenance/usage_error.h"

namespace {

using maintenance::Outcome;
using maintenance::Report;
using maintenance::Session;

constexpr int kExitUsage = 2;

// What the command line asks for; filled in by the options of the chosen command.
struct Arguments {
  std::string directory;
  maintenance::InitOptions init;
  std::string key, value;
  bool json = false;
  std::string kind;
  std::vector<std::filesystem::path> files;
  maintenance::ImportOptions import;
  std::optional<std::filesystem::path> output;
  std::string vcardVersion = "3.0";
  std::vector<std::uint32_t> oids;
  std::string verb = "show";
  std::optional<std::string> name, typedValue;
  std::string time;
};

using Command = std::function<Outcome(const Report&)>;

CLI::App* AddCommand(CLI::App& app, const char* name, const char* description, Arguments& a,
                     Command& chosen, Command run) {
  CLI::App* command = app.add_subcommand(name, description);
  command->add_option("DIR", a.directory, "The handheld's directory")->required();
  command->callback([&chosen, run = std::move(run)] { chosen = run; });
  return command;
}

void AddHandheldCommands(CLI::App& app, Arguments& a, Command& chosen) {
  auto* init = AddCommand(app, "init", "Make a handheld", a, chosen, [&](const Report& report) {
    return maintenance::InitHandheld(a.directory, a.init, report);
  });
  init->add_option("--language", a.init.language, "Its language (default: this computer's)")
      ->type_name("TAG");
  init->add_option("--os-version", a.init.osVersion, "Its system's version (default: 5.2)")
      ->type_name("MAJOR.MINOR");
  init->add_option("--zone", a.init.zone, "Its time zone (default: this computer's)")
      ->type_name("NAME");
  init->add_option("--first-oid", a.init.firstOid, "Its first object identifier (default: 1)")
      ->type_name("N");

  auto* set = AddCommand(app, "set", "Change a setting", a, chosen, [&](const Report& report) {
    Session session(a.directory);
    return maintenance::SetSetting(session, a.key, a.value, report);
  });
  set->add_option("KEY", a.key, "The setting")->required();
  set->add_option("VALUE", a.value, "Its new value")->required();
  std::string keys = "Settings:\n";
  for (const auto& [key, values] : maintenance::SettingKeys())
    keys += fmt::format("  {:<18}{}\n", key, values);
  set->footer(keys);

  auto* info = AddCommand(app, "info", "Say what it is", a, chosen, [&](const Report& report) {
    Session session(a.directory);
    return maintenance::ShowHandheld(session, a.json, report);
  });
  info->add_flag("--json", a.json, "As JSON");

  AddCommand(app, "check", "Look for damage in the store", a, chosen, [&](const Report& report) {
    Session session(a.directory);
    return maintenance::CheckHandheld(session, report);
  });
}

void AddKind(CLI::App& command, Arguments& a) {
  command.add_option("KIND", a.kind, "contacts, calendar or tasks")
      ->required()
      ->check(CLI::IsMember({"contacts", "calendar", "appointments", "tasks"}));
}

// Another word for the calendar.
bool IsCalendar(const std::string& kind) {
  return kind == "calendar" || kind == "appointments";
}

Outcome RunShow(const Arguments& a, const Report& report) {
  Session session(a.directory);
  if (IsCalendar(a.kind)) return ShowCalendar(session, a.json, report);
  if (a.kind == "tasks") return ShowTasks(session, a.json, report);
  return ShowContacts(session, a.json, report);
}

Outcome RunExport(const Arguments& a, const Report& report) {
  Session session(a.directory);
  if (IsCalendar(a.kind)) return ExportCalendar(session, a.output, report);
  if (a.kind == "tasks") return ExportTasks(session, a.output, report);
  const auto version =
      a.vcardVersion == "4.0" ? formats::VCardVersion::k40 : formats::VCardVersion::k30;
  return ExportContacts(session, a.output, version, report);
}

void AddItemCommands(CLI::App& app, Arguments& a, Command& chosen) {
  auto* import = AddCommand(app, "import", "Put vCards and iCalendar files on it", a, chosen,
                            [&](const Report& report) {
                              Session session(a.directory);
                              return maintenance::ImportFiles(session, a.files, a.import, report);
                            });
  import->add_option("FILE", a.files, "vCard (2.1, 3.0, 4.0) and iCalendar files")->required();
  import->add_flag("--dry-run", a.import.dryRun, "Only say what would be done");
  import->add_flag("--duplicate", a.import.duplicate, "Add what was imported before once more");

  auto* show = AddCommand(app, "show", "List what is on it", a, chosen,
                          [&](const Report& report) { return RunShow(a, report); });
  AddKind(*show, a);
  show->add_flag("--json", a.json, "As JSON");

  auto* out = AddCommand(app, "export", "Write vCards or iCalendar of it", a, chosen,
                         [&](const Report& report) { return RunExport(a, report); });
  AddKind(*out, a);
  out->add_option("-o,--output", a.output, "The file (default: standard output)")
      ->type_name("FILE");
  out->add_option("--vcard-version", a.vcardVersion, "Of contacts: 3.0 or 4.0")
      ->check(CLI::IsMember({"3.0", "4.0"}))
      ->capture_default_str();

  auto* remove = AddCommand(app, "remove", "Remove items", a, chosen, [&](const Report& report) {
    Session session(a.directory);
    return maintenance::RemoveItems(session, a.oids, report);
  });
  remove->add_option("OID", a.oids, "Their identifiers")->required();
}

Outcome RunRegistry(const Arguments& a, const Report& report) {
  Session session(a.directory);
  if (a.verb == "get") return RegistryGet(session.handheld(), a.key, a.name, report);
  if (a.verb == "delete") return RegistryDelete(session.handheld(), a.key, a.name, report);
  return RegistrySet(session.handheld(), a.key, a.name, a.typedValue, report);
}

Outcome RunClock(const Arguments& a, const Report& report) {
  Session session(a.directory);
  if (a.verb == "set") return SetClock(session, a.time, report);
  if (a.verb == "reset") return ResetClock(session, report);
  return ShowClock(session, report);
}

void AddSystemCommands(CLI::App& app, Arguments& a, Command& chosen) {
  auto* registry = AddCommand(app, "registry", "Look at and change its registry", a, chosen,
                              [&](const Report& report) { return RunRegistry(a, report); });
  registry->add_option("VERB", a.verb, "get, set or delete")
      ->required()
      ->check(CLI::IsMember({"get", "set", "delete"}));
  registry->add_option("KEY", a.key, "Such as 'SOFTWARE\\Tenbrook\\Corvane'")->required();
  registry->add_option("NAME", a.name, "A value of the key");
  registry->add_option("VALUE", a.typedValue, "sz:TEXT, dword:NUMBER or binary:HEX")
      ->type_name("TYPE:VALUE");

  auto* clock = AddCommand(app, "clock", "Show or set its clock", a, chosen,
                           [&](const Report& report) { return RunClock(a, report); });
  clock->add_option("VERB", a.verb, "set or reset (default: show)")
      ->check(CLI::IsMember({"show", "set", "reset"}));
  clock->add_option("TIME", a.time, "For set: 2008-02-15T13:45:00Z; UTC unless it says otherwise");
  clock->parse_complete_callback([&a] {
    if ((a.verb == "set") != !a.time.empty())
      throw CLI::ValidationError("TIME", "goes with set, and set wants it");
  });
}

int ParseAndRun(int argc, char** argv) {
  Arguments arguments;
  Command chosen;
  CLI::App app("Makes, fills, shows and maintains a virtual handheld.", "corvane-device");
  app.set_version_flag("--version", "corvane-device " CORVANE_VERSION);
  // Not required: CLI11 would ask for one before it names a word that it does not know.
  app.require_subcommand(0, 1);
  app.footer("Exit codes: 0 all done, 1 failed, 2 wrong use, 3 partly done.");
  AddHandheldCommands(app, arguments, chosen);
  AddItemCommands(app, arguments, chosen);
  AddSystemCommands(app, arguments, chosen);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : kExitUsage;
  }
  if (!chosen) {
    fmt::print(stderr, "A command is required\nRun with --help for more information.\n");
    return kExitUsage;
  }
  const Outcome outcome = chosen(Report{});
  if (std::fflush(stdout) != 0 || std::ferror(stdout))
    throw std::runtime_error("the standard output cannot be written");
  return static_cast<int>(outcome);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return ParseAndRun(argc, argv);
  } catch (const maintenance::UsageError& error) {
    std::fprintf(stderr, "corvane-device: %s\n", error.what());
    return kExitUsage;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "corvane-device: %s\n", error.what());
    return static_cast<int>(Outcome::kFailed);
  }
}
