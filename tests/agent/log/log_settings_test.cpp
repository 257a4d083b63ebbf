// Every handler that a desktop may call first reads the log's settings before anything else.
#include "agent/device/ink_requests.h"
#include "agent/device/system_requests.h"
#include "agent/log/log.h"
#include "agent/pim_export/database_keys.h"
#include "agent/pim_export/delete_request.h"
#include "agent/pim_export/download_requests.h"
#include "agent/pim_import/upload_request.h"
#include "tests/support/test_handheld.h"

namespace corvane::testing {
namespace {

using LogSettings = HandheldTest;

TEST_F(LogSettings, AreReadByEveryHandlerThatLogs) {
  handheld_.SetAgentValue(u"Logging", 1);
  const std::pair<const char*, RequestHandler> kHandlers[] = {
      {"DownloadAllPIMRecords", DownloadAllPIMRecords},
      {"DownloadSpecificPIMRecords", DownloadSpecificPIMRecords},
      {"UploadPIMRecords", UploadPIMRecords},
      {"DeleteAllPIMRecords", DeleteAllPIMRecords},
      {"GetDatabaseKeys", GetDatabaseKeys},
      {"CVCeConvertToFile", CVCeConvertToFile},
      {"CVCeConvertFromFile", CVCeConvertFromFile},
      {"CVCeGetExitCodeProcess", CVCeGetExitCodeProcess},
      {"CVCeStartAvantGoSync", CVCeStartAvantGoSync},
  };
  for (const auto& [name, handler] : kHandlers) {
    ResetLogSettings();
    ce::DWORD count = 0;
    ce::BYTE* output = nullptr;
    static_cast<void>(handler(0, nullptr, &count, &output, nullptr));
    EXPECT_EQ(output, nullptr) << name;
    EXPECT_TRUE(LoggingIsOn()) << name;
  }
  CloseLog();
  ResetLogSettings();
}

}  // namespace
}  // namespace corvane::testing
