#include "desktop/records/wire_losses.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <optional>
#include <string_view>

#include "common/calendar/wall_time.h"
#include "common/text/xml_text.h"
#include "desktop/records/recurrence_xml.h"
#include "desktop/records/wire_values.h"

namespace desktop {
namespace {

using calendar::Zone;
using formats::ContactField;
using formats::Occurrence;
using namespace std::chrono;

constexpr std::string_view kControl = "control characters are left out, the wire cannot carry them";

bool IsCarried(ContactField field) {
  return field != ContactField::kOfficeLocation && field != ContactField::kCarTelephoneNumber &&
         field != ContactField::kAssistantTelephoneNumber;
}

void AddControl(std::string_view name, const std::string& text, std::vector<std::string>& losses) {
  if (text::HasWhatXmlLeavesOut(text)) losses.push_back(fmt::format("{}: {}", name, kControl));
}

void AddControl(const std::vector<std::string>& categories, std::vector<std::string>& losses) {
  if (std::any_of(categories.begin(), categories.end(), text::HasWhatXmlLeavesOut)) {
    losses.push_back(fmt::format("Categories: {}", kControl));
  }
}

std::string TimeText(local_seconds time) {
  std::string text = formats::IsoDateTime(time).substr(0, 16);
  text[10] = ' ';
  return text;
}

// A time in the hour that a change to daylight saving time leaves out.
void AddShift(std::string_view name, std::optional<local_seconds> time, const Zone& zone,
              std::vector<std::string>& losses) {
  if (!time) return;
  const local_seconds kept = zone.FromWireUtc(zone.ToWireUtc(*time));
  if (kept == *time) return;
  losses.push_back(fmt::format("{}: {} is no time on the handheld's clock, it becomes {}", name,
                               TimeText(*time), TimeText(kept)));
}

void AddOccurrence(const Occurrence& occurrence, const Zone& zone,
                   std::vector<std::string>& losses) {
  AddControl("Subject", occurrence.subject, losses);
  AddControl("Location", occurrence.location, losses);
  AddControl("Body", occurrence.body, losses);
  if (occurrence.allDay) return;
  AddShift("Start", occurrence.start, zone, losses);
  AddShift("End", occurrence.end, zone, losses);
}

}  // namespace

std::vector<std::string> WireLosses(const formats::Contact& contact) {
  std::vector<std::string> losses;
  for (std::size_t i = 0; i < formats::kContactFieldCount; ++i) {
    const auto field = static_cast<ContactField>(i);
    const std::string_view name = formats::ContactFieldName(field);
    if (IsCarried(field)) {
      AddControl(name, contact[field], losses);
    } else if (!contact[field].empty()) {
      losses.push_back(fmt::format("{}: the wire does not carry it", name));
    }
  }
  AddControl(contact.categories, losses);
  return losses;
}

std::vector<std::string> WireLosses(const formats::Appointment& appointment, const Zone& zone) {
  std::vector<std::string> losses;
  AddOccurrence(appointment, zone, losses);
  AddControl(appointment.categories, losses);
  if (!appointment.series) return losses;
  for (const formats::ChangedOccurrence& change : appointment.series->changed) {
    std::vector<std::string> ofChange;
    AddOccurrence(change.occurrence, zone, ofChange);
    for (const std::string& loss : ofChange) {
      losses.push_back(
          fmt::format("occurrence of {}: {}", TimeText(change.original).substr(0, 10), loss));
    }
  }
  return losses;
}

std::vector<std::string> WireLosses(const formats::Task& task) {
  std::vector<std::string> losses;
  AddControl("Subject", task.subject, losses);
  AddControl("Body", task.body, losses);
  AddControl(task.categories, losses);
  if (task.reminder && !task.due) {
    losses.emplace_back(
        "ReminderTime: the wire carries it only for a task with a due date, the reminder is left "
        "out");
  } else if (task.reminder && floor<minutes>(*task.reminder) != *task.reminder) {
    losses.emplace_back("ReminderTime: its seconds are left out, the wire carries minutes");
  }
  if (task.completed) {
    losses.emplace_back(
        "DateCompleted: the wire does not carry it, the handheld takes the day on which it learns "
        "of it");
  }
  return losses;
}

std::vector<std::string> RecordLosses(const XmlElement& record) {
  std::vector<std::string> losses;
  if (ChildIsTrue(record, "BodyInk")) {
    losses.emplace_back("BodyInk: the wire does not carry the handwriting of its notes");
  }
  if (!ChildIsTrue(record, "IS_RECURRING")) return losses;
  const XmlElement* const recurrence = record.Child("RECURRENCE");
  if (recurrence == nullptr || !PatternFromXml(*recurrence)) {
    losses.emplace_back("recurrence: it cannot be understood, only the first time is kept");
  }
  return losses;
}

}  // namespace desktop
