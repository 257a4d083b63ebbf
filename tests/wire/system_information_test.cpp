// What the agent and the handheld say of themselves over the wire.
#include <gtest/gtest.h>

#include "tests/support/wire/agent_process.h"

namespace corvane::testing {
namespace {

std::string Bytes(std::initializer_list<int> values) {
  return std::string(values.begin(), values.end());
}

class SystemInformationWire : public WireTest {
 protected:
  static void ExpectOutput(const BufferedReply& reply, const std::string& output) {
    EXPECT_EQ(reply.totalLength, 16 + output.size());
    EXPECT_EQ(reply.reserved, 0u);
    EXPECT_EQ(reply.status, 0u);
    EXPECT_EQ(reply.statusAgain, 0u);
    EXPECT_EQ(reply.outputCount, output.size());
    EXPECT_EQ(reply.output, output);
  }
};

TEST_F(SystemInformationWire, SpeaksTheseBytes) {
  RawConnection connection = Connect();
  connection.Send(Bytes({64, 0, 0, 0}) +                           // the body's length
                  Bytes({69, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}) +   // invoke
                  Bytes({2, 0, 0, 0, 'c', 0, 0, 0, 0, 0, 0, 0}) +  // library
                  Bytes({14, 0, 0, 0}) + Utf16("GetDLLVersion") +  // function
                  Bytes({0, 0}) +                                  // its terminator
                  Bytes({0, 0, 0, 0}) +                            // no input
                  Bytes({0, 0, 0, 0}));                            // stream flag
  connection.FinishSending();
  EXPECT_EQ(connection.ReceiveToEnd(), Bytes({68, 0, 0, 0, 0, 0, 0, 0}) +  // total length, reserved
                                           Bytes({0, 0, 0, 0, 0, 0, 0, 0}) +  // status, twice
                                           Bytes({52, 0, 0, 0}) +             // output count
                                           Bytes({52, 0, 0, 0, 4, 0, 0, 0, 12, 0, 0, 0}) +
                                           "Tue Jun 26 10:41:20 2007" + std::string(16, '\0'));
}

TEST_F(SystemInformationWire, TellsTheSameVersionWhateverTheInput) {
  const BufferedReply plain = CallBuffered({.function = "GetDLLVersion"});
  const BufferedReply asked = CallBuffered({.function = "GetDLLVersion", .input = "anything"});
  EXPECT_EQ(plain.output.size(), 52u);
  ExpectOutput(asked, plain.output);
}

TEST_F(SystemInformationWire, TellsTheHandheldsLanguage) {
  settings_.language = 0x0411;
  ExpectOutput(CallBuffered({.function = "CVCeGetSystemDefaultLangID"}), Word(0x0411));
}

TEST_F(SystemInformationWire, TellsEnglishUnlessTheHandheldWasMadeOtherwise) {
  ExpectOutput(CallBuffered({.function = "CVCeGetSystemDefaultLangID", .input = "x"}),
               Word(0x0409));
}

TEST_F(SystemInformationWire, IsNoStreamedRequest) {
  for (const char* name : {"GetDLLVersion", "CVCeGetSystemDefaultLangID"}) {
    RawConnection connection = Connect();
    connection.Send(Record(Invoke{.function = name, .streamFlag = 1}.Body()));
    EXPECT_EQ(connection.ReceiveToEnd(), Word(127)) << name;
  }
}

TEST_F(SystemInformationWire, DoesNotListExitCodesAndTheAvantGoClient) {
  for (const char* name : {"CVCeGetExitCodeProcess", "CVCeStartAvantGoSync"}) {
    ExpectOutput(CallBuffered({.function = name, .input = Word(0x42)}), "");
  }
}

}  // namespace
}  // namespace corvane::testing
