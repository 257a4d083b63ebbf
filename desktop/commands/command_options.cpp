#include "desktop/commands/command_options.h"

#include <algorithm>
#include <utility>

#include "common/files/standard_streams.h"
#include "common/phone/phone_numbers.h"

namespace desktop {

Verbosity Reporting::verbosity() const {
  if (quiet) return Verbosity::kErrors;
  return verbose ? Verbosity::kAll : Verbosity::kSummary;
}

void AddReporting(CLI::App& app, Reporting& reporting) {
  const auto all = [](const CLI::App*) { return true; };
  for (CLI::App* command : app.get_subcommands(all)) {
    if (!command->get_subcommands(all).empty()) {
      AddReporting(*command, reporting);
      continue;
    }
    command->add_flag("--json", reporting.json, "Facts and results as JSON, a line each");
    CLI::Option* const quiet =
        command->add_flag("-q,--quiet", reporting.quiet, "Only errors, and what is asked for");
    command->add_flag("-v,--verbose", reporting.verbose, "Each notice and each item by itself")
        ->excludes(quiet);
  }
}

CLI::Option* AddOutput(CLI::App& command, std::optional<std::filesystem::path>& output,
                       const std::string& help) {
  return command.add_option_function<std::string>(
      "-o,--output",
      [&output](const std::string& file) {
        if (!files::IsStandard(file)) output = file;
      },
      help);
}

void AddOids(CLI::App& command, std::vector<Oid>& oids) {
  command
      .add_option_function<std::vector<std::string>>(
          "--oid",
          [&oids](const std::vector<std::string>& texts) {
            for (const std::string& text : texts) {
              const std::optional<Oid> oid = ParseOid(text);
              if (!oid) throw CLI::ValidationError("--oid", text + " is no object identifier");
              oids.push_back(*oid);
            }
          },
          "Only these object identifiers")
      ->type_name("N");
}

void AddUids(CLI::App& command, std::vector<std::string>& uids) {
  command
      .add_option("--uid", uids,
                  "Only the items that have come from here or gone to here with this UID")
      ->type_name("UID");
}

void AddMapping(CLI::App& command, std::optional<std::filesystem::path>& mapping) {
  command
      .add_option("--map", mapping,
                  "Which item here is which there; default "
                  "$XDG_STATE_HOME/corvane/HOST_PORT.json or below ~/.local/state")
      ->type_name("FILE");
}

calendar::Zone ZoneFrom(const std::string& name) {
  const std::optional<calendar::Zone> found = calendar::Zone::Find(name);
  if (!found) throw CLI::ValidationError("--zone", name + " is no time zone");
  return *found;
}

void AddZone(CLI::App& command, std::optional<calendar::Zone>& zone, const std::string& help) {
  command
      .add_option_function<std::string>(
          "--zone", [&zone](const std::string& name) { zone = ZoneFrom(name); }, help)
      ->type_name("NAME");
}

void AddCountry(CLI::App& command, std::optional<std::string>& country, const std::string& help) {
  command
      .add_option_function<std::string>(
          "--country",
          [&country](const std::string& code) {
            if (!phone::PhoneNumbers::IsCountry(code)) {
              throw CLI::ValidationError("--country", code + " is no country of ISO 3166");
            }
            country = code;
          },
          help)
      ->type_name("CODE");
}

void AddKind(CLI::App& command, RecordKind& kind, std::initializer_list<RecordKind> kinds,
             const std::string& help) {
  std::map<std::string, RecordKind> choices;
  for (const RecordKind each : kinds) choices.emplace(WordsOf(each).argument, each);
  AddChoice(command, "what", kind, choices, help)->required()->type_name("KIND");
}

void AddKinds(CLI::App& command, std::set<RecordKind>& kinds) {
  command
      .add_option_function<std::vector<std::string>>(
          "--kinds",
          [&kinds](const std::vector<std::string>& words) {
            const std::set<RecordKind> all = std::exchange(kinds, {});
            for (const std::string& word : words) {
              const auto found = std::ranges::find_if(
                  all, [&](RecordKind kind) { return WordsOf(kind).argument == word; });
              if (found == all.end()) {
                throw CLI::ValidationError(
                    "--kinds", word + " is none of contacts, calendar, tasks, messages, calls");
              }
              kinds.insert(*found);
            }
          },
          "Only these, with commas: contacts, calendar, tasks, messages, calls")
      ->delimiter(',')
      ->type_name("KINDS");
}

void AddCardForm(CLI::App& command, formats::VCardVersion& version, formats::Overflow& overflow) {
  AddChoice<formats::VCardVersion>(
      command, "--vcard-version", version,
      {{"3.0", formats::VCardVersion::k30}, {"4.0", formats::VCardVersion::k40}},
      "3.0 (the default) or 4.0")
      ->type_name("VERSION");
  AddChoice<formats::Overflow>(
      command, "--overflow", overflow, {{"note", formats::Overflow::kNote}},
      "Of contacts: take what a push or an import kept so off the end of the note again");
}

void AddOverflow(CLI::App& command, formats::Overflow& overflow) {
  AddChoice<formats::Overflow>(
      command, "--overflow", overflow, {{"note", formats::Overflow::kNoteForWire}},
      "Keep numbers, addresses, nicknames and labels that a contact has no field for: at the end "
      "of its note");
}

}  // namespace desktop
