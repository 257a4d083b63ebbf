#include "bench/server.h"

#include <signal.h>

#include <chrono>
#include <ctime>
#include <fstream>
#include <stdexcept>

#include "tests/support/paths.h"

namespace bench {

using corvane::testing::ProgramPath;

Server::Server(const std::string& program, const std::vector<std::string>& arguments)
    : begin_(Now()), process_(program, arguments) {
  const std::string line = process_.ReadLine();
  startSeconds_ = Now() - begin_;
  const std::size_t colon = line.rfind(':');
  if (colon == line.npos) throw std::runtime_error(program + " does not listen: " + line);
  port_ = static_cast<std::uint16_t>(std::stoi(line.substr(colon + 1)));
}

double Server::CpuSeconds() const {
  clockid_t clock{};
  timespec used{};
  if (clock_getcpuclockid(process_.pid(), &clock) != 0 || clock_gettime(clock, &used) != 0)
    throw std::runtime_error("the CPU time of a program cannot be told");
  return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) / 1e9;
}

void Server::Stop() {
  process_.Kill(SIGTERM);
  process_.Wait();
}

long Server::Memory(const std::string& field) const {
  std::ifstream status("/proc/" + std::to_string(process_.pid()) + "/status");
  for (std::string line; std::getline(status, line);)
    if (line.starts_with(field)) return std::stol(line.substr(field.size()));
  throw std::runtime_error("the memory of a program cannot be told");
}

Server StartAgent(const std::filesystem::path& handheld) {
  return Server(ProgramPath("corvane"),
                {"--handheld", handheld.string(), "--listen", "127.0.0.1:0"});
}

Server StartFloor(const std::vector<std::string>& words) {
  return Server(ProgramPath("bench_floor"), words);
}

double Now() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

}  // namespace bench
