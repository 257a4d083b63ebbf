#include "handheld/messages/entry_id.h"

namespace ce::host {
namespace {

void PutNumber(EntryId& entryId, std::size_t offset, std::size_t bytes, std::uint64_t number) {
  for (std::size_t i = bytes; i-- > 0; number >>= 8) {
    entryId[offset + i] = static_cast<BYTE>(number);
  }
}

}  // namespace

EntryId MakeEntryId(DWORD objectType, std::int64_t store, std::int64_t id) {
  EntryId entryId{};
  PutNumber(entryId, 4, 4, objectType);
  PutNumber(entryId, 8, 4, static_cast<std::uint64_t>(store));
  PutNumber(entryId, 12, 8, static_cast<std::uint64_t>(id));
  return entryId;
}

}  // namespace ce::host
