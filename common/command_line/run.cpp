#include "common/command_line/run.h"

#include <cstdio>
#include <exception>
#include <new>

#include "common/text/text.h"

namespace command_line {
namespace {

constexpr int kFailed = 1;

int RunAndTell(const char* program, const std::function<int()>& run) {
  try {
    return run();
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& problem) {
    std::fprintf(stderr, "%s: %s\n", program, text::Shown(problem.what()).c_str());
  }
  return kFailed;
}

}  // namespace

int RunToTheEnd(const char* program, const std::function<int()>& run) {
  try {
    return RunAndTell(program, run);
  } catch (const std::bad_alloc&) {  // also of what tells of another problem
    std::fprintf(stderr, "%s: out of memory\n", program);
  }
  return kFailed;
}

}  // namespace command_line
