// Where an export goes.
#pragma once

#include <filesystem>
#include <optional>
#include <ostream>
#include <streambuf>
#include <string_view>

#include "common/files/atomic_file.h"
#include "handheld/tool/report.h"

namespace tool {

// The file, which is there as a whole or not at all, or the report's output. A file that cannot be
// written throws files::Error.
class Output {
 public:
  Output(const std::optional<std::filesystem::path>& file, const Report& report);
  void Write(std::string_view bytes);
  void Finish();

 private:
  const Report report_;
  std::optional<files::AtomicFile> file_;
};

// An output as a stream. What the output throws comes out of the stream.
class OutputStream : public std::ostream {
 public:
  explicit OutputStream(Output& output);

 private:
  class Buffer : public std::streambuf {
   public:
    explicit Buffer(Output& output) : output_(output) {}

   private:
    int_type overflow(int_type c) override;
    std::streamsize xsputn(const char* bytes, std::streamsize count) override;

    Output& output_;
  };

  Buffer buffer_;
};

}  // namespace tool
