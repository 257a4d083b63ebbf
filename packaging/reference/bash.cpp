#include <algorithm>

#include "packaging/reference/completion.h"

namespace reference {
namespace {

// What `offer KIND [WORDS]` in the script understands.
std::string OfferCall(const Option& option) {
  switch (OfferFor(option)) {
    case Offer::kWords:
      return "words " + Quoted(Joined(option.choices));
    case Offer::kFiles:
      return "files";
    case Offer::kDirectories:
      return "directories";
    case Offer::kNothing:
      break;
  }
  return "nothing";
}

// "'export':'--format'|…) _corvane_offer words '…' ;;" for each value of each command.
std::string ValueCases(const Program& program, const std::string& offer) {
  std::string cases;
  for (const Command& command : program.commands) {
    const std::string words = Quoted(Joined(command.words));
    for (const Option& option : OptionsOf(program, command)) {
      if (option.value.empty()) continue;
      std::string patterns;
      for (const std::string& name : option.names)
        patterns += (patterns.empty() ? "" : "|") + words + ":" + name;
      cases += "    " + patterns + ") " + offer + ' ' + OfferCall(option) + " ;;\n";
    }
    for (std::size_t i = 0; i < command.arguments.size(); ++i) {
      const Option& argument = command.arguments[i];
      const std::string position = argument.many ? "*" : std::to_string(i);
      cases += "    " + words + ':' + position + ") " + offer + ' ' + OfferCall(argument) + " ;;\n";
    }
  }
  return cases;
}

std::string CommandCases(const Program& program) {
  std::string cases;
  for (const Command& command : program.commands) {
    std::vector<std::string> options, valued, commands;
    for (const Option& option : OptionsOf(program, command)) {
      options.insert(options.end(), option.names.begin(), option.names.end());
      if (!option.value.empty())
        valued.insert(valued.end(), option.names.begin(), option.names.end());
    }
    for (const Command* below : CommandsBelow(program, command))
      commands.push_back(below->words.back());
    cases += "    " + Quoted(Joined(command.words)) +
             ")\n      options=" + Quoted(Joined(options)) +
             "\n      valued=" + Quoted(Joined(valued)) +
             "\n      commands=" + Quoted(Joined(commands)) + " ;;\n";
  }
  return cases;
}

}  // namespace

std::string BashCompletion(const Program& program) {
  const std::string name = FunctionName(program);
  return "# bash completion for " + program.name + "\n\n" + name + R"(_takes() {
  case $command in
)" + CommandCases(program) +
         "  esac\n}\n\n" + name + R"(_offer() {
  case $1 in
    words) COMPREPLY=($(compgen -W "$2" -- "$current")) ;;
    files)
      compopt -o filenames 2>/dev/null
      mapfile -t COMPREPLY < <(compgen -f -- "$current") ;;
    directories)
      compopt -o filenames 2>/dev/null
      mapfile -t COMPREPLY < <(compgen -d -- "$current") ;;
  esac
}

)" + name +
         R"(_value() {
  case $command:$1 in
)" + ValueCases(program, name + "_offer") +
         "  esac\n}\n\n" + name + R"(() {
  local current=${COMP_WORDS[COMP_CWORD]} command='' position=0 awaited='' word i
  local options valued commands
  COMPREPLY=()
  )" + name +
         R"(_takes
  for ((i = 1; i < COMP_CWORD; i++)); do
    word=${COMP_WORDS[i]}
    if [[ -n $awaited ]]; then
      awaited=''
    elif [[ $word == -* ]]; then
      [[ " $valued " == *" $word "* ]] && awaited=$word
    elif [[ " $commands " == *" $word "* ]]; then
      command=${command:+$command }$word
      position=0
      )" +
         name + R"(_takes
    else
      position=$((position + 1))
    fi
  done
  if [[ -n $awaited ]]; then
    )" + name +
         R"(_value "$awaited"
  elif [[ $current == -* ]]; then
    )" + name +
         R"(_offer words "$options"
  elif [[ -n $commands ]]; then
    )" + name +
         R"(_offer words "$commands"
  else
    )" + name +
         R"(_value "$position"
  fi
}

complete -F )" +
         name + ' ' + program.name + '\n';
}

}  // namespace reference
