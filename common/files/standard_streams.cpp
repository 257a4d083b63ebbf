#include "common/files/standard_streams.h"

#include <iostream>
#include <iterator>

#include "common/files/atomic_file.h"
#include "common/files/error.h"

namespace files {

std::string ReadWholeInput(const std::filesystem::path& file) {
  if (!IsStandard(file)) return ReadWholeFile(file);
  std::string bytes{std::istreambuf_iterator<char>(std::cin), {}};
  if (std::cin.bad()) throw Error("cannot read the standard input");
  return bytes;
}

}  // namespace files
