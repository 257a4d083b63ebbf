#include "bench/floor/serve.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <map>
#include <stdexcept>
#include <thread>

#include "bench/floor/down.h"
#include "handheld/base/unique_fd.h"

namespace floors {
namespace {

using ce::host::UniqueFd;

UniqueFd Listen() {
  UniqueFd listener(socket(AF_INET, SOCK_STREAM, 0));
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof(address);
  auto* raw = reinterpret_cast<sockaddr*>(&address);
  if (bind(listener.get(), raw, size) != 0 || listen(listener.get(), SOMAXCONN) != 0 ||
      getsockname(listener.get(), raw, &size) != 0)
    throw std::runtime_error("cannot listen");
  std::printf("listening on 127.0.0.1:%d\n", ntohs(address.sin_port));
  std::fflush(stdout);
  return listener;
}

UniqueFd Accept(const UniqueFd& listener) {
  UniqueFd connection(accept(listener.get(), nullptr, nullptr));
  if (!connection) throw std::runtime_error("cannot accept");
  const int on = 1;
  setsockopt(connection.get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
  return connection;
}

// The length of a request, then its body; false when they do not come.
bool ReceiveRequest(const UniqueFd& connection) {
  std::uint32_t length = 0;
  std::array<char, 1024> body;
  if (recv(connection.get(), &length, sizeof(length), MSG_WAITALL) != sizeof(length)) return false;
  return length <= body.size() &&
         recv(connection.get(), body.data(), length, MSG_WAITALL) == static_cast<ssize_t>(length);
}

// The reply's header of five words, then eight half words of the time.
void SendTime(const UniqueFd& connection) {
  const std::time_t now = std::time(nullptr);
  std::tm time{};
  gmtime_r(&now, &time);
  const std::array<std::uint32_t, 5> header = {32, 0, 0, 0, 16};
  std::array<std::uint16_t, 8> fields{};
  int next = 0;
  for (const int value : {time.tm_year + 1900, time.tm_mon + 1, time.tm_wday, time.tm_mday,
                          time.tm_hour, time.tm_min, time.tm_sec})
    fields[next++] = static_cast<std::uint16_t>(value);
  std::array<char, sizeof(header) + sizeof(fields)> reply;
  std::memcpy(reply.data(), header.data(), sizeof(header));
  std::memcpy(reply.data() + sizeof(header), fields.data(), sizeof(fields));
  SendAll(connection.get(), {reply.data(), reply.size()});
}

void AnswerRequest(const UniqueFd& connection) {
  try {
    if (ReceiveRequest(connection)) SendTime(connection);
  } catch (const std::runtime_error&) {
    // The other end has gone.
  }
}

}  // namespace

void ServeDownloads(const std::string& kind, const std::string& store) {
  static const std::map<std::string, void (*)(const Database&, RecordStream&)> kSenders = {
      {"contacts", SendContacts}, {"appointments", SendAppointments},
      {"tasks", SendTasks},       {"messages", SendMessages},
      {"calls", SendCalls},
  };
  const auto send = kSenders.at(kind);
  const UniqueFd listener = Listen();
  for (;;) {
    const UniqueFd connection = Accept(listener);
    if (!ReceiveRequest(connection)) continue;
    const Database database(store);
    RecordStream stream(connection.get());
    send(database, stream);
    stream.End();
  }
}

void ServeRequests() {
  const UniqueFd listener = Listen();
  for (;;) std::thread(AnswerRequest, Accept(listener)).detach();
}

}  // namespace floors
