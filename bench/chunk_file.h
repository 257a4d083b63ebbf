// The chunks of an upload in a file, as they go over the wire, so that whoever sends or reads them
// has them at once and the same.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string_view>
#include <vector>

namespace bench {

class ChunkFile {
 public:
  // Throws std::runtime_error when the file is no such file.
  explicit ChunkFile(const std::filesystem::path& path);
  ChunkFile(const ChunkFile&) = delete;
  ChunkFile& operator=(const ChunkFile&) = delete;
  ~ChunkFile();

  // A byte count of four bytes and the document.
  const std::vector<std::string_view>& chunks() const { return chunks_; }

 private:
  void* mapped_ = nullptr;
  std::size_t size_ = 0;
  std::vector<std::string_view> chunks_;
};

inline std::string_view DocumentOf(std::string_view chunk) {
  return chunk.substr(4);
}

}  // namespace bench
