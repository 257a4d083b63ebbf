#include "bench/floor/record_stream.h"

#include <sys/socket.h>

#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstring>
#include <stdexcept>

#include "bench/floor/store_values.h"

namespace floors {
namespace {

using std::chrono::days;

constexpr std::int64_t kSecondsPerDay = 86400;
constexpr std::int64_t kTicksPerSecond = 10'000'000;
constexpr std::chrono::sys_days kFileTimeEpoch = std::chrono::year{1601} / 1 / 1;
constexpr std::string_view kLengthPlace("\0\0\0\0", 4);
constexpr std::string_view kBegin = "<?XML version=\"1.0\" encoding=\"UTF-8\"?><root>";
constexpr std::string_view kEnd = "</root>";

void PutDigits(char* at, unsigned value, int count) {
  while (count-- > 0) {
    at[count] = static_cast<char>('0' + value % 10);
    value /= 10;
  }
}

constexpr std::array<bool, 256> MakeEscaped() {
  std::array<bool, 256> escaped{};
  for (const unsigned char c : {'&', '<', '>'}) escaped[c] = true;
  return escaped;
}
constexpr std::array<bool, 256> kEscaped = MakeEscaped();

}  // namespace

void Xml::Number(std::int64_t number) {
  char digits[24];
  const auto end = std::to_chars(std::begin(digits), std::end(digits), number).ptr;
  text_.append(digits, end);
}

void Xml::Text(std::string_view text) {
  std::size_t plain = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (!kEscaped[static_cast<unsigned char>(text[i])]) continue;
    text_.append(text, plain, i - plain);
    text_.append(text[i] == '&' ? "&amp;" : text[i] == '<' ? "&lt;" : "&gt;");
    plain = i + 1;
  }
  text_.append(text, plain);
}

void Xml::Element(std::string_view name, std::string_view text) {
  if (text.empty()) return;
  text_.append(1, '<').append(name).append(1, '>');
  Text(text);
  text_.append("</").append(name).append(1, '>');
}

void Xml::Element(std::string_view name, std::int64_t number) {
  text_.append(1, '<').append(name).append(1, '>');
  Number(number);
  text_.append("</").append(name).append(1, '>');
}

void Xml::Seconds(std::string_view name, std::int64_t seconds) {
  const std::int64_t day = seconds / kSecondsPerDay;
  const auto time = static_cast<unsigned>(seconds % kSecondsPerDay);
  const std::chrono::year_month_day date(kOleEpoch + days(day));
  char text[] = "yyyyMMddTHHmmss";
  PutDigits(text, static_cast<unsigned>(static_cast<int>(date.year())), 4);
  PutDigits(text + 4, static_cast<unsigned>(date.month()), 2);
  PutDigits(text + 6, static_cast<unsigned>(date.day()), 2);
  PutDigits(text + 9, time / 3600, 2);
  PutDigits(text + 11, time / 60 % 60, 2);
  PutDigits(text + 13, time % 60, 2);
  Element(name, std::string_view(text));
}

void Xml::Date(std::string_view name, double date) {
  if (date != kNoDate) Seconds(name, static_cast<std::int64_t>(date) * kSecondsPerDay);
}

void Xml::DateTime(std::string_view name, double date) {
  if (date != kNoDate) Seconds(name, std::llround(date * kSecondsPerDay));
}

void Xml::FileTime(std::string_view name, std::int64_t ticks) {
  constexpr std::int64_t kBetween = (kFileTimeEpoch - kOleEpoch).count() * kSecondsPerDay;
  Seconds(name, ticks / kTicksPerSecond + kBetween);
}

void Xml::Categories(std::string_view names) {
  if (names.empty()) return;
  text_.append("<CATEGORIES>");
  while (!names.empty()) {
    const std::size_t comma = names.find(',');
    text_.append("<CATEGORY>");
    Element("Name", names.substr(0, comma));
    text_.append("</CATEGORY>");
    if (comma == names.npos) break;
    names.remove_prefix(comma + 1);
    if (names.starts_with(' ')) names.remove_prefix(1);
  }
  text_.append("</CATEGORIES>");
}

void SendAll(int socket, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t sent = send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent <= 0) throw std::runtime_error("the other end has gone");
    bytes.remove_prefix(static_cast<std::size_t>(sent));
  }
}

RecordStream::RecordStream(int socket) : socket_(socket) {
  SendAll(socket, kLengthPlace);  // the status word
}

void RecordStream::Group(int first, int others) {
  if (!xml_.bytes().empty()) SendDocument();
  room_ = first;
  others_ = others;
}

Xml& RecordStream::Next() {
  if (room_ == 0) {
    SendDocument();
    room_ = others_;
  }
  if (xml_.bytes().empty()) {
    xml_.Raw(kLengthPlace);
    xml_.Raw(kBegin);
  }
  --room_;
  return xml_;
}

void RecordStream::End() {
  if (!xml_.bytes().empty()) SendDocument();
  SendAll(socket_, std::string(8, '\0'));
}

void RecordStream::SendDocument() {
  xml_.Raw(kEnd);
  std::string& bytes = xml_.bytes();
  const auto length = static_cast<std::uint32_t>(bytes.size() - kLengthPlace.size());
  std::memcpy(bytes.data(), &length, sizeof(length));
  SendAll(socket_, bytes);
  bytes.clear();
}

}  // namespace floors
