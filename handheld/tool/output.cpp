#include "handheld/tool/output.h"

#include <fmt/core.h>

namespace tool {

Output::Output(const std::optional<std::filesystem::path>& file, const Report& report,
               files::Access access)
    : std::ostream(static_cast<std::streambuf*>(this)), report_(report) {
  exceptions(std::ios::badbit);
  if (file) file_.emplace(*file, access);
}

void Output::Finish() {
  if (file_) file_->Commit();
}

int Output::overflow(int c) {
  const auto byte = static_cast<char>(c);
  xsputn(&byte, 1);
  return c;
}

std::streamsize Output::xsputn(const char* bytes, std::streamsize count) {
  const std::string_view text(bytes, static_cast<std::size_t>(count));
  file_ ? file_->Write(text) : fmt::print(report_.out, "{}", text);
  return count;
}

}  // namespace tool
