#include "core/request_table.h"

#include "log/logging_request.h"
#include "pim_export/database_keys.h"
#include "pim_export/delete_request.h"
#include "pim_export/download_requests.h"
#include "pim_import/upload_request.h"
#include "time/time_requests.h"

namespace corvane {
namespace {

constexpr RequestEntry kStreamed[] = {
    {u"DownloadAllPIMRecords", DownloadAllPIMRecords},
    {u"DownloadSpecificPIMRecords", DownloadSpecificPIMRecords},
    {u"UploadPIMRecords", UploadPIMRecords},
};

constexpr RequestEntry kBuffered[] = {
    {u"CVCeGetSystemTime", CVCeGetSystemTime},     {u"CVCeSetSystemTime", CVCeSetSystemTime},
    {u"DeleteAllPIMRecords", DeleteAllPIMRecords}, {u"GetDatabaseKeys", GetDatabaseKeys},
    {u"CVResetLoggingState", CVResetLoggingState},
};

}  // namespace

std::span<const RequestEntry> StreamedRequests() {
  return kStreamed;
}

std::span<const RequestEntry> BufferedRequests() {
  return kBuffered;
}

}  // namespace corvane
