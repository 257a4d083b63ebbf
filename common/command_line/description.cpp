#include "common/command_line/description.h"

#include <CLI/CLI.hpp>
#include <initializer_list>
#include <string_view>

namespace command_line {
namespace {

std::string Escaped(std::string_view field) {
  std::string escaped;
  for (const char c : field) {
    switch (c) {
      case '\t':
        escaped += "\\t";
        break;
      case '\n':
        escaped += "\\n";
        break;
      case '\\':
        escaped += "\\\\";
        break;
      default:
        escaped += c;
    }
  }
  return escaped;
}

std::string Line(std::initializer_list<std::string_view> fields) {
  std::string line;
  for (const std::string_view field : fields) line += (line.empty() ? "" : "\t") + Escaped(field);
  return line + '\n';
}

// "KIND:{contacts,tasks}" has the words in braces.
std::string ChoicesOf(const std::string& type) {
  const std::size_t open = type.find(":{");
  const std::size_t close = type.rfind('}');
  if (open == type.npos || close == type.npos || close < open) return {};
  std::string words = type.substr(open + 2, close - open - 2);
  for (char& c : words) c = c == ',' ? ' ' : c;
  return words;
}

std::string DescribeOption(const CLI::Option& option) {
  const bool isArgument = option.get_positional();
  const bool takesValue = option.get_items_expected_max() > 0;
  const std::string type = takesValue ? option.get_type_name() : "";
  const bool isMany = option.get_expected_max() == CLI::detail::expected_max_vector_size;
  std::string flags = option.get_required() ? "required" : "";
  if (isMany) flags += flags.empty() ? "many" : " many";
  return Line({isArgument ? "argument" : "option", option.get_name(isArgument, !isArgument),
               type.substr(0, type.find(":{")), ChoicesOf(type), option.get_default_str(), flags,
               option.get_description()});
}

std::string DescribeCommand(const CLI::App& command, const std::string& words) {
  const bool inherits = !words.empty() && command.get_fallthrough();
  std::string text = Line(
      {"command", words, command.get_description(), command.get_footer(), inherits ? "1" : ""});
  for (const CLI::Option* option : command.get_options()) {
    if (!option->get_group().empty()) text += DescribeOption(*option);
  }
  for (const CLI::App* each : command.get_subcommands([](const CLI::App*) { return true; })) {
    if (each->get_group().empty()) continue;
    text += DescribeCommand(*each, words + (words.empty() ? "" : " ") + each->get_name());
  }
  return text;
}

}  // namespace

std::string Describe(const CLI::App& program) {
  return DescribeCommand(program, "");
}

void AddDescription(CLI::App& program) {
  program
      .add_flag_callback("--describe",
                         [&program] { throw CLI::CallForVersion(Describe(program), 0); })
      ->group("");
}

}  // namespace command_line
