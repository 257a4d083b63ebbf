#include "bench/client.h"

#include <algorithm>
#include <atomic>
#include <stdexcept>
#include <thread>
#include <vector>

#include "tests/support/wire/raw_connection.h"
#include "tests/support/wire/wire_bytes.h"

namespace bench {
namespace {

using corvane::testing::Invoke;
using corvane::testing::RawConnection;
using corvane::testing::Record;
using corvane::testing::Word;
using corvane::testing::WordAt;

constexpr std::size_t kDrainRoom = std::size_t{256} << 10;
constexpr std::size_t kTimeReply = 36;

RawConnection AskForDownload(std::uint16_t port, const Workload& workload) {
  RawConnection connection(port);
  connection.Send(Record(
      Invoke{.function = "DownloadAllPIMRecords", .input = Word(workload.kind), .streamFlag = 1}
          .Body()));
  return connection;
}

bool AskOnce(std::uint16_t port, const std::string& record) {
  RawConnection connection(port);
  connection.Send(record);
  return connection.Receive(kTimeReply).size() == kTimeReply;
}

}  // namespace

std::uint64_t DrainDownload(std::uint16_t port, const Workload& workload) {
  RawConnection connection = AskForDownload(port, workload);
  std::vector<char> room(kDrainRoom);
  std::uint64_t bytes = 0;
  while (const std::size_t got = connection.ReceiveSome(room.data(), room.size())) bytes += got;
  return bytes;
}

std::string ReadDownload(std::uint16_t port, const Workload& workload) {
  return AskForDownload(port, workload).ReceiveToEnd();
}

void UploadChunks(std::uint16_t port, const ChunkFile& chunks, int count, int recordsPerChunk) {
  RawConnection connection(port);
  connection.Send(Record(Invoke{.function = "UploadPIMRecords", .streamFlag = 1}.Body()));
  if (connection.ReceiveWord() != 0) throw std::runtime_error("no upload");
  for (const std::string_view chunk : chunks.chunks()) {
    connection.Send(chunk);
    const int records = std::min(count, recordsPerChunk);
    const std::string answers = connection.Receive(8 * static_cast<std::size_t>(records));
    for (int i = 0; i < records; ++i)
      if (WordAt(answers, 8 * static_cast<std::size_t>(i) + 4) != 0)
        throw std::runtime_error("a record was refused");
    count -= records;
  }
  connection.Send(Word(0));
  if (!connection.ReceiveToEnd().empty()) throw std::runtime_error("more answers than records");
}

void AskTheTime(std::uint16_t port, int threads, int count) {
  const std::string record = Record(Invoke{.function = "CVCeGetSystemTime"}.Body());
  std::atomic<int> left = count;
  std::atomic<bool> failed = false;
  std::vector<std::thread> clients;
  for (int i = 0; i < threads; ++i) {
    clients.emplace_back([&] {
      try {
        while (left-- > 0) failed = failed || !AskOnce(port, record);
      } catch (const std::exception&) {
        failed = true;
      }
    });
  }
  for (std::thread& client : clients) client.join();
  if (failed) throw std::runtime_error("a request was not answered");
}

}  // namespace bench
