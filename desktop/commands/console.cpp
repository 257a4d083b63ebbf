#include "desktop/commands/console.h"

#include <exception>
#include <new>

#include "desktop/wire/error.h"

namespace desktop {

int RunGuarded(const Console& console, const std::function<int()>& command) {
  try {
    return command();
  } catch (const std::bad_alloc&) {
    console.err << "corvane-desktop: out of memory\n";
  } catch (const std::exception& problem) {
    console.err << "corvane-desktop: " << problem.what() << '\n';
  }
  return kFailed;
}

void FlushOutput(const Console& console) {
  if (!console.out.flush()) throw Error("cannot write to the standard output");
}

}  // namespace desktop
