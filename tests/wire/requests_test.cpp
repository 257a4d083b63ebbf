// The clock and the log, asked for over the wire.
#include <gtest/gtest.h>
#include <signal.h>

#include <ctime>
#include <fstream>
#include <iterator>
#include <regex>

#include "common/text/little_endian.h"
#include "tests/support/wire/agent_process.h"

namespace corvane::testing {
namespace {

std::string SystemTime(std::initializer_list<int> fields) {
  std::string bytes;
  for (const int field : fields) bytes += HalfWord(static_cast<std::uint32_t>(field));
  return bytes;
}

int FieldAt(const std::string& time, std::size_t index) {
  return text::HalfWordAt(time, 2 * index);
}

class RequestsWire : public WireTest {
 protected:
  std::string Log(const char* name = "CorvaneLog.txt") {
    std::ifstream file(handheld().path() / "files" / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  std::uint32_t SetLogging(std::uint32_t level) {
    return CallBuffered({.function = "CVResetLoggingState", .input = Word(level)}).status;
  }
};

TEST_F(RequestsWire, TellsTheTimeOfTheClockInUtc) {
  const BufferedReply reply = CallBuffered({.function = "CVCeGetSystemTime", .input = "ignored"});
  ASSERT_EQ(reply.output.size(), 16u);
  std::tm told{};
  told.tm_year = FieldAt(reply.output, 0) - 1900;
  told.tm_mon = FieldAt(reply.output, 1) - 1;
  told.tm_mday = FieldAt(reply.output, 3);
  told.tm_hour = FieldAt(reply.output, 4);
  told.tm_min = FieldAt(reply.output, 5);
  told.tm_sec = FieldAt(reply.output, 6);
  const std::time_t time = timegm(&told);
  EXPECT_LE(std::abs(std::difftime(time, std::time(nullptr))), 120.0);
  EXPECT_EQ(told.tm_wday, FieldAt(reply.output, 2));
}

TEST_F(RequestsWire, SetsTheHandheldsClockAndKeepsIt) {
  const std::string time = SystemTime({2008, 2, 5, 15, 13, 45, 1, 0});
  EXPECT_EQ(CallBuffered({.function = "CVCeSetSystemTime", .input = time}).status, 0u);
  for (int run = 0; run < 2; ++run) {
    const std::string told = CallBuffered({.function = "CVCeGetSystemTime"}).output;
    EXPECT_EQ(FieldAt(told, 0), 2008);
    EXPECT_EQ(FieldAt(told, 1), 2);
    EXPECT_EQ(FieldAt(told, 3), 15);
    EXPECT_EQ(FieldAt(told, 4), 13);
    StopAgent(SIGTERM);
  }
}

TEST_F(RequestsWire, MovesTheTimeByTheDaylightBiasWhenTheStateChanges) {
  settings_.zone = "Europe/Berlin";
  const auto set = [this](std::initializer_list<int> fields) {
    EXPECT_EQ(CallBuffered({.function = "CVCeSetSystemTime", .input = SystemTime(fields)}).status,
              0u);
    return FieldAt(CallBuffered({.function = "CVCeGetSystemTime"}).output, 4);
  };
  set({2008, 1, 0, 15, 12, 0, 0, 0});  // whatever the state was: standard time from here on
  EXPECT_EQ(set({2008, 1, 0, 16, 12, 0, 0, 0}), 12) << "standard to standard";
  EXPECT_EQ(set({2008, 7, 0, 15, 12, 0, 0, 0}), 13) << "to daylight: minus a bias of -60 minutes";
  EXPECT_EQ(set({2008, 7, 0, 16, 12, 0, 0, 0}), 12) << "daylight to daylight";
  EXPECT_EQ(set({2008, 1, 0, 15, 12, 0, 0, 0}), 11) << "to standard: plus a bias of -60 minutes";
}

TEST_F(RequestsWire, RefusesATimeOfTheWrongSize) {
  for (const std::size_t size : {0u, 15u, 17u}) {
    EXPECT_EQ(
        CallBuffered({.function = "CVCeSetSystemTime", .input = std::string(size, '\x01')}).status,
        kInvalidArgument);
  }
}

TEST_F(RequestsWire, WritesNoLogUnlessAskedTo) {
  AddContacts(1);
  EXPECT_FALSE(std::filesystem::exists(handheld().path() / "files" / "CorvaneLog.txt"));
}

TEST_F(RequestsWire, LogsFromItsStartWhenTheRegistrySaysSo) {
  handheld().SetAgentValue(u"Logging", 1);
  ExpectServing();
  const std::string log = Log();
  const std::regex header(
      "^[0-9]{2}:[0-9]{2}:[0-9]{2}\\([0-9]+\\),thr 0x[0-9A-F]{8} : ={45}\r\n"
      "[0-9]{2}:[0-9]{2}:[0-9]{2}\\([0-9]+\\),thr 0x[0-9A-F]{8} : Log is started on "
      "[0-9]{2}\\.[0-9]{2}\\.[0-9]{4}, at [0-9]{2}:[0-9]{2}:[0-9]{2}:[0-9]{3}, executable: "
      "\\S+ \\(ProcID: 0x[0-9a-f]{8}\\), compile time : [A-Z][a-z]{2} [ 0-9][0-9] [0-9]{4} "
      "[0-9]{2}:[0-9]{2}:[0-9]{2}\r\n");
  EXPECT_TRUE(std::regex_search(log, header)) << log;
  for (const char* text :
       {"Corvane App Started", "Request coming in", "handleRequest", "inputCount = 0",
        "dllName = corvane", "functionName = CVCeGetSystemTime", "hr after send = 0"})
    EXPECT_NE(log.find(std::string(" : ") + text + "\r\n"), std::string::npos) << text;
}

TEST_F(RequestsWire, SwitchesLoggingOnAndRotatesTheFile) {
  EXPECT_EQ(SetLogging(1), 0u);
  ExpectServing();
  const std::string first = Log();
  EXPECT_NE(first.find("Log is started on"), std::string::npos);
  EXPECT_EQ(SetLogging(42), 0u);
  EXPECT_EQ(Log("CorvaneLogOld.txt").substr(0, first.size()), first);
  EXPECT_NE(Log("CorvaneLogOld.txt").find("Log finished"), std::string::npos);
}

TEST_F(RequestsWire, SwitchesLoggingOffAndKeepsTheFile) {
  SetLogging(1);
  ExpectServing();
  EXPECT_EQ(SetLogging(0), 0u);
  const std::string closed = Log();
  EXPECT_NE(closed.find("Log finished"), std::string::npos);
  ExpectServing();
  EXPECT_EQ(Log(), closed);
  EXPECT_EQ(Log("CorvaneLogOld.txt"), "");
}

TEST_F(RequestsWire, RemembersTheLoggingLevel) {
  SetLogging(1);
  StopAgent(SIGTERM);
  ExpectServing();
  EXPECT_NE(Log().find("Corvane App Started"), std::string::npos);
}

TEST_F(RequestsWire, RefusesALoggingLevelOfTheWrongSize) {
  for (const char* input : {"", "abc", "abcde"}) {
    EXPECT_EQ(CallBuffered({.function = "CVResetLoggingState", .input = input}).status,
              kInvalidArgument);
  }
}

TEST_F(RequestsWire, DumpsAnUploadToTheLog) {
  SetLogging(1);
  const std::string document = "<root><CONTACT><FIRST_NAME>Seen</FIRST_NAME></CONTACT></root>";
  Upload({document}, 1);
  const std::string log = Log();
  EXPECT_NE(log.find("***Binary data (" + std::to_string(document.size()) + " bytes)\r\n" +
                     document + "\r\n"),
            std::string::npos)
      << log;
  EXPECT_NE(log.find("***End binary data (written 2 bytes)\r\n"), std::string::npos);
}

TEST_F(RequestsWire, LogsTheQuitAndTheEnd) {
  SetLogging(1);
  {
    RawConnection quit = Connect();
    quit.Send(Record(Word(kQuit)));
    quit.FinishSending();
    quit.ReceiveToEnd();
  }
  Wake();
  EXPECT_EQ(WaitForAgent(), 0);
  const std::string log = Log();
  EXPECT_NE(log.find("Got Quit Request"), std::string::npos);
  EXPECT_NE(log.find("Corvane App Ending"), std::string::npos);
  EXPECT_NE(log.find("Log finished"), std::string::npos);
}

TEST_F(RequestsWire, BindsToTheAddressOfTheRegistryWhenTheHostHasIt) {
  handheld().SetAgentValue(u"Logging", 1);
  handheld().SetAgentValue(u"IPAddr", 0x01020304);  // 4.3.2.1: no address of this host
  ExpectServing();
  const std::string log = Log();
  EXPECT_NE(log.find("Got IPAddr from Registry: 0x01020304"), std::string::npos);
  EXPECT_EQ(log.find("Match found"), std::string::npos);
}

}  // namespace
}  // namespace corvane::testing
