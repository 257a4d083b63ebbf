// A connection that speaks bytes: knows sockets and nothing of the protocol's meaning.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace corvane::testing {

class RawConnection {
 public:
  // Throws std::runtime_error when nobody listens.
  explicit RawConnection(std::uint16_t port, const std::string& address = "127.0.0.1");
  ~RawConnection();
  RawConnection(RawConnection&& other) noexcept;
  RawConnection(const RawConnection&) = delete;
  RawConnection& operator=(const RawConnection&) = delete;

  void Send(std::string_view bytes);  // in one piece
  void FinishSending();               // closes this end's sending side
  // Exactly this many bytes; fewer when the connection ends first.
  std::string Receive(std::size_t bytes);
  std::string ReceiveToEnd();
  // What has come, at most `room` bytes; waits for the first. 0 when the connection has ended,
  // be it by a reset: what the agent has not read turns its closing into one.
  std::size_t ReceiveSome(char* to, std::size_t room);
  std::uint32_t ReceiveWord();  // little-endian; throws when the connection ends first

 private:
  int socket_;
};

}  // namespace corvane::testing
