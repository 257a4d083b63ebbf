#include "maintenance/output_file.h"

#include <utility>

namespace maintenance {
namespace fs = std::filesystem;

OutputFile::OutputFile(std::optional<fs::path> path, std::FILE* otherwise)
    : path_(std::move(path)), stream_(otherwise) {
  if (path_) {
    partial_ = *path_;
    partial_ += ".partial";
    stream_ = std::fopen(partial_.c_str(), "wb");
  }
  failed_ = stream_ == nullptr;
}

OutputFile::~OutputFile() {
  if (!path_ || !stream_) return;
  std::fclose(stream_);
  std::error_code ignored;
  fs::remove(partial_, ignored);
}

void OutputFile::Write(std::string_view bytes) {
  if (failed_) return;
  failed_ = std::fwrite(bytes.data(), 1, bytes.size(), stream_) != bytes.size();
}

bool OutputFile::Finish() {
  if (failed_) return false;
  if (!path_) return std::fflush(stream_) == 0;
  std::error_code error;
  const bool closed = std::fclose(std::exchange(stream_, nullptr)) == 0;
  if (closed) fs::rename(partial_, *path_, error);
  if (closed && !error) return true;
  fs::remove(partial_, error);
  return false;
}

}  // namespace maintenance
