// What a desktop sees of the agent's speed: uploads, downloads and deletes of contacts, small
// requests, and the agent's peak memory, over loopback against a store on a real disk.
//
//   sync_bench [--directory DIR] [CONTACTS…]     default: the working directory; 1000 10000 100000
#include <fmt/core.h>
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/host/handheld.h"
#include "tests/support/paths.h"
#include "tests/support/wire/process.h"
#include "tests/support/wire/raw_connection.h"
#include "tests/support/wire/wire_bytes.h"

namespace {
namespace fs = std::filesystem;
using corvane::testing::Chunk;
using corvane::testing::Invoke;
using corvane::testing::RawConnection;
using corvane::testing::Record;
using corvane::testing::Word;
using Clock = std::chrono::steady_clock;

constexpr int kRecordsPerChunk = 20;
constexpr int kSmallRequests = 5000;

double SecondsSince(Clock::time_point begin) {
  return std::chrono::duration<double>(Clock::now() - begin).count();
}

// A handheld with an agent on it, for one measurement.
class Agent {
 public:
  explicit Agent(const fs::path& parent) {
    std::string name = (parent / "corvane-bench-XXXXXX").string();
    if (!mkdtemp(name.data())) throw std::runtime_error("no directory below " + parent.string());
    directory_ = name;
    ce::host::Handheld::Create(directory_, {});
    Start();
  }
  ~Agent() {
    process_.reset();
    std::error_code ignored;
    fs::remove_all(directory_, ignored);
  }
  RawConnection Connect() const { return RawConnection(port_); }
  // Peak memory is counted from a start.
  void Restart() {
    process_.reset();
    Start();
  }
  // In KiB, as the system counts it.
  long PeakMemory() const {
    std::ifstream status("/proc/" + std::to_string(process_->pid()) + "/status");
    for (std::string line; std::getline(status, line);)
      if (line.rfind("VmHWM:", 0) == 0) return std::stol(line.substr(6));
    return 0;
  }

 private:
  void Start() {
    const auto begin = Clock::now();
    process_ = std::make_unique<corvane::testing::Process>(
        corvane::testing::ProgramPath("corvane"),
        std::vector<std::string>{"--handheld", directory_.string(), "--listen", "127.0.0.1:0"});
    const std::string line = process_->ReadLine();
    startSeconds_ = SecondsSince(begin);
    if (line.find(':') == std::string::npos) throw std::runtime_error("no agent: " + line);
    port_ = static_cast<std::uint16_t>(std::stoi(line.substr(line.rfind(':') + 1)));
  }

 public:
  double startSeconds_ = 0;

