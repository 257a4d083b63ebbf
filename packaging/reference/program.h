// A program's command line, as it describes itself.
#pragma once

#include <istream>
#include <string>
#include <vector>

namespace reference {

// An option, or an argument that stands for itself.
struct Option {
  std::vector<std::string> names;  // "-o", "--output"; an argument's own name
  std::string value;               // what a person reads: "FILE"; empty for a switch
  std::vector<std::string> choices;
  std::string fallback;
  bool required = false;
  bool many = false;
  std::string description;
};

struct Command {
  std::vector<std::string> words;  // behind the program's name; none for the program itself
  std::string description;
  std::string footer;
  bool inherits = false;  // takes the program's options, too
  std::vector<Option> options;
  std::vector<Option> arguments;
};

struct Program {
  std::string name;
  std::string version;
  std::vector<Command> commands;  // the program itself comes first
};

// Reads what `name --describe` prints. Throws std::runtime_error.
Program Read(std::istream& description, const std::string& name, const std::string& version);

// "a b c"
std::string Joined(const std::vector<std::string>& words, const std::string& between = " ");

// The commands one word below this one.
std::vector<const Command*> CommandsBelow(const Program& program, const Command& command);

// All that it takes: its own options and, where it inherits, those of the program.
std::vector<Option> OptionsOf(const Program& program, const Command& command);

// What a shell can offer in a value's place.
enum class Offer { kNothing, kWords, kFiles, kDirectories };
Offer OfferFor(const Option& option);

}  // namespace reference
