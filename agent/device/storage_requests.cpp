#include "agent/device/storage_requests.h"

#include <array>
#include <cstring>
#include <string_view>

#include "agent/device/card_enumeration.h"
#include "platform/disk_space.h"
#include "platform/status.h"

namespace corvane {
namespace {

constexpr std::size_t kPathCharacters = 260;  // with the terminator
using PathBuffer = std::array<ce::WCHAR, kPathCharacters>;

bool GetCardPath(ce::LONG index, PathBuffer* path) {
  return corvane::GetCardPath(index, path->data(), static_cast<ce::DWORD>(path->size()));
}

// The path of the card whose number is the input; S_FALSE when there is none.
ce::HRESULT FindAskedCard(ce::DWORD inputCount, const ce::BYTE* input, PathBuffer* path) {
  ce::LONG index = 0;
  if (inputCount != sizeof(index) || !input) return ce::E_INVALIDARG;
  std::memcpy(&index, input, sizeof(index));
  if (index < 0) return ce::E_INVALIDARG;
  return GetCardPath(index, path) ? ce::S_OK : ce::S_FALSE;
}

}  // namespace

ce::HRESULT GetTotalSpace(ce::DWORD /*inputCount*/, const ce::BYTE* /*input*/,
                          ce::DWORD* outputCount, ce::BYTE** output, CorvaneStream* stream) {
  if (stream) return ce::E_INVALIDARG;
  ClearOutput(outputCount, output);
  SpaceBlock sum;
  // Kept from card to card: what cannot be asked counts like the card before it.
  ce::ULONGLONG total = 0;
  ce::ULONGLONG free = 0;
  const ce::LONG count = GetCardCount();
  for (ce::LONG index = 0; index < count; ++index) {
    PathBuffer path;
    if (!GetCardPath(index, &path)) continue;
    ce::GetDiskFreeSpaceExW(path.data(), &free, &total, nullptr);
    sum.total += total;
    sum.free += free;
  }
  return Answer(sum, outputCount, output);
}

ce::HRESULT GetVolumeCount(ce::DWORD /*inputCount*/, const ce::BYTE* /*input*/,
                           ce::DWORD* outputCount, ce::BYTE** output, CorvaneStream* stream) {
  if (stream) return ce::E_INVALIDARG;
  return Answer(GetCardCount(), outputCount, output);
}

ce::HRESULT GetCardSpace(ce::DWORD inputCount, const ce::BYTE* input, ce::DWORD* outputCount,
                         ce::BYTE** output, CorvaneStream* stream) {
  if (stream) return ce::E_INVALIDARG;
  ClearOutput(outputCount, output);
  PathBuffer path;
  const ce::HRESULT found = FindAskedCard(inputCount, input, &path);
  if (found != ce::S_OK) return found;
  SpaceBlock space;
  ce::GetDiskFreeSpaceExW(path.data(), &space.free, &space.total, nullptr);
  return Answer(space, outputCount, output);
}

ce::HRESULT GetCardDirectory(ce::DWORD inputCount, const ce::BYTE* input, ce::DWORD* outputCount,
                             ce::BYTE** output, CorvaneStream* stream) {
  if (stream) return ce::E_INVALIDARG;
  ClearOutput(outputCount, output);
  PathBuffer path;
  const ce::HRESULT found = FindAskedCard(inputCount, input, &path);
  if (found != ce::S_OK) return found;
  const std::size_t characters = std::u16string_view(path.data()).size() + 1;
  return AnswerBytes(path.data(), static_cast<ce::DWORD>(characters * sizeof(ce::WCHAR)),
                     outputCount, output);
}

ce::HRESULT CVCeGetDiskFreeSpaceEx(ce::DWORD inputCount, const ce::BYTE* input,
                                   ce::DWORD* outputCount, ce::BYTE** output,
                                   CorvaneStream* stream) {
  ClearOutput(outputCount, output);
  if (stream) return ce::E_INVALIDARG;
  PathBuffer path{};
  if (inputCount > (path.size() - 1) * sizeof(ce::WCHAR)) return ce::E_INVALIDARG;
  if (inputCount > 0) std::memcpy(path.data(), input, inputCount);
  path[inputCount / sizeof(ce::WCHAR)] = 0;
  auto* const space = NewOutput<SpaceBlock>();
  if (!space) return ce::E_OUTOFMEMORY;
  space->size = sizeof(*space);
  // Handed out whatever becomes of it; the count tells whether it is meant.
  *output = reinterpret_cast<ce::BYTE*>(space);
  if (!ce::GetDiskFreeSpaceExW(path.data(), &space->free, &space->total, nullptr)) {
    return ce::LastErrorStatus();
  }
  *outputCount = sizeof(*space);
  return ce::S_OK;
}

}  // namespace corvane
