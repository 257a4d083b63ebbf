// What a page shows: all that is on a handheld, or in a folder that is kept in step with one.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/calendar/zone.h"
#include "common/formats/items/appointment.h"
#include "common/formats/items/call.h"
#include "common/formats/items/contact.h"
#include "common/formats/items/message.h"
#include "common/formats/items/task.h"

namespace page {

struct Note {
  std::string path;  // with the handheld's separators
  std::string text;
};

struct Volume {
  std::string name;
  std::uint64_t total = 0, free = 0;  // bytes
};

// Text is UTF-8 with any line breaks; what is none of it is shown as U+FFFD. Everything is data:
// whatever it says, it is shown as it is.
struct Contents {
  std::string name;          // of the handheld or the folder
  std::string owner = {};    // empty for none
  std::string country = {};  // of phone::PhoneNumbers
  calendar::Zone zone;
  formats::local_seconds now;  // in that zone
  std::vector<formats::Contact> people = {};
  std::vector<formats::Appointment> appointments = {};
  std::vector<formats::Task> tasks = {};
  std::vector<formats::TextMessage> messages = {};
  std::vector<formats::Call> calls = {};
  std::vector<Note> notes = {};
  std::vector<Volume> volumes = {};
  std::vector<std::string> remarks = {};  // what could not be read, a line each
};

}  // namespace page
