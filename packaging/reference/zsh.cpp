#include "packaging/reference/completion.h"

namespace reference {
namespace {

// As an argument of _arguments has it, where a colon and a bracket end a field.
std::string Escaped(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    if (c == ':' || c == '[' || c == ']' || c == '\\') escaped += '\\';
    escaped += c;
  }
  return escaped;
}

std::string ListEntry(const Command& command) {
  std::string entry = command.words.back() + ':';
  for (const char c : command.description)
    entry += c == ':' ? std::string("\\:") : std::string(1, c);
  return Quoted(entry);
}

std::string Action(const Option& option) {
  switch (OfferFor(option)) {
    case Offer::kWords:
      return "(" + Joined(option.choices) + ")";
    case Offer::kFiles:
      return "_files";
    case Offer::kDirectories:
      return "_files -/";
    case Offer::kNothing:
      break;
  }
  return " ";
}

std::string OptionEntry(const Option& option, const std::string& name) {
  const std::string others = option.many ? "*" : "(" + Joined(option.names) + ")";
  std::string entry = others + name + '[' + Escaped(option.description) + ']';
  if (!option.value.empty()) entry += ':' + Escaped(option.value) + ':' + Action(option);
  return entry;
}

std::string FunctionOf(const Program& program, const Command& command) {
  std::string name = FunctionName(program);
  for (const std::string& word : command.words) name += '_' + word;
  return name;
}

std::string Cases(const Program& program, const std::vector<const Command*>& below) {
  std::string text = "  case $state in\n    command)\n      local -a commands=(";
  for (const Command* each : below) text += "\n        " + ListEntry(*each);
  text +=
      ")\n      _describe -t commands command commands ;;\n    rest)\n      case $words[1] in\n";
  for (const Command* each : below)
    text += "        " + each->words.back() + ") " + FunctionOf(program, *each) + " ;;\n";
  return text + "      esac ;;\n  esac\n";
}

std::string CommandFunction(const Program& program, const Command& command) {
  const auto below = CommandsBelow(program, command);
  std::string text = FunctionOf(program, command) +
                     "() {\n  local curcontext=\"$curcontext\" state line\n  _arguments -C";
  for (const Option& option : OptionsOf(program, command)) {
    for (const std::string& name : option.names)
      text += " \\\n    " + Quoted(OptionEntry(option, name));
  }
  for (std::size_t i = 0; i < command.arguments.size(); ++i) {
    const Option& argument = command.arguments[i];
    const std::string place = argument.many ? "*" : std::to_string(i + 1);
    text += " \\\n    " + Quoted(place + (argument.required || argument.many ? ":" : "::") +
                                 Escaped(argument.names.front()) + ':' + Action(argument));
  }
  if (!below.empty()) text += " \\\n    '1: :->command' \\\n    '*:: :->rest'";
  text += '\n';
  if (!below.empty()) text += Cases(program, below);
  return text + "}\n\n";
}

}  // namespace

std::string ZshCompletion(const Program& program) {
  std::string text = "#compdef " + program.name + "\n\n";
  for (const Command& command : program.commands) text += CommandFunction(program, command);
  // Loaded, it is the function itself; read as a file, it is to be told of.
  const std::string name = FunctionName(program);
  return text + "if [[ $funcstack[1] == " + name + " ]]; then\n  " + name + " \"$@\"\nelse\n" +
         "  compdef " + name + ' ' + program.name + "\nfi\n";
}

}  // namespace reference
