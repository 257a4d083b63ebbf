// Any bytes as an archive: the reader takes them or says why not, and what it has taken can be
// written and read again without a loss.
#include <cstdint>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "common/files/error.h"
#include "common/files/tar.h"
#include "fuzz/require.h"

namespace {

using fuzz::Require;
using Members = std::vector<std::pair<files::ArchiveEntry, std::string>>;

Members ReadMembers(const std::string& bytes) {
  std::istringstream in(bytes);
  files::ArchiveReader reader(in);
  Members members;
  while (const auto entry = reader.Next()) {
    members.emplace_back(*entry, std::string());
    for (auto piece = reader.Read(); !piece.empty(); piece = reader.Read())
      members.back().second += piece;
  }
  return members;
}

std::string WriteMembers(const Members& members) {
  std::ostringstream out;
  files::ArchiveWriter writer(out);
  for (const auto& [entry, content] : members) {
    writer.Begin(entry);
    writer.Write(content);
  }
  writer.Finish();
  return out.str();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Members members;
  try {
    members = ReadMembers({reinterpret_cast<const char*>(data), size});
  } catch (const files::Error&) {
    return 0;
  }
  const Members again = ReadMembers(WriteMembers(members));
  Require(again.size() == members.size());
  for (std::size_t i = 0; i < members.size(); ++i) {
    Require(again[i].first.kind == members[i].first.kind);
    Require(again[i].second == members[i].second);
  }
  return 0;
}
