#include "tests/programs/tool_test.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <regex>
#include <stdexcept>

#include "tests/support/paths.h"

namespace corvane::testing {

namespace {

Ended RunToEnd(const std::string& program, const std::vector<std::string>& arguments,
               const ProcessOptions& options) {
  Process process(program, arguments, options);
  Ended ended;
  ended.out = process.ReadToEnd();
  ended.code = process.Wait();
  ended.err = process.ReadErrors();
  return ended;
}

}  // namespace

void PrintTo(const Ended& ended, std::ostream* stream) {
  *stream << "exit code " << ended.code << "\nstandard output:\n"
          << ended.out << "\nstandard error:\n"
          << ended.err;
}

ListeningSocket::ListeningSocket() : fd_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof(address);
  auto* const generic = reinterpret_cast<sockaddr*>(&address);
  if (bind(fd_, generic, size) != 0 || listen(fd_, 5) != 0 || getsockname(fd_, generic, &size) != 0)
    throw std::runtime_error("the test cannot listen");
  port_ = ntohs(address.sin_port);
}

ListeningSocket::~ListeningSocket() {
  close(fd_);
}

bool IsOneLine(std::string_view text) {
  return text.size() > 1 && text.find('\n') == text.size() - 1;
}

std::string WithoutOids(const std::string& json) {
  return std::regex_replace(json, std::regex("\"oid\":[0-9]+,"), "");
}

std::string AsCarried(const std::string& json) {
  return std::regex_replace(
      json,
      std::regex(",\"(OfficeLocation|CarTelephoneNumber|AssistantTelephoneNumber)\":\"[^\"]*\""),
      "");
}

ProcessOptions ToolTest::Options(int listener) const {
  return {.environment = {{"XDG_STATE_HOME", Path("state")},
                          {"XDG_CONFIG_HOME", Path("config")},
                          {"HOME", Path("home")}},
          .listener = listener,
          .captureErrors = true};
}

ProcessOptions ToolTest::Disturbed(const Fault& fault, std::uint64_t n,
                                   const std::string& below) const {
  std::filesystem::remove(Path("told"));
  ProcessOptions options = Options();
  for (auto& variable : ShimEnvironment(fault, n, below, Path("told")))
    options.environment.push_back(std::move(variable));
  return options;
}

Ended ToolTest::Run(const std::string& program, const Arguments& arguments,
                    const ProcessOptions& options) const {
  return RunToEnd(ProgramPath(program), arguments, options);
}

Ended ToolTest::Shell(const std::string& command) const {
  ProcessOptions options = Options();
  const std::string programs = std::filesystem::path(ProgramPath("corvane")).parent_path();
  options.environment.emplace_back("PATH", programs + ":" + std::getenv("PATH"));
  return RunToEnd("/bin/bash", {"-c", command}, options);
}

Ended ToolTest::Desktop(const Arguments& arguments) const {
  Arguments all{"--to", "127.0.0.1:" + std::to_string(port_)};
  all.insert(all.end(), arguments.begin(), arguments.end());
  return Run("corvane-desktop", all);
}

std::string ToolTest::MakeHandheld(const std::string& name, const std::string& language) const {
  const Ended made = Device({"init", Path(name), "--zone", "UTC", "--language", language});
  if (made.code != 0) throw std::runtime_error("no handheld: " + made.err);
  return Path(name);
}

std::string ToolTest::MakeFilledHandheld() const {
  std::string handheld = MakeHandheld();
  const Ended filled = Device({"import", handheld, Sample("people.vcf"), Sample("calendar.ics"),
                               Sample("phone-backup.xml"), Sample("phone-calls.xml")});
  if (filled.code != 0) throw std::runtime_error("nothing imported: " + filled.err);
  return handheld;
}

std::string ToolTest::Contacts(const std::string& handheld) const {
  const Ended shown = Device({"show", handheld, "contacts", "--json"});
  if (shown.code != 0) throw std::runtime_error("nothing to show: " + shown.err);
  return shown.out;
}

std::string ToolTest::File(const std::string& name, std::string_view content) const {
  directory_.Write(name, content);
  return Path(name);
}

std::string ToolTest::Sample(const std::string& name) {
  return SourcePath("samples/" + name);
}

void ToolTest::StartAgent(const std::string& handheld, const Arguments& more, int listener,
                          const std::string& listen) {
  Arguments arguments{"--handheld", handheld, "--listen", listen};
  arguments.insert(arguments.end(), more.begin(), more.end());
  agent_.emplace(ProgramPath("corvane"), arguments, Options(listener));
  greeting_ = agent_->ReadLine();
  const std::size_t colon = greeting_.rfind(':');
  if (colon == std::string::npos)
    throw std::runtime_error("the agent did not start: " + agent_->ReadErrors());
  port_ = static_cast<std::uint16_t>(std::stoi(greeting_.substr(colon + 1)));
}

Ended ToolTest::EndAgent() {
  Ended ended;
  ended.out = agent_->ReadToEnd();
  ended.code = agent_->Wait();
  ended.err = agent_->ReadErrors();
  agent_.reset();
  return ended;
}

void ToolTest::StopAgent(int signal) {
  agent_->Kill(signal);
  agent_->Wait();
  agent_.reset();
}

}  // namespace corvane::testing
