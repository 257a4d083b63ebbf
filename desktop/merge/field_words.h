// Values of items as people read them; empty for none.
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "common/formats/items/appointment.h"
#include "common/formats/items/contact.h"

namespace desktop {

// "Mobile telephone number".
std::string FieldWords(formats::ContactField field);

std::string Words(const std::string& text);
std::string Words(bool value);
std::string Words(const std::optional<std::chrono::year_month_day>& date);
std::string Words(const std::optional<std::chrono::local_days>& day);
std::string Words(const std::optional<std::chrono::local_seconds>& time);

// "2008-02-15 09:30 to 2008-02-15 10:00", "2008-02-15, all day".
std::string WhenWords(const formats::Occurrence& occurrence);
// "15 minutes before".
std::string ReminderWords(const std::optional<int>& minutes);
std::string BusyWords(int status);

}  // namespace desktop
