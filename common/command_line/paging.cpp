#include "common/command_line/paging.h"

#include <algorithm>
#include <initializer_list>
#include <string>

namespace command_line {
namespace {

constexpr char kNoPager[] = "--no-pager";

}  // namespace

void AddPaging(CLI::App& command) {
  const std::string help = "All at once on a terminal, too, not a screen at a time";
  command.add_flag(kNoPager, help);
}

bool WantsPager(const CLI::App& program) {
  const auto commands = program.get_subcommands();
  if (commands.empty() || commands.front()->get_option_no_throw(kNoPager) == nullptr) return false;
  return std::ranges::none_of(std::initializer_list<const char*>{kNoPager, "--json", "--quiet"},
                              [&](const char* name) {
                                const auto* option = commands.front()->get_option_no_throw(name);
                                return option != nullptr && option->count() > 0;
                              });
}

}  // namespace command_line
