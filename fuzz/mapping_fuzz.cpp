// Any bytes as the desktop's memory of a handheld: refused in so many words and left as it was, or
// taken in and written so that it reads the same.
#include <cstddef>
#include <cstdint>
#include <string>

#include "common/files/error.h"
#include "desktop/transfer/mapping.h"
#include "desktop/wire/error.h"
#include "fuzz/require.h"
#include "tests/support/temporary_directory.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const corvane::testing::TemporaryDirectory directory;
  const std::string before(reinterpret_cast<const char*>(data), size);
  directory.Write("map.json", before);
  const std::filesystem::path path = directory / "map.json";
  try {
    desktop::Mapping mapping(path);
    if (!mapping.items().empty()) {
      const desktop::MappedItem first = mapping.items().begin()->second;
      mapping.Remove(first.oid);
      mapping.Put(first);
    }
    mapping.Save();
  } catch (const desktop::Error&) {
    fuzz::Require(directory.Read("map.json") == before, "what is not understood is left alone");
    return 0;
  }
  const std::string saved = directory.Read("map.json");
  desktop::Mapping again(path);
  if (!again.items().empty()) again.Remove(again.items().begin()->first);
  fuzz::Require(directory.Read("map.json") == saved, "nothing is written before it is saved");
  return 0;
}