 private:
  fs::path directory_;
  std::unique_ptr<corvane::testing::Process> process_;
  std::uint16_t port_ = 0;
};

std::string ContactXml(int i) {
  const std::string n = std::to_string(i);
  return "<CONTACT><EMAIL_ADDRESSES><EMAIL_ADDRESS><NAME>person" + n +
         "@example.org</NAME><TYPE>email1</TYPE></EMAIL_ADDRESS></"
         "EMAIL_ADDRESSES><FIRST_NAME>First" +
         n + "</FIRST_NAME><LAST_NAME>Last" + n +
         "</LAST_NAME><COMPANY>Example Company</COMPANY><FileAs>Last" + n + ", First" + n +
         "</FileAs><DEPARTMENT>Department</DEPARTMENT><PHONE_MOBILE>+49 170 " + n +
         "</PHONE_MOBILE><PHONE_BUSINESS>+49 30 " + n +
         "</PHONE_BUSINESS><BUSINESS_TITLE>Engineer</BUSINESS_TITLE><PHONE_HOME>+49 89 " + n +
         "</PHONE_HOME><CATEGORIES><CATEGORY><Name>Business</Name></CATEGORY></CATEGORIES>"
         "<BUSINESS_WEB_PAGE>https://example.org/</BUSINESS_WEB_PAGE>"
         "<HOME_ADDRESS>1 Example Street</HOME_ADDRESS><HOME_CITY>Example City</HOME_CITY>"
         "<HOME_ZIP>12345</HOME_ZIP><HOME_COUNTRY>Germany</HOME_COUNTRY>"
         "<NOTES>A note that says a few words about this person.</NOTES>"
         "<BIRTHDAY>19700101T000000</BIRTHDAY></CONTACT>";
}

double Upload(const Agent& agent, int contacts) {
  const auto begin = Clock::now();
  RawConnection connection = agent.Connect();
  connection.Send(Record(Invoke{.function = "UploadPIMRecords", .streamFlag = 1}.Body()));
  connection.ReceiveWord();
  for (int sent = 0; sent < contacts;) {
    std::string document = "<root>";
    int records = 0;
    for (; records < kRecordsPerChunk && sent < contacts; ++records) document += ContactXml(++sent);
    connection.Send(Chunk(document + "</root>"));
    const std::string replies = connection.Receive(8 * static_cast<std::size_t>(records));
    for (int i = 0; i < records; ++i)
      if (corvane::testing::WordAt(replies, 8 * i + 4) != 0)
        throw std::runtime_error("a contact was refused");
  }
  connection.Send(Word(0));
  connection.ReceiveToEnd();
  return SecondsSince(begin);
}

struct DownloadResult {
  double seconds;
  double megabytes;
};

DownloadResult Download(const Agent& agent, int expected) {
  const auto begin = Clock::now();
  RawConnection connection = agent.Connect();
  connection.Send(Record(
      Invoke{.function = "DownloadAllPIMRecords", .input = Word(1), .streamFlag = 1}.Body()));
  connection.ReceiveWord();
  std::size_t bytes = 0;
  std::size_t records = 0;
  for (std::uint32_t count; (count = connection.ReceiveWord()) != 0;) {
    const std::string document = connection.Receive(count);
    bytes += document.size();
    records += corvane::testing::CountElements(document, "CONTACT");
  }
  if (connection.ReceiveWord() != 0 || records != static_cast<std::size_t>(expected))
    throw std::runtime_error("the download is not complete");
  return {SecondsSince(begin), static_cast<double>(bytes) / 1e6};
}

double DeleteAll(const Agent& agent) {
  const auto begin = Clock::now();
  RawConnection connection = agent.Connect();
  connection.Send(Record(Invoke{.function = "DeleteAllPIMRecords", .input = Word(1)}.Body()));
  if (corvane::testing::WordAt(connection.Receive(20), 8) != 0)
    throw std::runtime_error("the delete failed");
  return SecondsSince(begin);
}

double SmallRequestsPerSecond(const Agent& agent) {
  const std::string record = Record(Invoke{.function = "CVCeGetSystemTime"}.Body());
  const auto begin = Clock::now();
  for (int i = 0; i < kSmallRequests; ++i) {
    RawConnection connection = agent.Connect();
    connection.Send(record);
    if (connection.Receive(36).size() != 36) throw std::runtime_error("a request was not answered");
  }
  return kSmallRequests / SecondsSince(begin);
}

void MeasureContacts(const fs::path& parent, int contacts) {
  Agent agent(parent);
  const double upload = Upload(agent, contacts);
  const long uploadPeak = agent.PeakMemory();
  agent.Restart();
  const DownloadResult download = Download(agent, contacts);
  const long downloadPeak = agent.PeakMemory();
  const double deletion = DeleteAll(agent);
  fmt::print("{:>9} {:>10.2f} {:>11.0f} {:>10} {:>10.3f} {:>11.0f} {:>8.1f} {:>10} {:>10.3f}\n",
             contacts, upload, contacts / upload, uploadPeak, download.seconds,
             contacts / download.seconds, download.megabytes, downloadPeak, deletion);
}

int Run(const fs::path& directory, const std::vector<int>& counts) {
  {
    const Agent agent(directory);
    fmt::print("start to listening: {:.1f} ms, idle peak memory: {} KiB\n",
               agent.startSeconds_ * 1e3, agent.PeakMemory());
    fmt::print("CVCeGetSystemTime: {:.0f} requests/s ({} requests, a connection each)\n\n",
               SmallRequestsPerSecond(agent), kSmallRequests);
  }
  fmt::print("{:>9} {:>10} {:>11} {:>10} {:>10} {:>11} {:>8} {:>10} {:>10}\n", "contacts", "up s",
             "up /s", "peak KiB", "down s", "down /s", "MB", "peak KiB", "delete s");
  for (const int contacts : counts) MeasureContacts(directory, contacts);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  fs::path directory = fs::current_path();
  std::vector<int> counts;
  try {
    for (int i = 1; i < argc; ++i) {
      const std::string argument = argv[i];
      if (argument == "--directory" && i + 1 < argc)
        directory = argv[++i];
      else
        counts.push_back(std::stoi(argument));
    }
    if (counts.empty()) counts = {1000, 10000, 100000};
    return Run(directory, counts);
  } catch (const std::exception& error) {
    fmt::print(stderr, "sync_bench: {}\n", error.what());
    return 1;
  }
}
