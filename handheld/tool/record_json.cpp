#include "handheld/tool/record_json.h"

#include "common/formats/items/item_json.h"
#include "common/formats/json/message_json.h"

namespace tool {

using formats::Appointment;
using formats::Call;
using formats::Contact;
using formats::Task;
using formats::TextMessage;

std::string ToJson(const Contact& contact, std::int64_t oid) {
  return formats::ContactToJson(contact, static_cast<std::uint32_t>(oid));
}

std::string ToJson(const Appointment& appointment, std::int64_t oid) {
  return formats::AppointmentToJson(appointment, static_cast<std::uint32_t>(oid));
}

std::string ToJson(const Task& task, std::int64_t oid) {
  return formats::TaskToJson(task, static_cast<std::uint32_t>(oid));
}

std::string ToJson(const TextMessage& message, std::int64_t id) {
  return formats::MessageToJson(message, std::to_string(id));
}

std::string ToJson(const Call& call, std::int64_t id) {
  return formats::CallToJson(call, std::to_string(id));
}

}  // namespace tool
