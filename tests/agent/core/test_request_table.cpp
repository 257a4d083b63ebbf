// The requests that the core's tests answer to.
#include <algorithm>
#include <cstring>
#include <mutex>

#include "agent/core/corvane_stream.h"
#include "agent/core/listener.h"
#include "agent/request_handler.h"
#include "platform/memory.h"
#include "tests/agent/core/core_support.h"

namespace corvane {
namespace testing {
namespace {

std::mutex g_lock;
Seen g_seen;

void Show(const char* entry, ce::DWORD inputCount, const ce::BYTE* input, ce::DWORD* outputCount,
          ce::BYTE** output, CorvaneStream* stream) {
  const std::lock_guard guard(g_lock);
  ++g_seen.calls;
  g_seen.entry = entry;
  g_seen.input.assign(reinterpret_cast<const char*>(input), inputCount);
  g_seen.hadStream = stream != nullptr;
  g_seen.outputCount = *outputCount;
  g_seen.hadOutput = *output != nullptr;
  g_seen.active = ActiveRequestCount;
}

void Answer(const std::string& bytes, ce::DWORD* outputCount, ce::BYTE** output) {
  *output = static_cast<ce::BYTE*>(ce::LocalAlloc(ce::LMEM_FIXED, bytes.size()));
  if (!*output) return;
  std::copy(bytes.begin(), bytes.end(), *output);
  *outputCount = static_cast<ce::DWORD>(bytes.size());
}

// Answers its input.
ce::HRESULT Echo(ce::DWORD inputCount, const ce::BYTE* input, ce::DWORD* outputCount,
                 ce::BYTE** output, CorvaneStream* stream) {
  Show("Echo", inputCount, input, outputCount, output, stream);
  Answer({reinterpret_cast<const char*>(input), inputCount}, outputCount, output);
  return *output ? ce::S_OK : ce::E_OUTOFMEMORY;
}

// Answers the status in its input, and an output with it.
ce::HRESULT Status(ce::DWORD inputCount, const ce::BYTE* input, ce::DWORD* outputCount,
                   ce::BYTE** output, CorvaneStream* stream) {
  Show("Status", inputCount, input, outputCount, output, stream);
  Answer("output", outputCount, output);
  ce::HRESULT status;
  std::memcpy(&status, input, sizeof(status));
  return status;
}

ce::HRESULT Second(ce::DWORD inputCount, const ce::BYTE* input, ce::DWORD* outputCount,
                   ce::BYTE** output, CorvaneStream* stream) {
  Show("Second", inputCount, input, outputCount, output, stream);
  return ce::S_OK;
}

ce::HRESULT Wait(ce::DWORD, const ce::BYTE*, ce::DWORD*, ce::BYTE**, CorvaneStream*) {
  ++g_waiting;
  g_release.acquire();
  --g_waiting;
  return ce::S_OK;
}

// Writes its input back, and leaves an output that nobody wants.
ce::HRESULT Say(ce::DWORD inputCount, const ce::BYTE* input, ce::DWORD* outputCount,
                ce::BYTE** output, CorvaneStream* stream) {
  Show("Say", inputCount, input, outputCount, output, stream);
  Answer("unwanted", outputCount, output);
  return stream->Write(input, inputCount, nullptr);
}

ce::HRESULT FailLate(ce::DWORD, const ce::BYTE*, ce::DWORD*, ce::BYTE**, CorvaneStream*) {
  return ce::E_UNEXPECTED;
}

// With its terminator as long as a name may be.
constexpr std::u16string_view kLongName = u"ANameOfThirtyOneCharactersInAll";
static_assert(kLongName.size() + 1 == kMaxNameLength);

constexpr RequestEntry kStreamed[] = {{u"Say", Say}, {u"FailLate", FailLate}};
constexpr RequestEntry kBuffered[] = {
    {u"Echo", Echo}, {u"Status", Status}, {u"Wait", Wait}, {u"Echo", Second}, {kLongName, Second},
};

}  // namespace

std::atomic<int> g_waiting{0};
std::counting_semaphore<> g_release{0};

Seen LastSeen() {
  const std::lock_guard guard(g_lock);
  return g_seen;
}

void ForgetSeen() {
  const std::lock_guard guard(g_lock);
  g_seen = {};
}

}  // namespace testing

std::span<const RequestEntry> StreamedRequests() {
  return testing::kStreamed;
}
std::span<const RequestEntry> BufferedRequests() {
  return testing::kBuffered;
}

}  // namespace corvane
