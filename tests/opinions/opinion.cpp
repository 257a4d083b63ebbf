#include "tests/opinions/opinion.h"

#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>
#include <string_view>

#include "tests/support/paths.h"

namespace corvane::testing {

// A socket, since writing to a pipe that nobody reads ends the writer.
Opinion::Ends::Ends() {
  int both[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, both) != 0) {
    throw std::runtime_error("no socket");
  }
  own = both[0];
  script = both[1];
}

// The system's own Python, which sees the system's own libraries, whatever else is installed; -I
// keeps what is set for others from it.
Opinion::Opinion(const std::string& script)
    : process_("/usr/bin/python3", {"-I", SourcePath("tests/opinions/" + script)},
               {.input = ends_.script}) {
  close(ends_.script);
}

Opinion::~Opinion() {
  close(ends_.own);
}

nlohmann::json Opinion::Ask(const nlohmann::json& question) {
  const std::string line = question.dump() + "\n";
  for (std::string_view left = line; !left.empty();) {
    const ssize_t sent = send(ends_.own, left.data(), left.size(), MSG_NOSIGNAL);
    if (sent <= 0) throw std::runtime_error("the script takes no more");
    left.remove_prefix(static_cast<std::size_t>(sent));
  }
  const std::string answer = process_.ReadLine();
  if (answer.empty()) throw std::runtime_error("the script has ended");
  return nlohmann::json::parse(answer);
}

}  // namespace corvane::testing
