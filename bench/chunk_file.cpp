#include "bench/chunk_file.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <stdexcept>

#include "common/text/little_endian.h"
#include "handheld/base/unique_fd.h"

namespace bench {

ChunkFile::ChunkFile(const std::filesystem::path& path) {
  const ce::host::UniqueFd file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  struct stat status {};
  if (fstat(file.get(), &status) != 0) throw std::runtime_error("no file " + path.string());
  size_ = static_cast<std::size_t>(status.st_size);
  mapped_ = mmap(nullptr, size_, PROT_READ, MAP_PRIVATE | MAP_POPULATE, file.get(), 0);
  if (mapped_ == MAP_FAILED) throw std::runtime_error("cannot map " + path.string());
  std::string_view rest(static_cast<const char*>(mapped_), size_);
  while (rest.size() >= 4) {
    const std::size_t length = 4 + std::size_t{text::WordAt(rest, 0)};
    if (length > rest.size()) break;
    chunks_.push_back(rest.substr(0, length));
    rest.remove_prefix(length);
  }
  if (!rest.empty()) throw std::runtime_error(path.string() + " ends within a chunk");
}

ChunkFile::~ChunkFile() {
  munmap(mapped_, size_);
}

}  // namespace bench
