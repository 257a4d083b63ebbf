// What a program's command line can say, for those who write it down: manual pages and the
// completion of shells are made of it.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace command_line {

// Lines of fields with tabs between them; in a field "\t", "\n" and "\\" stand for themselves.
//
//   command  WORDS  DESCRIPTION  FOOTER  INHERITS           the program has no words; "1": takes
//   the
//                                                           program's options, too
//   option   NAMES  VALUE  CHOICES  DEFAULT  FLAGS  DESCRIPTION    of the command above it, such as
//            "-o,--output"; VALUE is empty for a switch, and FLAGS are of "required" and "many"
//   argument NAME   VALUE  CHOICES  DEFAULT  FLAGS  DESCRIPTION
//
// CHOICES are words with blanks between them. What help hides is left out.
std::string Describe(const CLI::App& program);

// Lets the program answer the hidden option --describe. What is declared later is described, too.
void AddDescription(CLI::App& program);

}  // namespace command_line
