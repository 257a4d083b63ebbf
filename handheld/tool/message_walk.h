// Visits the messages and calls of a handheld one at a time.
//
// Messages are those of the telephone's store, which is the one that the agent exports. Calls throw
// StatusError, and ce::host::HandheldError as Session does.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>
#include <vector>

#include "common/formats/items/call.h"
#include "common/formats/items/message.h"
#include "handheld/tool/session.h"
#include "handheld/tool/status_error.h"

namespace tool {

template <typename Record>
inline constexpr std::string_view kRecordName = {};
template <>
inline constexpr std::string_view kRecordName<formats::TextMessage> = "message";
template <>
inline constexpr std::string_view kRecordName<formats::Call> = "call";

// Nothing for a handheld from which it was removed.
std::optional<std::int64_t> SmsStore(Session& session);
// Parents before their children; none without the store.
std::vector<ce::host::MessageFolderInfo> SmsFolders(Session& session);

// `Record` is formats::TextMessage or formats::Call.
template <typename Record>
using RecordVisitor = std::function<void(std::int64_t id, const Record& record)>;

// Messages folder by folder, in a folder as they were stored; calls newest first. In memory that
// does not depend on how many there are.
template <typename Record>
void ForEachRecord(Session& session, const RecordVisitor<Record>& visit);
template <typename Record>
std::size_t CountRecords(Session& session);

template <>
void ForEachRecord(Session& session, const RecordVisitor<formats::TextMessage>& visit);
template <>
void ForEachRecord(Session& session, const RecordVisitor<formats::Call>& visit);
template <>
std::size_t CountRecords<formats::TextMessage>(Session& session);
template <>
std::size_t CountRecords<formats::Call>(Session& session);

}  // namespace tool
