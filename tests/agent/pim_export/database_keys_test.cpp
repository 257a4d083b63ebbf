#include "agent/pim_export/database_keys.h"

#include <gmock/gmock.h>

#include "handheld/base/fault.h"
#include "platform/memory.h"
#include "tests/support/fault_runs.h"
#include "tests/support/golden.h"
#include "tests/support/pim_requests.h"

namespace corvane::testing {
namespace {

using namespace ce;
using host::FaultPlan;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr LANGID kJapanese = 0x0411;

class DatabaseKeys : public PimTest {
 protected:
  struct Answer {
    HRESULT status = 0;
    std::string output;
    bool hasBlock = false;
  };
  static Answer Run(const std::string& input, CorvaneStream* stream = nullptr) {
    DWORD bytes = 0;
    BYTE* block = nullptr;
    Answer answer;
    answer.status =
        GetDatabaseKeys(static_cast<DWORD>(input.size()),
                        reinterpret_cast<const BYTE*>(input.data()), &bytes, &block, stream);
    const LocalPtr<BYTE> owned(block);
    answer.hasBlock = block != nullptr;
    if (block) answer.output.assign(reinterpret_cast<const char*>(block), bytes);
    EXPECT_EQ(answer.hasBlock, bytes > 0);
    return answer;
  }
  static std::string Keys(DWORD kind) {
    const Answer answer = Run(Word(kind));
    EXPECT_EQ(answer.status, S_OK);
    return answer.output;
  }
  static std::size_t Count(const std::string& document) { return Occurrences(document, "/>"); }
  static void ExpectRefused(const Answer& answer, HRESULT status = E_INVALIDARG) {
    EXPECT_EQ(answer.status, status);
    EXPECT_FALSE(answer.hasBlock);
  }
};

TEST_F(DatabaseKeys, NamesTheFieldsOfAppointments) {
  EXPECT_TRUE(EqualsGolden("keys_appointment.xml", Keys(0)));
  EXPECT_EQ(Count(Keys(0)), 14u);
}

TEST_F(DatabaseKeys, NamesTheFieldsOfContacts) {
  EXPECT_TRUE(EqualsGolden("keys_contact.xml", Keys(1)));
  EXPECT_EQ(Count(Keys(1)), 43u);
}

TEST_F(DatabaseKeys, NamesTheYomiFieldsOnAJapaneseSystem) {
  handheld_.SetLanguage(kJapanese);
  EXPECT_TRUE(EqualsGolden("keys_contact_japanese.xml", Keys(1)));
  EXPECT_EQ(Count(Keys(1)), 46u);
}

TEST_F(DatabaseKeys, NamesTheFieldsOfTasks) {
  EXPECT_TRUE(EqualsGolden("keys_task.xml", Keys(2)));
  EXPECT_EQ(Count(Keys(2)), 15u);
}

TEST_F(DatabaseKeys, NamesTheSameFieldsForTheSecondFormOfContacts) {
  EXPECT_EQ(Keys(3), Keys(1));
  handheld_.SetLanguage(kJapanese);
  EXPECT_EQ(Keys(3), Keys(1));
}

TEST_F(DatabaseKeys, PutsTheCategoriesOfContactsBehindTheWebPage) {
  EXPECT_THAT(Keys(1), HasSubstr("<CHILDREN/><BUSINESS_WEB_PAGE/><CATEGORIES/><PHONE_BUSINESS2/>"));
}

TEST_F(DatabaseKeys, RefusesKindsThatLiveInNoFolder) {
  for (const DWORD kind : {4u, 5u, 6u, 0xFFFFFFFFu}) ExpectRefused(Run(Word(kind)));
}

TEST_F(DatabaseKeys, RefusesAnInputOfAnotherSize) {
  ExpectRefused(Run(""));
  ExpectRefused(Run(Word(1).substr(0, 3)));
  ExpectRefused(Run(Words({1, 1})));
}

TEST_F(DatabaseKeys, RefusesAStream) {
  CorvaneStream stream;
  ExpectRefused(Run(Word(1), &stream));
}

TEST_F(DatabaseKeys, AnswersTheFailureOfAnyStepWithoutOutput) {
  for (const char* call :
       {"CoCreateInstance", "QueryInterface", "IObjectSafety::GetInterfaceSafetyOptions",
        "IObjectSafety::SetInterfaceSafetyOptions", "IXMLDOMDocument::put_validateOnParse",
        "IXMLDOMDocument::put_resolveExternals", "IXMLDOMDocument::put_preserveWhiteSpace",
        "IXMLDOMDocument::createElement", "IXMLDOMDocument::save"}) {
    const auto plan = FaultPlan::FailCalls(call, 0x80004005);
    ExpectRefused(Run(Word(0)), E_FAIL);
    EXPECT_TRUE(plan.fired()) << call;
  }
}

TEST_F(DatabaseKeys, SucceedsWithoutOutputWhenMemoryRunsOutForIt) {
  const std::uint64_t blocks = [] {
    const auto plan = FaultPlan::CountOnly("LocalAlloc");
    Run(Word(0));
    return plan.calls();
  }();
  // The output's is the last.
  const auto plan = FaultPlan::FailNthCall("LocalAlloc", blocks, ERROR_NOT_ENOUGH_MEMORY);
  const Answer answer = Run(Word(0));
  EXPECT_TRUE(plan.fired());
  EXPECT_EQ(answer.status, S_OK);
  EXPECT_FALSE(answer.hasBlock);
}

TEST_F(DatabaseKeys, HasAWholeListOrNoneWhicheverCallFails) {
  const std::string whole = Body(Keys(1));
  const auto calls = FailEachCall(
      ERROR_NOT_ENOUGH_MEMORY, [] { return Run(Word(1)); },
      [&](const Answer& answer, const std::string& call) {
        if (answer.status < 0) {
          EXPECT_FALSE(answer.hasBlock);
        }
        if (call.empty()) {
          EXPECT_EQ(answer.status, S_OK);
        }
        if (answer.hasBlock) {
          EXPECT_EQ(Body(answer.output), whole);
        }
      });
  EXPECT_GT(calls, 90u);
}

TEST_F(DatabaseKeys, LogsTheKind) {
  SwitchLogOn();
  for (const DWORD kind : {0u, 1u, 2u, 3u}) Run(Word(kind));
  const std::string begin = "Starting GetDatabaseKeys";
  const std::string end = "returning with hr = 0x00000000";
  EXPECT_THAT(LogMessages(), ElementsAre(begin, "Appointment", end, begin, "Contact", end, begin,
                                         "Task", end, begin, "Contact", end));
}

TEST_F(DatabaseKeys, LogsAnUnknownKindAndAWrongInput) {
  SwitchLogOn();
  Run(Word(0xFFFFFFFF));
  Run("");
  EXPECT_THAT(
      LogMessages(),
      ElementsAre("Starting GetDatabaseKeys", "Invalid Arg, -1", "returning with hr = 0x80070057",
                  "Starting GetDatabaseKeys", "returning with hr = 0x80070057"));
}

}  // namespace
}  // namespace corvane::testing
