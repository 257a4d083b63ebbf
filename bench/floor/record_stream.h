// Records as documents on a socket: a status word, documents, the end.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace floors {

// XML as it is appended piece by piece.
class Xml {
 public:
  void Raw(std::string_view xml) { text_.append(xml); }
  void Number(std::int64_t number);
  // Escaped as in an element.
  void Text(std::string_view text);
  void Element(std::string_view name, std::string_view text);
  void Element(std::string_view name, std::int64_t number);
  // "yyyyMMddT000000" of an OLE date; nothing for none.
  void Date(std::string_view name, double date);
  // "yyyyMMddTHHmmss" of an OLE date, and of a file time.
  void DateTime(std::string_view name, double date);
  void FileTime(std::string_view name, std::int64_t ticks);
  // "<CATEGORIES>…" of names with commas between them; nothing for none.
  void Categories(std::string_view names);

  std::string& bytes() { return text_; }

 private:
  void Seconds(std::string_view name, std::int64_t secondsSinceOleEpoch);

  std::string text_;
};

// Sends everything or throws std::runtime_error.
void SendAll(int socket, std::string_view bytes);

// The documents of a download. Each goes out in one send.
class RecordStream {
 public:
  explicit RecordStream(int socket);

  // From here on the first document has `first` records and every other one `others`.
  void Group(int first, int others);
  // Where the next record goes.
  Xml& Next();
  void End();

 private:
  void SendDocument();

  const int socket_;
  Xml xml_;
  int room_ = 0;  // records that the open document still takes
  int others_ = 0;
};

}  // namespace floors
