#include "desktop/merge/item.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "common/formats/items/identity.h"
#include "common/formats/items/normal_form.h"
#include "common/text/text.h"

namespace desktop {
namespace {

using formats::Appointment;
using formats::Contact;
using formats::Occurrence;
using formats::SeriesEnd;
using formats::Task;

constexpr std::string_view kAround = " \t\n";

void MakeCommon(std::string& text) {
  text = CommonText(std::move(text));
}

void MakeCommon(std::vector<std::string>& categories) {
  for (std::string& category : categories) MakeCommon(category);
  std::sort(categories.begin(), categories.end());
}

void MakeCommon(Occurrence& occurrence) {
  MakeCommon(occurrence.subject);
  MakeCommon(occurrence.location);
  MakeCommon(occurrence.body);
}

Contact CommonFormOf(Contact contact) {
  contact.uid.clear();
  for (std::string& field : contact.fields) MakeCommon(field);
  MakeCommon(contact.categories);
  return formats::WithFileAs(std::move(contact));
}

Appointment CommonFormOf(Appointment appointment) {
  appointment.uid.clear();
  MakeCommon(appointment);
  MakeCommon(appointment.categories);
  if (appointment.series) {
    for (formats::ChangedOccurrence& change : appointment.series->changed) {
      MakeCommon(change.occurrence);
    }
  }
  // The number of occurrences drops exceptions that are none, the last day is what is compared.
  return Normalized(Normalized(std::move(appointment), SeriesEnd::kCount), SeriesEnd::kDay);
}

Task CommonFormOf(Task task) {
  task.uid.clear();
  MakeCommon(task.subject);
  MakeCommon(task.body);
  MakeCommon(task.categories);
  return Normalized(std::move(task), SeriesEnd::kDay);
}

}  // namespace

ItemKind KindOf(const Item& item) {
  return static_cast<ItemKind>(item.index());
}

const std::string& UidOf(const Item& item) {
  return std::visit([](const auto& each) -> const std::string& { return each.uid; }, item);
}

void SetUid(Item& item, std::string uid) {
  std::visit([&](auto& each) { each.uid = std::move(uid); }, item);
}

std::string DisplayName(const Item& item) {
  return std::visit([](const auto& each) { return formats::DisplayName(each); }, item);
}

std::string CommonText(std::string text) {
  if (text.empty()) return text;  // as most fields are
  text = text::NormalizeLineBreaks(std::move(text));
  const std::size_t first = text.find_first_not_of(kAround);
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(kAround) + 1 - first);
}

Item CommonForm(Item item) {
  return std::visit([](auto& each) { return Item(CommonFormOf(std::move(each))); }, item);
}

bool SameText(std::string_view a, std::string_view b) {
  return a == b || CommonText(std::string(a)) == CommonText(std::string(b));
}

bool SameContent(const Item& a, const Item& b) {
  return CommonForm(a) == CommonForm(b);
}

std::string CommonHash(const Item& item) {
  return std::visit([](const auto& each) { return formats::ContentHash(each); }, CommonForm(item));
}

}  // namespace desktop
