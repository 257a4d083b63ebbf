// Request records, and requests whose answer is one reply record. docs/wire-protocol.md has the
// layouts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "desktop/wire/connection.h"

namespace desktop {

inline constexpr std::string_view kDownloadAll = "DownloadAllPIMRecords";
inline constexpr std::string_view kDownloadSpecific = "DownloadSpecificPIMRecords";
inline constexpr std::string_view kUpload = "UploadPIMRecords";
inline constexpr std::string_view kDeleteAll = "DeleteAllPIMRecords";
inline constexpr std::string_view kGetKeys = "GetDatabaseKeys";
inline constexpr std::string_view kGetSystemTime = "CVCeGetSystemTime";
inline constexpr std::string_view kSetSystemTime = "CVCeSetSystemTime";
inline constexpr std::string_view kResetLoggingState = "CVResetLoggingState";

// The kinds of records, by the wire's numbers.
enum class RecordKind : std::uint32_t {
  kAppointments = 0,
  kContacts = 1,
  kTasks = 2,
  kContacts2 = 3,  // contacts in their second form
  kCalls = 4,
  kMessages = 5,
};
// As the input of a request begins that is about a kind.
std::string KindInput(RecordKind kind);

// The most that any count on the wire may announce before it is taken for nonsense.
inline constexpr std::uint32_t kMostBytes = 256 * 1024 * 1024;

enum class AnswerMode : std::uint32_t { kBuffered = 0, kStreamed = 1 };

// The whole record with its length, to be sent in one piece: the agent reads a body once and drops
// what comes in two. Throws Error when a body of 1,024 bytes has no room for it.
std::string InvokeRecord(std::string_view function, std::string_view input, AnswerMode mode);
std::string QuitRecord();

// How many bytes of input a record for that function has room for.
std::size_t InputRoom(std::string_view function);

struct Reply {
  std::int32_t status = 0;
  std::string output;
};

// Opens a connection, asks, and gives the reply. Throws Error when there is none or it makes no
// sense; a status is the caller's to judge.
Reply Invoke(const ConnectionOptions& options, std::string_view function, std::string_view input);

// Sends the record of a streamed request, and reads the word that says whether it is served. Throw
// Error, the second when it is not.
void SendStreamRequest(Connection& connection, std::string_view function, std::string_view input);
void AwaitStream(Connection& connection, std::string_view function);

}  // namespace desktop
