// Where an export goes.
#pragma once

#include <filesystem>
#include <optional>
#include <ostream>
#include <streambuf>

#include "common/files/atomic_file.h"
#include "handheld/tool/report.h"

namespace tool {

// The file, which is there as a whole or not at all, or the report's output. A file that cannot be
// written throws files::Error, whatever of the stream is called.
class Output : private std::streambuf, public std::ostream {
 public:
  Output(const std::optional<std::filesystem::path>& file, const Report& report,
         files::Access access = files::Access::kByUmask);
  void Finish();

 private:
  int overflow(int c) override;
  std::streamsize xsputn(const char* bytes, std::streamsize count) override;

  const Report report_;
  std::optional<files::AtomicFile> file_;
};

}  // namespace tool
