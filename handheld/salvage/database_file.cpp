#include "handheld/salvage/database_file.h"

#include <system_error>

#include "handheld/base/fault.h"
#include "handheld/store/store_error.h"
#include "platform/status.h"

namespace ce::host {

HRESULT DatabaseFile::Open(const std::filesystem::path& path) {
  RETURN_IF_FAILED(FaultStatus("open:salvage"));
  std::error_code error;
  const auto size = std::filesystem::file_size(path, error);
  file_.open(path, std::ios::binary);
  if (error || !file_) return kStoreReadFault;
  pages_ = static_cast<PageNumber>(std::min<std::uintmax_t>(size / kPageSize, UINT32_MAX));
  return S_OK;
}

HRESULT DatabaseFile::Read(PageNumber number, const DatabasePage*& page) {
  if (number != current_) {
    current_ = 0;
    RETURN_IF_FAILED(ReadBytes(number, bytes_));
    page_ = ParsePage(bytes_, number == 1);
    current_ = number;
  }
  page = &page_;
  return S_OK;
}

HRESULT DatabaseFile::ReadRecord(const PageCell& cell, std::string& record) {
  record = cell.start;
  PageNumber next = cell.rest;
  // Each page is the rest of one record. Where chains meet, or lead back, that has its end.
  while (record.size() < cell.size) {
    if (!Has(next) || ++restsRead_ > 2 * std::uint64_t{pages_}) {
      record.clear();
      return S_OK;
    }
    RETURN_IF_FAILED(ReadBytes(next, rest_));
    next = static_cast<PageNumber>(BigEndian(std::string_view(rest_).substr(0, 4)));
    record.append(rest_, 4, cell.size - record.size());
  }
  // Behind its last page a chain ends.
  if (cell.rest != 0 && next != 0) record.clear();
  return S_OK;
}

HRESULT DatabaseFile::ReadHeader(std::size_t at, std::uint64_t& number) {
  number = 0;
  if (!Has(1)) return S_OK;
  std::string first;
  RETURN_IF_FAILED(ReadBytes(1, first));
  number = BigEndian(std::string_view(first).substr(at, 4));
  return S_OK;
}

HRESULT DatabaseFile::ReadBytes(PageNumber number, std::string& bytes) {
  RETURN_IF_FAILED(FaultStatus("read:salvage"));
  bytes.resize(kPageSize);
  // What the disk refuses once it may give the second time.
  for (int tries = 0; tries < 2; ++tries) {
    file_.clear();
    file_.seekg(static_cast<std::streamoff>(number - 1) * static_cast<std::streamoff>(kPageSize));
    if (file_.read(bytes.data(), kPageSize)) return S_OK;
  }
  return kStoreReadFault;
}

HRESULT MendHeader(const std::filesystem::path& path) {
  using namespace std::string_literals;
  std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
  // What it is, its pages' size, that it has a log, and bounds that never change.
  file.seekp(0);
  file << "SQLite format 3\0\x10\0\x02\x02\0\x40\x20\x20"s << std::flush;
  return file ? S_OK : kStoreWriteFault;
}

}  // namespace ce::host
