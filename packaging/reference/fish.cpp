#include "packaging/reference/completion.h"

namespace reference {
namespace {

// Within quotes a backslash stands for itself only when there are two.
std::string FishQuoted(const std::string& text) {
  std::string quoted = "'";
  for (const char c : text) {
    if (c == '\\' || c == '\'') quoted += '\\';
    quoted += c;
  }
  return quoted + "'";
}

std::string OfferOf(const Option& option) {
  switch (OfferFor(option)) {
    case Offer::kWords:
      return " -xa " + FishQuoted(Joined(option.choices));
    case Offer::kFiles:
      return " -rF";
    case Offer::kDirectories:
      return " -xa '(__fish_complete_directories)'";
    case Offer::kNothing:
      break;
  }
  return " -x";
}

std::string Names(const Option& option) {
  std::string names;
  for (const std::string& name : option.names)
    names += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
  return names;
}

std::string ArgumentOffer(const Option& argument) {
  switch (OfferFor(argument)) {
    case Offer::kWords:
      return " -a " + FishQuoted(Joined(argument.choices));
    case Offer::kFiles:
      return " -F";
    case Offer::kDirectories:
      return " -a '(__fish_complete_directories)'";
    case Offer::kNothing:
      break;
  }
  return {};
}

std::string OfCommand(const Program& program, const Command& command, const std::string& at) {
  const std::string start = "complete -c " + program.name + " -n " +
                            FishQuoted(at + " " + FishQuoted(Joined(command.words)));
  std::string text;
  for (const Command* below : CommandsBelow(program, command))
    text += start + " -a " + below->words.back() + " -d " + FishQuoted(below->description) + '\n';
  for (const Option& option : OptionsOf(program, command)) {
    text += start + Names(option) + (option.value.empty() ? "" : OfferOf(option)) + " -d " +
            FishQuoted(option.description) + '\n';
  }
  for (std::size_t i = 0; i < command.arguments.size(); ++i) {
    const Option& argument = command.arguments[i];
    const std::string offer = ArgumentOffer(argument);
    if (offer.empty()) continue;
    const std::string position = std::to_string(i) + (argument.many ? "+" : "");
    text += "complete -c " + program.name + " -n " +
            FishQuoted(at + " " + FishQuoted(Joined(command.words)) + ' ' + position) + offer +
            '\n';
  }
  return text;
}

}  // namespace

std::string FishCompletion(const Program& program) {
  const std::string at = "_" + FunctionName(program) + "_at";
  std::string valued, paths;
  for (const Command& command : program.commands) {
    if (!command.words.empty()) paths += ' ' + FishQuoted(Joined(command.words));
    for (const Option& option : command.options) {
      if (option.value.empty()) continue;
      for (const std::string& name : option.names) valued += ' ' + name;
    }
  }
  std::string text = "# fish completion for " + program.name + "\n\nfunction " + at + R"(
    set -l command
    set -l position 0
    set -l awaited 0
    for word in (commandline -opc)[2..]
        if test $awaited = 1
            set awaited 0
        else if string match -q -- '-*' $word
            contains -- $word)" +
                     valued + R"(; and set awaited 1
        else if contains -- (string join ' ' $command $word))" +
                     paths + R"(
            set -a command $word
            set position 0
        else
            set position (math $position + 1)
        end
    end
    test "$command" = "$argv[1]"; or return 1
    switch "$argv[2]"
        case ''
            return 0
        case '*+'
            test $position -ge (string trim -rc + $argv[2])
        case '*'
            test $position = $argv[2]
    end
end

complete -c )" + program.name +
                     " -f\n";
  for (const Command& command : program.commands) text += OfCommand(program, command, at);
  return text;
}

}  // namespace reference
