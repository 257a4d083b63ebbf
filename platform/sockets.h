// Winsock 1.1 as far as the agent uses it. Failures set the thread's last error (10000 and up).
#pragma once

#include <cstdlib>

#include "platform/types.h"

namespace ce {

using SOCKET = std::uintptr_t;  // never 0 for an open socket
inline constexpr SOCKET INVALID_SOCKET = ~SOCKET{0};
inline constexpr INT SOCKET_ERROR = -1;

// The C library may have macros of these names; here they are the handheld's.
#undef AF_INET
#undef SOCK_STREAM
#undef FD_SETSIZE
inline constexpr INT AF_INET = 2;
inline constexpr INT SOCK_STREAM = 1;
inline constexpr UINT FD_SETSIZE = 64;
inline constexpr INT MSG_PARTIAL = 0x8000;

inline constexpr DWORD WSAEBADF = 10009;
inline constexpr DWORD WSAEMFILE = 10024;
inline constexpr DWORD WSAENOTSOCK = 10038;
inline constexpr DWORD WSAEADDRINUSE = 10048;
inline constexpr DWORD WSAEADDRNOTAVAIL = 10049;
inline constexpr DWORD WSAECONNRESET = 10054;
inline constexpr DWORD WSAETIMEDOUT = 10060;

struct WSADATA {
  WORD wVersion;
  WORD wHighVersion;
};
struct in_addr {
  DWORD s_addr;  // network byte order
};
struct sockaddr_in {
  WORD sin_family;
  WORD sin_port;  // network byte order
  in_addr sin_addr;
  char sin_zero[8];
};
static_assert(sizeof(sockaddr_in) == 16);
struct fd_set {
  UINT fd_count;
  SOCKET fd_array[FD_SETSIZE];
};
struct timeval {
  LONG tv_sec;
  LONG tv_usec;
};
struct hostent {
  const char* h_name;
  char** h_aliases;
  short h_addrtype;
  short h_length;
  char** h_addr_list;  // ends with null; each of h_length bytes, network byte order
};

constexpr WORD HostToNetworkShort(WORD value) {
  return static_cast<WORD>(value << 8 | value >> 8);
}

// 0, or an error code.
INT WSAStartup(WORD version, WSADATA* data);
SOCKET socket(INT family, INT type, INT protocol);
// Port 2005 of any address stands for where the host's user asked the agent to listen; any other
// address is bound as named.
INT bind(SOCKET socket, const sockaddr_in* address, INT length);
INT listen(SOCKET socket, INT backlog);
// `read` keeps only its ready members; the other sets and `sockets` are not used.
INT select(INT sockets, fd_set* read, fd_set* write, fd_set* error, const timeval* timeout);
SOCKET accept(SOCKET socket, sockaddr_in* address, INT* length);
// 0 at the end of the connection. A peer that is silent for the handheld's limit counts as gone.
INT recv(SOCKET socket, void* buffer, INT bytes, INT flags);
// With MSG_PARTIAL the rest of the message follows at once with the next send: a few bytes may wait
// for it, so that both leave together. They leave before anything else is done with the socket.
INT send(SOCKET socket, const void* buffer, INT bytes, INT flags);
INT closesocket(SOCKET socket);
INT gethostname(char* name, INT bytes);
// Valid until the calling thread's next call; null when the name is unknown.
const hostent* gethostbyname(const char* name);

}  // namespace ce
