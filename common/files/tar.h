// Archives in the form of tar, as POSIX has it ("pax"): what everybody's tar reads, too.
#pragma once

#include <cstdint>
#include <functional>
#include <istream>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>

namespace files {

enum class EntryKind { kFile, kDirectory, kLink };

struct ArchiveEntry {
  std::string path;  // with '/' between names, relative
  EntryKind kind = EntryKind::kFile;
  std::uint64_t size = 0;     // of a file
  std::int64_t modified = 0;  // seconds since 1970
  std::string target = {};    // of a link
};

class ArchiveWriter {
 public:
  explicit ArchiveWriter(std::ostream& out) : out_(out) {}

  // A file's content follows by Write, neither more nor less than its size.
  void Begin(const ArchiveEntry& entry);
  void Write(std::string_view content);
  void Finish();

 private:
  void WriteHeader(const ArchiveEntry& entry, char type, const std::string& shortPath);
  void Fill();

  std::ostream& out_;
  std::uint64_t open_ = 0;     // bytes that the entry's content still wants
  std::uint64_t padding_ = 0;  // behind it
};

// Reads what ArchiveWriter wrote, and what other programs write in this form with files,
// directories and links alone. Throws Error for what is damaged, cut off or of another kind; what
// it takes of memory does not depend on what is claimed.
class ArchiveReader {
 public:
  explicit ArchiveReader(std::istream& in) : in_(in) {}

  // The next entry, what was left of the one before passed over; nothing at the end.
  std::optional<ArchiveEntry> Next();
  // At most so much of a file's content; empty at its end.
  std::string_view Read();

 private:
  void Skip();
  std::string ReadAttributes(std::uint64_t size);

  std::istream& in_;
  std::uint64_t left_ = 0;
  std::uint64_t padding_ = 0;
  std::string buffer_;
};

}  // namespace files
