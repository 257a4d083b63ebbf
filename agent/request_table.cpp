#include "core/request_table.h"

#include "device/ink_requests.h"
#include "device/storage_requests.h"
#include "device/system_requests.h"
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
