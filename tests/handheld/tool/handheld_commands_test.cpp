#include "handheld/tool/handheld_commands.h"

#include <nlohmann/json.hpp>

#include "handheld/tool/clock_commands.h"
#include "handheld/tool/registry_commands.h"
#include "platform/modules.h"
#include "tests/handheld/tool/maintenance_support.h"

namespace tool::testing {
namespace {

using ce::host::HandheldError;

class HandheldCommands : public MaintenanceTest {
 protected:
  nlohmann::json Info() {
    const auto show = [](Session& session, const Report& report) {
      return ShowHandheld(session, AsJson(report));
    };
    EXPECT_EQ(Run(show), Outcome::kDone);
    return nlohmann::json::parse(out_);
  }
  void Set(const std::string& key, const std::string& value) {
    const auto set = [&](Session& session, const Report& report) {
      return SetSetting(session, key, value, report);
    };
    EXPECT_EQ(Run(set), Outcome::kDone);
  }
};

TEST_F(HandheldCommands, InitMakesAHandheldAsAsked) {
  Init({.language = "ja-JP", .osVersion = "4.21", .zone = "Asia/Tokyo", .firstOid = 5});
  const nlohmann::json info = Info();
  EXPECT_EQ(info["language"], "ja-JP");
  EXPECT_EQ(info["osVersion"], "4.21");
  EXPECT_EQ(info["zone"], "Asia/Tokyo");
  EXPECT_EQ(info["contacts"], 0);
}

TEST_F(HandheldCommands, InitRefusesWhatMakesNoSense) {
  EXPECT_THROW(Init({.language = "xx-nowhere"}), UsageError);
  EXPECT_THROW(Init({.osVersion = "five"}), UsageError);
  EXPECT_THROW(Init({.osVersion = "5.x"}), UsageError);
  EXPECT_THROW(Init({.zone = "../etc/passwd"}), UsageError);
  EXPECT_THROW(Init({.zone = "Mars/Olympus"}), UsageError);
  EXPECT_THROW(Init({.firstOid = 0}), UsageError);
  EXPECT_FALSE(std::filesystem::exists(HandheldPath()));
}

TEST_F(HandheldCommands, InitLeavesADirectoryWithFilesAlone) {
  std::filesystem::create_directory(HandheldPath());
  std::ofstream(HandheldPath() / "precious") << "x";
  EXPECT_THROW(Init(), HandheldError);
  EXPECT_EQ(ReadFile(HandheldPath() / "precious"), "x");
}

TEST_F(HandheldCommands, SetChangesEverySetting) {
  Init();
  Set("language", "de-DE");
  Set("os-version", "4.0");
  Set("zone", "America/New_York");
  Set("owner", "Zoë");
  const nlohmann::json info = Info();
  EXPECT_EQ(info["language"], "de-DE");
  EXPECT_EQ(info["osVersion"], "4.0");
  EXPECT_EQ(info["zone"], "America/New_York");
  EXPECT_EQ(info["owner"], "Zoë");
  for (const SettingHelp& setting : SettingKeys()) {
    EXPECT_FALSE(setting.values.empty()) << setting.key;
    if (setting.key == "owner") continue;
    EXPECT_THROW(Set(setting.key, "nonsense!"), UsageError) << setting.key;
  }
}

TEST_F(HandheldCommands, SetGivesNewAppointmentsTheirReminder) {
  Init();
  Set("reminder-minutes", "30");
  Session session(HandheldPath());
  const auto item = NewItemOf<formats::Appointment>(session);
  ce::LONG minutes = 0;
  EXPECT_EQ(item->get_ReminderMinutesBeforeStart(&minutes), ce::S_OK);
  EXPECT_EQ(minutes, 30);
  ce::VARIANT_BOOL set = ce::VARIANT_FALSE;
  EXPECT_EQ(item->get_ReminderSet(&set), ce::S_OK);
  EXPECT_EQ(set, ce::VARIANT_TRUE);
}

TEST_F(HandheldCommands, SetTakesTheReminderFromNewAppointments) {
  Init();
  Set("reminder", "off");
  Session session(HandheldPath());
  ce::VARIANT_BOOL set = ce::VARIANT_TRUE;
  EXPECT_EQ(NewItemOf<formats::Appointment>(session)->get_ReminderSet(&set), ce::S_OK);
  EXPECT_EQ(set, ce::VARIANT_FALSE);
  Capture capture;
  EXPECT_THROW(SetSetting(session, "reminder-minutes", "2147483648", capture.report()), UsageError);
}

TEST_F(HandheldCommands, SetShortensTheTextsOfTheCalendar) {
  Init();
  Set("max-subject", "5");
  Set("max-calendar-text", "3");
  Session session(HandheldPath());
  const auto task = NewItemOf<formats::Task>(session);
  EXPECT_EQ(task->put_Subject(ce::Bstr(u"12345").get()), ce::S_OK);
  EXPECT_EQ(task->put_Subject(ce::Bstr(u"123456").get()), ce::kTextTooLong);
  const auto appointment = NewItemOf<formats::Appointment>(session);
  EXPECT_EQ(appointment->put_Location(ce::Bstr(u"1234").get()), ce::kTextTooLong);
}

TEST_F(HandheldCommands, InfoCountsEachKind) {
  Init();
  {
    Session session(HandheldPath());
    for (int i = 0; i < 2; ++i)
      EXPECT_EQ(NewItemOf<formats::Appointment>(session)->Save(), ce::S_OK);
    EXPECT_EQ(NewItemOf<formats::Task>(session)->Save(), ce::S_OK);
    Capture capture;
    ShowHandheld(session, capture.report());
    EXPECT_NE(capture.Out().find("Contacts    0\nCalendar    2\nTasks       1\n"
                                 "Messages    0\nCalls       0\nPhone       on\n"
                                 "Ink         on\nCards       -\n"),
              std::string::npos)
        << capture.Out();
  }
  const nlohmann::json info = Info();
  EXPECT_EQ(info["contacts"], 0);
  EXPECT_EQ(info["appointments"], 2);
  EXPECT_EQ(info["tasks"], 1);
}

TEST_F(HandheldCommands, InfoCountsMessagesAndCalls) {
  Init();
  const auto file =
      WriteFile("all.json",
                "{\"text\":\"a\"}\n{\"folder\":\"/Drafts\",\"text\":\"b\"}\n{\"number\":\"1\"}\n");
  EXPECT_EQ(Import({file}), Outcome::kDone);
  const nlohmann::json info = Info();
  EXPECT_EQ(info["messages"], 2);
  EXPECT_EQ(info["calls"], 1);
}

TEST_F(HandheldCommands, SetTakesPhoneAndInkAwayAndGivesThemBack) {
  Init();
  EXPECT_EQ(Info()["phone"], true);
  EXPECT_EQ(Info()["ink"], true);
  Set("phone", "off");
  Set("ink", "off");
  EXPECT_EQ(Info()["phone"], false);
  EXPECT_EQ(Info()["ink"], false);
  {
    Session session(HandheldPath());
    EXPECT_EQ(ce::LoadLibraryW(u"Phone.dll"), ce::HMODULE{});
    EXPECT_EQ(ce::LoadLibraryW(u"RichInk.dll"), ce::HMODULE{});
  }
  Set("phone", "on");
  Set("ink", "on");
  EXPECT_EQ(Info()["phone"], true);
  EXPECT_EQ(Info()["ink"], true);
}

TEST_F(HandheldCommands, SetMovesTheIdentifiersOnButNeverBack) {
  Init();
  Set("first-oid", "2147483649");
  Import({WriteFile("a.vcf", "BEGIN:VCARD\r\nVERSION:3.0\r\nN:Doe;;;;\r\nEND:VCARD\r\n")});
  EXPECT_NE(out_.find("added    2147483649  Doe"), std::string::npos) << out_;
  EXPECT_THROW(Set("first-oid", "5"), UsageError);
  EXPECT_THROW(Set("first-oid", "0"), UsageError);
}

TEST_F(HandheldCommands, SetRefusesAnUnknownKeyAndNamesTheKnownOnes) {
  Init();
  try {
    Set("colour", "red");
    FAIL() << "an unknown key was taken";
  } catch (const UsageError& error) {
    EXPECT_NE(std::string(error.what()).find("language"), std::string::npos);
  }
}

TEST_F(HandheldCommands, ASecondProgramIsToldWhoHasTheHandheld) {
  Init();
  Session session(HandheldPath());
  try {
    Session second(HandheldPath());
    FAIL() << "opened twice";
  } catch (const HandheldError& error) {
    EXPECT_NE(std::string(error.what()).find("corvane-device"), std::string::npos) << error.what();
  }
}

TEST_F(HandheldCommands, CheckFindsASoundStoreSound) {
  Init();
  EXPECT_EQ(Run(CheckHandheld), Outcome::kDone);
  EXPECT_EQ(out_, "The store is sound.\n");
}

TEST_F(HandheldCommands, CheckNamesADamagedStore) {
  Init();
  WriteFile("handheld/store.db", std::string(8192, 'x'));
  Capture capture;
  Session session(HandheldPath());
  EXPECT_EQ(CheckHandheld(session, capture.report()), Outcome::kFailed);
  EXPECT_NE(capture.Err().find("store.db"), std::string::npos) << capture.Err();
  EXPECT_THROW(session.Outlook(), HandheldError);
}

TEST_F(HandheldCommands, ClockIsSetAndReset) {
  Init({.zone = "Europe/Berlin"});
  Session session(HandheldPath());
  Capture capture;
  EXPECT_EQ(SetClock(session, "2008-02-15T14:45:00+01:00", capture.report()), Outcome::kDone);
  EXPECT_NE(capture.Out().find("UTC    2008-02-15 13:45:"), std::string::npos) << capture.Out();
  EXPECT_NE(capture.Out().find("local  2008-02-15 14:45:"), std::string::npos);
  EXPECT_NE(capture.Out().find("Europe/Berlin"), std::string::npos);
  EXPECT_EQ(ResetClock(session, capture.report()), Outcome::kDone);
}

TEST_F(HandheldCommands, ClockStaysResetForTheNextSession) {
  Init();
  Run([](Session& session, const Report& report) {
    SetClock(session, "2008-02-15T14:45:00Z", report);
    return ResetClock(session, report);
  });
  Run(ShowClock);
  EXPECT_EQ(out_.find("2008"), std::string::npos) << out_;
}

TEST_F(HandheldCommands, ClockRefusesWhatIsNoTime) {
  Init();
  Session session(HandheldPath());
  for (const char* text : {"", "now", "2008-02-30T00:00", "2008-02-15", "2008-02-15T24:00"}) {
    Capture capture;
    EXPECT_THROW(SetClock(session, text, capture.report()), UsageError) << text;
  }
  Capture capture;
  EXPECT_EQ(SetClock(session, "1600-01-01T00:00:00Z", capture.report()), Outcome::kFailed);
  EXPECT_NE(capture.Err().find("1601"), std::string::npos);
}

class RegistryCommands : public MaintenanceTest {
 protected:
  RegistryCommands() {
    Init();
    session_ = std::make_unique<Session>(HandheldPath());
  }
  ce::host::Handheld& handheld() { return session_->handheld(); }
  std::unique_ptr<Session> session_;
  Capture capture_;
  const std::string key_ = "SOFTWARE\\Tenbrook\\Corvane";
};

TEST_F(RegistryCommands, SetsAndGetsEachType) {
  for (const char* value : {"sz:some text", "dword:42", "binary:00FF10"}) {
    Capture capture;
    EXPECT_EQ(RegistrySet(handheld(), key_, "Value", value, capture.report()), Outcome::kDone);
    EXPECT_EQ(RegistryGet(handheld(), key_, "value", capture.report()), Outcome::kDone);
    EXPECT_EQ(capture.Out(), std::string(value) + "\n");
  }
}

TEST_F(RegistryCommands, ReadsHexadecimalNumbers) {
  RegistrySet(handheld(), key_, "IPAddr", "dword:0x0100007F", capture_.report());
  RegistryGet(handheld(), key_, "IPAddr", capture_.report());
  EXPECT_EQ(capture_.Out(), "dword:16777343\n");
}

TEST_F(RegistryCommands, RefusesAValueThatIsNone) {
  for (const char* value : {"42", "dword:", "dword:x", "dword:-1", "dword:4294967296", "binary:0",
                            "binary:xy", "qword:1"}) {
    EXPECT_THROW(RegistrySet(handheld(), key_, "V", value, capture_.report()), UsageError) << value;
  }
  EXPECT_THROW(RegistrySet(handheld(), key_, "V", std::nullopt, capture_.report()), UsageError);
}

TEST_F(RegistryCommands, ListsAKey) {
  RegistrySet(handheld(), key_, "Logging", "dword:1", capture_.report());
  RegistrySet(handheld(), key_ + "\\Sub", std::nullopt, std::nullopt, capture_.report());
  EXPECT_EQ(RegistryGet(handheld(), key_, std::nullopt, capture_.report()), Outcome::kDone);
  EXPECT_EQ(capture_.Out(), "Logging = dword:1\n[Sub]\n");
}

TEST_F(RegistryCommands, DeletesValuesAndKeys) {
  RegistrySet(handheld(), key_, "Logging", "dword:1", capture_.report());
  EXPECT_EQ(RegistryDelete(handheld(), key_, "Logging", capture_.report()), Outcome::kDone);
  EXPECT_EQ(RegistryDelete(handheld(), key_, "Logging", capture_.report()), Outcome::kFailed);
  EXPECT_NE(capture_.Err().find("it is not there"), std::string::npos);
  EXPECT_EQ(RegistryDelete(handheld(), key_, std::nullopt, capture_.report()), Outcome::kDone);
  EXPECT_EQ(RegistryGet(handheld(), key_, std::nullopt, capture_.report()), Outcome::kFailed);
}

}  // namespace
}  // namespace tool::testing
