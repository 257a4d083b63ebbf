// Messages and calls on a handheld, for the tests of the commands that treat them.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "handheld/tool/import_files.h"
#include "handheld/tool/show_messages.h"
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

inline std::size_t Count(const std::string& text, const std::string& what) {
  std::size_t count = 0;
  for (std::size_t at = text.find(what); at != text.npos; at = text.find(what, at + 1)) ++count;
  return count;
}

class MessageTest : public MaintenanceTest {
 protected:
  MessageTest() { Init({.zone = "UTC"}); }

  Outcome Import(const std::vector<std::filesystem::path>& files,
                 const ImportOptions& options = {}) {
    Session session(HandheldPath());
    return Run([&](const Report& report) { return ImportFiles(session, files, options, report); });
  }
  std::string Messages(bool json = true) {
    Capture capture;
    Session session(HandheldPath());
    ShowMessages(session, json, capture.report());
    return capture.Out();
  }
  std::string Calls(bool json = true) {
    Capture capture;
    Session session(HandheldPath());
    ShowCalls(session, json, capture.report());
    return capture.Out();
  }
  // What the command says is in out_ and err_ then.
  template <typename Command>
  Outcome Run(Command command) {
    Capture capture;
    const Outcome outcome = command(capture.report());
    out_ = capture.Out();
    err_ = capture.Err();
    return outcome;
  }

  std::string out_, err_;
};

}  // namespace tool::testing
