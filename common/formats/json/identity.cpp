#include "common/formats/json/identity.h"

#include <fmt/format.h>

#include <cstdint>
#include <random>
#include <utility>

#include "common/formats/json/calendar_json.h"
#include "common/formats/json/contact_json.h"
#include "common/text/text.h"

namespace formats {
namespace {

constexpr std::uint64_t kPrime = 0x100000001B3;

void Normalize(std::string& text) {
  text = NormalizeLineBreaks(std::move(text));
}

void NormalizeTexts(Occurrence& occurrence) {
  Normalize(occurrence.subject);
  Normalize(occurrence.location);
  Normalize(occurrence.body);
}

}  // namespace

// Two lanes of FNV-1a, the second with its bytes turned over, so that a chance collision of both is
// out of the question for an address book.
std::string ContentHash(std::string_view bytes) {
  std::uint64_t first = 0xCBF29CE484222325;
  std::uint64_t second = 0x6C62272E07BB0142;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    first = (first ^ byte) * kPrime;
    second = (second ^ static_cast<unsigned char>(~byte)) * kPrime;
    second ^= second >> 29;
  }
  return fmt::format("{:016x}{:016x}", first, second);
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

std::string ContentHash(const Contact& contact) {
  return ContentHash(ContactToJson(WithFileAs(contact), 0));
}

std::string ContentHash(const Appointment& appointment) {
  Appointment plain = appointment;
  plain.uid.clear();
  NormalizeTexts(plain);
  for (std::string& category : plain.categories) Normalize(category);
  if (plain.series) {
    for (ChangedOccurrence& change : plain.series->changed) NormalizeTexts(change.occurrence);
  }
  return ContentHash(AppointmentToJson(plain, 0));
}

std::string ContentHash(const Task& task) {
  Task plain = task;
  plain.uid.clear();
  Normalize(plain.subject);
  Normalize(plain.body);
  for (std::string& category : plain.categories) Normalize(category);
  return ContentHash(TaskToJson(plain, 0));
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
