#include "handheld/store/schema_pages.h"

#include <fstream>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace ce::host {
namespace {

constexpr std::size_t kPage = 4096;

// The database's file as https://www.sqlite.org/fileformat2.html describes it.
class DatabaseFile {
 public:
  explicit DatabaseFile(const std::filesystem::path& path)
      : file_(path, std::ios::binary | std::ios::in | std::ios::out) {}

  std::string ReadPage(std::size_t number) {
    std::string page(kPage, '\0');
    file_.seekg(Place(number));
    file_.read(page.data(), kPage);
    return page;
  }
  void WritePage(std::size_t number, const std::string& page) {
    file_.seekp(Place(number));
    file_.write(page.data(), kPage);
    file_.flush();
  }
  bool good() const { return file_.good(); }

 private:
  static std::streamoff Place(std::size_t number) {
    return static_cast<std::streamoff>((number - 1) * kPage);
  }

  std::fstream file_;
};

std::size_t BigEndian(std::string_view page, std::size_t at, std::size_t bytes) {
  std::size_t number = 0;
  for (std::size_t i = 0; i < bytes; ++i)
    number = number << 8 | static_cast<unsigned char>(page[at + i]);
  return number;
}

void SetBigEndian(std::string& page, std::size_t at, std::size_t number) {
  for (std::size_t i = 4; i-- > 0; number >>= 8) page[at + i] = static_cast<char>(number);
}

}  // namespace

bool MendSchema(const std::filesystem::path& damaged, const std::filesystem::path& fresh) {
  std::error_code error;
  const std::size_t pages = std::filesystem::file_size(damaged, error) / kPage;
  DatabaseFile from(fresh);
  DatabaseFile to(damaged);
  std::string first = from.ReadPage(1);
  constexpr std::size_t kTree = 100;  // where the page's part of the table begins
  if (error || !from.good() || first[kTree] != 5) return false;
  std::vector<std::size_t> children = {BigEndian(first, kTree + 8, 4)};
  for (std::size_t i = 0; i < BigEndian(first, kTree + 3, 2); ++i)
    children.push_back(BigEndian(first, BigEndian(first, kTree + 12 + 2 * i, 2), 4));
  for (const std::size_t child : children) {
    if (child > pages) return false;
    to.WritePage(child, from.ReadPage(child));
  }
  SetBigEndian(first, 28, pages);
  SetBigEndian(first, 32, 0);
  SetBigEndian(first, 36, 0);
  // Whether a write-ahead log belongs to it.
  std::filesystem::path log = damaged;
  log += "-wal";
  first[18] = first[19] = std::filesystem::exists(log, error) ? 2 : 1;
  to.WritePage(1, first);
  return to.good();
}

}  // namespace ce::host
