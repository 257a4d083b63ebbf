// A database's file that may be damaged, page by page.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>

#include "handheld/salvage/database_page.h"
#include "platform/types.h"

namespace ce::host {

// A status is never that of damage, which is for the caller to see, but of a disk that refuses.
class DatabaseFile {
 public:
  [[nodiscard]] HRESULT Open(const std::filesystem::path& path);

  PageNumber pages() const { return pages_; }
  bool Has(PageNumber number) const { return number >= 1 && number <= pages_; }

  // Reads and parses a page that there is. It is valid until the next one is read.
  [[nodiscard]] HRESULT Read(PageNumber number, const DatabasePage*& page);
  // Reads the record of a cell of the last page that was read, whose rest may lie on others; that
  // page stays. Empty when it leads nowhere.
  [[nodiscard]] HRESULT ReadRecord(const PageCell& cell, std::string& record);
  // A number that the file's header has at this place, in 4 bytes.
  [[nodiscard]] HRESULT ReadHeader(std::size_t at, std::uint64_t& number);

 private:
  HRESULT ReadBytes(PageNumber number, std::string& bytes);

  std::ifstream file_;
  PageNumber pages_ = 0;
  PageNumber current_ = 0;
  std::string bytes_;
  DatabasePage page_;
  std::string rest_;
  std::uint64_t restsRead_ = 0;
};

// Puts right what of the file's header the database needs to begin with a file that has a
// write-ahead log.
[[nodiscard]] HRESULT MendHeader(const std::filesystem::path& path);

}  // namespace ce::host
