// Options that several commands have.
#pragma once

#include <CLI/CLI.hpp>
#include <filesystem>
#include <initializer_list>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "common/calendar/zone.h"
#include "common/formats/vcard/vcard.h"
#include "desktop/commands/console.h"
#include "desktop/records/record_kind.h"

namespace desktop {

// An option or a positional that takes one of a few words.
template <typename T, typename Chosen>
CLI::Option* AddChoice(CLI::App& command, const std::string& name, Chosen& chosen,
                       const std::map<std::string, T>& choices, const std::string& help) {
  std::vector<std::string> words;
  words.reserve(choices.size());
  for (const auto& choice : choices) words.push_back(choice.first);
  return command
      .add_option_function<std::string>(
          name, [&chosen, choices](const std::string& word) { chosen = choices.at(word); }, help)
      ->check(CLI::IsMember(words));
}

// How much a command says, and how.
struct Reporting {
  bool json = false;
  bool quiet = false;
  bool verbose = false;
  [[nodiscard]] Verbosity verbosity() const;
};
// To every command below, last among its options.
void AddReporting(CLI::App& app, Reporting& reporting);

// "-" is the standard output, which is meant without the option, too.
CLI::Option* AddOutput(CLI::App& command, std::optional<std::filesystem::path>& output,
                       const std::string& help);
void AddOids(CLI::App& command, std::vector<Oid>& oids);
void AddUids(CLI::App& command, std::vector<std::string>& uids);
void AddMapping(CLI::App& command, std::optional<std::filesystem::path>& mapping);
// What does not exist is wrong usage.
calendar::Zone ZoneFrom(const std::string& name);
void AddZone(CLI::App& command, std::optional<calendar::Zone>& zone, const std::string& help);
void AddCountry(CLI::App& command, std::optional<std::string>& country, const std::string& help);
// A positional that takes one of the kinds' arguments.
void AddKind(CLI::App& command, RecordKind& kind, std::initializer_list<RecordKind> kinds,
             const std::string& help);
// How vCards are written.
void AddCardForm(CLI::App& command, formats::VCardVersion& version, formats::Overflow& overflow);
// What becomes of that for which a contact on its way to the handheld has no field.
void AddOverflow(CLI::App& command, formats::Overflow& overflow);
// Some of the kinds that `kinds` begins with, all by default.
void AddKinds(CLI::App& command, std::set<RecordKind>& kinds);

}  // namespace desktop
