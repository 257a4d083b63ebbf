#include "packaging/reference/manual.h"

#include <algorithm>
#include <cctype>
#include <sstream>

namespace reference {
namespace {

std::string Upper(std::string text) {
  std::ranges::transform(text, text.begin(), [](unsigned char c) { return std::toupper(c); });
  return text;
}

// As text of a page: every character is shown as it is.
std::string Roff(const std::string& text) {
  std::string roff;
  for (const char c : text) {
    const bool atStart = roff.empty() || roff.back() == '\n';
    switch (c) {
      case '\\':
        roff += "\\e";
        break;
      case '-':
        roff += "\\-";
        break;
      case '~':
        roff += "\\(ti";
        break;
      case '^':
        roff += "\\(ha";
        break;
      case '`':
        roff += "\\(ga";
        break;
      case '\'':
        roff += "\\(aq";
        break;
      case '.':
        roff += atStart ? "\\&." : ".";
        break;
      default:
        roff += c;
    }
  }
  return roff;
}

std::string Bold(const std::string& text) {
  return "\\fB" + Roff(text) + "\\fR";
}

std::string Italic(const std::string& text) {
  return "\\fI" + Roff(text) + "\\fR";
}

// Without a full stop at its end.
std::string Phrase(std::string text) {
  if (text.ends_with('.')) text.pop_back();
  return text;
}

std::string NameOf(const Program& program, const Command& command) {
  std::string name = program.name;
  for (const std::string& word : command.words) name += ' ' + word;
  return name;
}

std::string PageName(const Program& program, const Command& command) {
  std::string name = NameOf(program, command);
  std::ranges::replace(name, ' ', '-');
  return name;
}

std::string Synopsis(const Program& program, const Command& command) {
  std::string line = Bold(NameOf(program, command)) + " [" + Italic("OPTION") + "]...";
  for (const Option& argument : command.arguments) {
    const std::string name = Italic(argument.names.front()) + (argument.many ? "..." : "");
    line += argument.required ? ' ' + name : " [" + name + ']';
  }
  if (!CommandsBelow(program, command).empty())
    line += ' ' + Italic("COMMAND") + " [" + Italic("ARGUMENT") + "]...";
  return line + '\n';
}

// What a person cannot tell from the description.
std::string Remarks(const Option& option) {
  std::string remarks;
  if (!option.choices.empty()) remarks += " One of " + Joined(option.choices, ", ") + '.';
  if (!option.fallback.empty()) remarks += " Default: " + option.fallback + '.';
  if (option.required && option.names.front().starts_with('-')) remarks += " Required.";
  return remarks;
}

std::string Entry(const Option& option) {
  const bool isArgument = !option.names.front().starts_with('-');
  std::string heading;
  for (const std::string& name : option.names)
    heading += (heading.empty() ? "" : ", ") + (isArgument ? Italic(name) : Bold(name));
  if (!isArgument && !option.value.empty()) heading += ' ' + Italic(option.value);
  if (option.many) heading += " ...";
  return ".TP\n" + heading + '\n' + Roff(Phrase(option.description) + '.' + Remarks(option)) + '\n';
}

// A paragraph; lines that begin with blanks stand as they are.
std::string Paragraph(const std::string& text) {
  const bool isTable = text.starts_with("  ") || text.find("\n  ") != text.npos;
  std::string roff = Roff(text);
  if (!roff.ends_with('\n')) roff += '\n';
  return isTable ? ".nf\n" + roff + ".fi\n" : roff;
}

std::string Entries(const char* section, const std::vector<Option>& options) {
  if (options.empty()) return {};
  std::string text = std::string(section) + '\n';
  for (const Option& option : options) text += Entry(option);
  return text;
}

std::string SubCommands(const Program& program, const Command& command) {
  std::string text;
  for (const Command* below : CommandsBelow(program, command)) {
    text += ".SS " + Roff(below->words.back()) + '\n' + Synopsis(program, *below) + ".PP\n" +
            Roff(Phrase(below->description)) + ".\n" + Entries(".PP", below->arguments) +
            Entries(".PP", below->options);
  }
  return text.empty() ? "" : ".SH COMMANDS\n" + text;
}

std::string ListOfCommands(const Program& program) {
  std::string text;
  for (const Command* each : CommandsBelow(program, program.commands.front())) {
    text += ".TP\n" + Bold(each->words.back()) + '\n' + Roff(Phrase(each->description)) + ". See " +
            Bold(PageName(program, *each)) + "(1).\n";
  }
  return text.empty() ? "" : ".SH COMMANDS\n" + text;
}

std::string SeeAlso(const std::string& own, const std::vector<std::string>& pages) {
  std::string text;
  for (const std::string& page : pages) {
    if (page.substr(0, page.find('(')) != own)
      text += (text.empty() ? "" : ",\n") + Bold(page.substr(0, page.find('('))) +
              page.substr(page.find('('));
  }
  return ".SH SEE ALSO\n" + text + '\n';
}

std::string PageText(const Program& program, const Command& command, const std::string& prose) {
  const bool isProgram = command.words.empty();
  const std::string name = PageName(program, command);
  std::string text = ".TH " + Roff(Upper(name)) + " 1 \"\" \"corvane " + Roff(program.version) +
                     "\" \"Corvane\"\n.SH NAME\n" + Roff(name) + " \\- " +
                     Roff(Phrase(command.description)) + "\n.SH SYNOPSIS\n" +
                     Synopsis(program, command);
  text += Entries(".SH ARGUMENTS", command.arguments);
  text += Entries(".SH OPTIONS", command.options);
  text += isProgram ? ListOfCommands(program) : SubCommands(program, command);
  if (command.inherits) {
    text += ".PP\nThe options of " + Bold(program.name) + "(1) may stand here, too.\n";
  }
  if (!command.footer.empty()) text += ".SH NOTES\n" + Paragraph(command.footer);
  return text + prose +
         SeeAlso(name, {"corvane(1)", "corvane-device(1)", "corvane-desktop(1)",
                        "corvane-handheld(5)", "corvane-service(7)"});
}

}  // namespace

std::vector<Page> ManualPages(const Program& program, const std::string& prose) {
  std::vector<Page> pages;
  for (const Command& command : program.commands) {
    if (command.words.size() > 1) continue;
    pages.push_back({PageName(program, command) + ".1",
                     PageText(program, command, command.words.empty() ? prose : "")});
  }
  return pages;
}

}  // namespace reference
