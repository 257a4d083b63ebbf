#include "agent/device/ink_requests.h"
#include "agent/device/storage_requests.h"
#include "agent/device/system_requests.h"
#include "agent/log/logging_request.h"
#include "agent/pim_export/database_keys.h"
#include "agent/pim_export/delete_request.h"
#include "agent/pim_export/download_requests.h"
#include "agent/pim_import/upload_request.h"
#include "agent/request_handler.h"
#include "agent/time/time_requests.h"

namespace corvane {
namespace {

constexpr RequestEntry kStreamed[] = {
    {u"DownloadAllPIMRecords", DownloadAllPIMRecords},
    {u"DownloadSpecificPIMRecords", DownloadSpecificPIMRecords},
    {u"UploadPIMRecords", UploadPIMRecords},
};

constexpr RequestEntry kBuffered[] = {
    {u"GetTotalSpace", GetTotalSpace},
    {u"GetVolumeCount", GetVolumeCount},
    {u"GetCardSpace", GetCardSpace},
    {u"GetCardDirectory", GetCardDirectory},
    {u"GetDLLVersion", GetDLLVersion},
    {u"CVCeGetSystemTime", CVCeGetSystemTime},
    {u"CVCeSetSystemTime", CVCeSetSystemTime},
    {u"DeleteAllPIMRecords", DeleteAllPIMRecords},
    {u"GetDatabaseKeys", GetDatabaseKeys},
    {u"CVResetLoggingState", CVResetLoggingState},
    {u"CVCeConvertToFile", CVCeConvertToFile},
    {u"CVCeConvertFromFile", CVCeConvertFromFile},
    {u"CVCeHasRichInk", CVCeHasRichInk},
    {u"CVCeGetSystemDefaultLangID", CVCeGetSystemDefaultLangID},
    {u"CVCeGetDiskFreeSpaceEx", CVCeGetDiskFreeSpaceEx},
};

}  // namespace

std::span<const RequestEntry> StreamedRequests() {
  return kStreamed;
}

std::span<const RequestEntry> BufferedRequests() {
  return kBuffered;
}

}  // namespace corvane
