#include "handheld/tool/output.h"

#include <fmt/core.h>

namespace tool {

Output::Output(const std::optional<std::filesystem::path>& file, const Report& report)
    : report_(report) {
  if (file) file_.emplace(*file);
}

void Output::Write(std::string_view bytes) {
  file_ ? file_->Write(bytes) : fmt::print(report_.out, "{}", bytes);
}

void Output::Finish() {
  if (file_) file_->Commit();
}

OutputStream::OutputStream(Output& output) : std::ostream(nullptr), buffer_(output) {
  rdbuf(&buffer_);
  exceptions(std::ios::badbit);
}

OutputStream::Buffer::int_type OutputStream::Buffer::overflow(int_type c) {
  if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
  const char byte = traits_type::to_char_type(c);
  output_.Write({&byte, 1});
  return c;
}

std::streamsize OutputStream::Buffer::xsputn(const char* bytes, std::streamsize count) {
  output_.Write({bytes, static_cast<std::size_t>(count)});
  return count;
}

}  // namespace tool
