// Records as lines of JSON, with the numbers by which a handheld knows them.
#pragma once

#include <cstdint>
#include <string>

#include "common/formats/items/appointment.h"
#include "common/formats/items/call.h"
#include "common/formats/items/contact.h"
#include "common/formats/items/message.h"
#include "common/formats/items/task.h"

namespace tool {

std::string ToJson(const formats::Contact& contact, std::int64_t oid);
std::string ToJson(const formats::Appointment& appointment, std::int64_t oid);
std::string ToJson(const formats::Task& task, std::int64_t oid);
std::string ToJson(const formats::TextMessage& message, std::int64_t id);
std::string ToJson(const formats::Call& call, std::int64_t id);

}  // namespace tool
