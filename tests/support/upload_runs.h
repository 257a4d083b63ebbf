// Uploads for tests: documents in, replies out.
#pragma once

#include <string>
#include <vector>

#include "agent/pim_import/upload_request.h"
#include "tests/support/pim_requests.h"

namespace corvane::testing {

struct UploadAnswer {
  ce::HRESULT status = 0;
  std::vector<RecordReply> replies;
};

inline UploadAnswer ReadUpload(const StreamedAnswer& answer) {
  return {answer.status, ReadReplies(answer.bytes)};
}

// Sends the documents and the count of 0 behind them.
inline UploadAnswer Upload(const std::vector<std::string>& documents) {
  std::string bytes;
  for (const std::string& document : documents) bytes += ChunkBytes(document);
  return ReadUpload(RunStreamed(UploadPIMRecords, {}, {bytes + Word(0)}));
}

// A round trip's upload: every record is taken.
inline void ExpectAllStored(const std::vector<std::string>& documents) {
  for (const RecordReply& reply : Upload(documents).replies) EXPECT_EQ(reply.result, ce::S_OK);
}

// Downloaded documents as one text, without what another handheld has otherwise.
inline std::string WithoutOids(const std::vector<std::string>& documents) {
  constexpr std::string_view kOid = " Oid=\"";
  std::string text;
  for (const std::string& document : documents) {
    std::size_t from = 0;
    for (std::size_t at = document.find(kOid); at != document.npos;
         at = document.find(kOid, from)) {
      text.append(document, from, at - from);
      from = document.find('"', at + kOid.size()) + 1;
    }
    text.append(document, from);
  }
  return text;
}

inline std::string ContactRecord(const std::string& children, const std::string& attributes = {}) {
  return "<CONTACT " + attributes + ">" + children + "</CONTACT>";
}

inline std::string RootOf(const std::string& records) {
  return "<root>" + records + "</root>";
}

// One contact record; the reply to it.
inline RecordReply UploadContact(const std::string& children, const std::string& attributes = {}) {
  const UploadAnswer answer = Upload({RootOf(ContactRecord(children, attributes))});
  EXPECT_EQ(answer.replies.size(), 1u);
  return answer.replies.empty() ? RecordReply{} : answer.replies[0];
}

inline std::string OidTag(ce::LONG oid) {
  return "Oid='" + std::to_string(oid) + "'";
}

}  // namespace corvane::testing
