// Messages and calls on a handheld, for the tests of the commands that treat them.
#pragma once

#include <string>

#include "tests/handheld/tool/maintenance_support.h"

namespace tool::testing {

// "type" is the backup's: 1 received, 2 sent, 3 a draft.
inline std::string Sms(int type, const std::string& address, const std::string& text,
                       const std::string& date = "1203083101250") {
  return "  <sms address=\"" + address + "\" date=\"" + date + "\" type=\"" + std::to_string(type) +
         "\" body=\"" + text + "\" read=\"1\" />\n";
}
inline std::string Backup(const std::string& messages) {
  return "<?xml version='1.0' encoding='UTF-8' ?>\n<smses>\n" + messages + "</smses>\n";
}
// "type": 1 incoming, 2 outgoing, 3 missed.
inline std::string CallElement(int type, const std::string& number,
                               const std::string& date = "1203083101250") {
  return "  <call number=\"" + number + "\" duration=\"75\" date=\"" + date + "\" type=\"" +
         std::to_string(type) + "\" presentation=\"1\" />\n";
}
inline std::string CallBackup(const std::string& calls) {
  return "<?xml version='1.0' encoding='UTF-8' ?>\n<calls>\n" + calls + "</calls>\n";
}

class MessageTest : public MaintenanceTest {
 protected:
  MessageTest() { Init({.zone = "UTC"}); }

  std::string Messages(bool json = true) { return Shown<formats::TextMessage>(json); }
  std::string Calls(bool json = true) { return Shown<formats::Call>(json); }
};

}  // namespace tool::testing
