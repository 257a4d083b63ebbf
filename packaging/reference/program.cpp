#include "packaging/reference/program.h"

#include <algorithm>
#include <map>
#include <sstream>
#include <stdexcept>

namespace reference {
namespace {

std::vector<std::string> Split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  std::istringstream stream(text);
  for (std::string part; std::getline(stream, part, separator);) parts.push_back(part);
  return parts;
}

std::string Unescaped(const std::string& field) {
  std::string text;
  for (std::size_t i = 0; i < field.size(); ++i) {
    if (field[i] != '\\' || ++i == field.size()) {
      text += field[i];
    } else {
      text += field[i] == 't' ? '\t' : field[i] == 'n' ? '\n' : '\\';
    }
  }
  return text;
}

std::vector<std::string> Fields(const std::string& line, std::size_t count) {
  std::vector<std::string> fields = Split(line, '\t');
  fields.resize(std::max(count, fields.size()));  // empty ones at the end are not split off
  if (fields.size() != count) throw std::runtime_error("not a description: " + line);
  std::ranges::transform(fields, fields.begin(), Unescaped);
  return fields;
}

Command ReadCommand(const std::string& line) {
  const auto fields = Fields(line, 5);
  return {.words = Split(fields[1], ' '),
          .description = fields[2],
          .footer = fields[3],
          .inherits = fields[4] == "1",
          .options = {},
          .arguments = {}};
}

Option ReadOption(const std::string& line) {
  const auto fields = Fields(line, 7);
  const auto flags = Split(fields[5], ' ');
  return {.names = Split(fields[1], ','),
          .value = fields[2],
          .choices = Split(fields[3], ' '),
          .fallback = fields[4],
          .required = std::ranges::count(flags, "required") > 0,
          .many = std::ranges::count(flags, "many") > 0,
          .description = fields[6]};
}

}  // namespace

Program Read(std::istream& description, const std::string& name, const std::string& version) {
  Program program{name, version, {}};
  for (std::string line; std::getline(description, line);) {
    if (line.empty()) continue;
    const std::string kind = line.substr(0, line.find('\t'));
    if (kind == "command") {
      program.commands.push_back(ReadCommand(line));
      continue;
    }
    if (program.commands.empty() || (kind != "option" && kind != "argument"))
      throw std::runtime_error("not a description: " + line);
    Command& command = program.commands.back();
    (kind == "option" ? command.options : command.arguments).push_back(ReadOption(line));
  }
  if (program.commands.empty()) throw std::runtime_error(name + " describes nothing");
  return program;
}

std::string Joined(const std::vector<std::string>& words, const std::string& between) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : between) + word;
  return text;
}

std::vector<const Command*> CommandsBelow(const Program& program, const Command& command) {
  std::vector<const Command*> below;
  for (const Command& each : program.commands) {
    if (each.words.size() == command.words.size() + 1 &&
        std::equal(command.words.begin(), command.words.end(), each.words.begin()))
      below.push_back(&each);
  }
  return below;
}

std::vector<Option> OptionsOf(const Program& program, const Command& command) {
  std::vector<Option> options = command.options;
  if (!command.inherits) return options;
  for (const Option& each : program.commands.front().options) {
    const auto has = [&](const Option& own) { return own.names == each.names; };
    if (std::ranges::none_of(options, has)) options.push_back(each);
  }
  return options;
}

Offer OfferFor(const Option& option) {
  if (!option.choices.empty()) return Offer::kWords;
  static const std::map<std::string, Offer> offers = {
      {"FILE", Offer::kFiles},
      {"OUT", Offer::kFiles},
      {"DIR", Offer::kDirectories},
      {"DIRECTORY", Offer::kDirectories},
      {"NEW", Offer::kDirectories},
      {"FOLDER", Offer::kDirectories},
      {"NAME|FOLDER", Offer::kDirectories},
  };
  // An argument whose value has no word of its own is known by its name.
  for (const std::string& word : {option.value, option.names.back()}) {
    if (const auto offer = offers.find(word); offer != offers.end()) return offer->second;
  }
  return Offer::kNothing;
}

}  // namespace reference
