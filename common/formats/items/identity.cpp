#include "common/formats/items/identity.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <optional>
#include <random>
#include <utility>
#include <vector>

#include "common/formats/items/item_json.h"
#include "common/text/text.h"

namespace formats {
namespace {

constexpr std::uint64_t kPrime = 0x100000001B3;

template <typename Item>
std::string HashOf(const Item& item) {
  Digest digest;
  AddContent(item, [&](std::string_view piece) { digest.Add(piece); });
  return digest.Digits();
}

// Each part with its length in front, so that nothing runs into what follows.
class Key {
 public:
  explicit Key(std::string_view kind) { Add(kind); }
  void Add(std::string_view part) {
    digest_.Add(std::to_string(part.size()));
    digest_.Add(":");
    digest_.Add(part);
  }
  void Add(const std::optional<MessageTime>& time) {
    if (time) {
      const auto seconds = std::chrono::floor<std::chrono::seconds>(*time);
      Add(std::to_string(seconds.time_since_epoch().count()));
    } else {
      Add("none");
    }
  }
  std::string Digits() const { return digest_.Digits(); }

 private:
  Digest digest_;
};

// "+49 (171) 55-01" and "+491715501" are one. A word or an e-mail address stays as it is.
std::string BareNumber(const std::string& address) {
  constexpr std::string_view kNumberSigns = "0123456789+*# ()-./";
  if (address.find_first_not_of(kNumberSigns) != std::string::npos) return address;
  std::string bare;
  for (const char c : address) {
    if (std::string_view(" ()-./").find(c) == std::string_view::npos) bare += c;
  }
  return bare;
}

}  // namespace

// Two lanes of FNV-1a, the second with its bytes turned over, so that a chance collision of both is
// out of the question for an address book.
void Digest::Add(std::string_view bytes) {
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    first_ = (first_ ^ byte) * kPrime;
    second_ = (second_ ^ static_cast<unsigned char>(~byte)) * kPrime;
    second_ ^= second_ >> 29;
  }
}

std::string Digest::Digits() const {
  return fmt::format("{:016x}{:016x}", first_, second_);
}

Contact WithFileAs(Contact contact) {
  std::string& fileAs = contact[ContactField::kFileAs];
  if (!fileAs.empty()) return contact;
  const std::string& first = contact[ContactField::kFirstName];
  const std::string& last = contact[ContactField::kLastName];
  if (!first.empty() && !last.empty()) {
    fileAs = last + ", " + first;
  } else if (!first.empty() || !last.empty()) {
    fileAs = first + last;
  } else {
    fileAs = contact[ContactField::kCompanyName];
  }
  return contact;
}

Contact WithoutDerivedFileAs(Contact contact) {
  const std::string fileAs = std::exchange(contact[ContactField::kFileAs], {});
  if (WithFileAs(contact)[ContactField::kFileAs] != fileAs) contact[ContactField::kFileAs] = fileAs;
  return contact;
}

std::string ContentHash(std::string_view bytes) {
  Digest digest;
  digest.Add(bytes);
  return digest.Digits();
}

std::string ContentHash(const Contact& contact) {
  return HashOf(WithFileAs(contact));
}

std::string ContentHash(const Appointment& appointment) {
  return HashOf(appointment);
}

std::string ContentHash(const Task& task) {
  return HashOf(task);
}

std::string IdentityOf(const TextMessage& message) {
  Key key(message.messageClass == MessageClass::kMms ? "mms" : "sms");
  key.Add(message.time);
  key.Add(text::NormalizeLineBreaks(message.text));
  if (message.flags.fromMe) {
    std::vector<std::string> numbers;
    for (const MessageParty& party : message.to) numbers.push_back(BareNumber(party.address));
    std::sort(numbers.begin(), numbers.end());
    key.Add("to");
    for (const std::string& number : numbers) key.Add(number);
  } else {
    key.Add("from");
    key.Add(BareNumber(message.from.address));
  }
  return key.Digits();
}

std::string IdentityOf(const Call& call) {
  Key key("call");
  key.Add(call.start);
  key.Add(call.outgoing ? "to" : "from");
  key.Add(BareNumber(call.number));
  return key.Digits();
}

std::string NewUid() {
  std::random_device random;
  const auto word = [&] { return static_cast<std::uint32_t>(random()); };
  const std::uint32_t a = word();
  const std::uint32_t b = (word() & 0xFFFF0FFF) | 0x4000;      // version 4
  const std::uint32_t c = (word() & 0x3FFFFFFF) | 0x80000000;  // its variant
  const std::uint32_t d = word();
  return fmt::format("urn:uuid:{:08x}-{:04x}-{:04x}-{:04x}-{:04x}{:08x}", a, b >> 16, b & 0xFFFF,
                     c >> 16, c & 0xFFFF, d);
}

}  // namespace formats
