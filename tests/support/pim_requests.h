// Runs the agent's streamed requests against a desktop's end in the same process, and reads what
// they answer. For test programs that link the agent's folders.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "agent/core/corvane_stream.h"
#include "agent/pim_export/delete_request.h"
#include "agent/request_handler.h"
#include "common/text/unicode.h"
#include "tests/support/desktop_end.h"
#include "tests/support/item_store.h"
#include "tests/support/logged_test.h"
#include "tests/support/words.h"

namespace corvane::testing {

inline std::string Words(std::initializer_list<ce::DWORD> words) {
  std::string bytes;
  for (const ce::DWORD word : words) bytes += Word(word);
  return bytes;
}

inline std::string Narrow(std::u16string_view text) {
  return text::ToUtf8Lossy(text);
}
inline std::u16string Wide(std::string_view text) {
  return text::FromUtf8Lossy(text);
}

struct StreamedAnswer {
  ce::HRESULT status = 0;
  std::string bytes;  // all that the desktop received
};

inline StreamedAnswer RunStreamed(RequestHandler handler, const std::string& input,
                                  std::vector<std::string> pieces = {},
                                  AfterSending after = AfterSending::kStayOpen) {
  DesktopEnd desktop(std::move(pieces), after);
  CorvaneStream stream;
  stream.Attach(desktop.socket());
  ce::DWORD outputCount = 0;
  ce::BYTE* output = nullptr;
  const ce::HRESULT status =
      handler(static_cast<ce::DWORD>(input.size()), reinterpret_cast<const ce::BYTE*>(input.data()),
              &outputCount, &output, &stream);
  EXPECT_EQ(outputCount, 0u);
  EXPECT_EQ(output, nullptr);
  return {status, desktop.Received()};
}

// What a download sent, taken apart.
struct DownloadAnswer {
  std::vector<std::string> documents;
  bool complete = false;   // the trailer was the last that came
  ce::HRESULT status = 0;  // the trailer's
  ce::HRESULT returned = 0;
};

inline DownloadAnswer ReadDownload(const StreamedAnswer& answer) {
  DownloadAnswer download;
  download.returned = answer.status;
  std::string_view rest = answer.bytes;
  while (rest.size() >= 4) {
    const ce::DWORD length = WordAt(rest, 0);
    rest.remove_prefix(4);
    if (length == 0) {
      download.complete = rest.size() == 4;
      if (download.complete) download.status = static_cast<ce::HRESULT>(WordAt(rest, 0));
      break;
    }
    if (rest.size() < length) break;
    download.documents.emplace_back(rest.substr(0, length));
    rest.remove_prefix(length);
  }
  return download;
}

inline DownloadAnswer RunDownload(RequestHandler handler, const std::string& input) {
  return ReadDownload(RunStreamed(handler, input));
}

struct RecordReply {
  ce::LONG oid = 0;
  ce::HRESULT result = 0;
  friend bool operator==(const RecordReply&, const RecordReply&) = default;
};

inline std::vector<RecordReply> ReadReplies(std::string_view bytes) {
  std::vector<RecordReply> replies;
  for (; bytes.size() >= 8; bytes.remove_prefix(8)) {
    replies.push_back(
        {static_cast<ce::LONG>(WordAt(bytes, 0)), static_cast<ce::HRESULT>(WordAt(bytes, 4))});
  }
  EXPECT_TRUE(bytes.empty()) << "a reply is cut off";
  return replies;
}

// A document as an upload carries it.
inline std::string ChunkBytes(std::string_view document) {
  return Word(static_cast<ce::DWORD>(document.size())) + std::string(document);
}

// A document's text behind its declaration, for tests of what a record holds.
inline std::string Body(const std::string& document) {
  const std::size_t root = document.find("<root");
  return root == std::string::npos ? document : document.substr(root);
}

inline std::size_t Occurrences(std::string_view text, std::string_view part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string_view::npos;
       at = text.find(part, at + part.size())) {
    ++count;
  }
  return count;
}

// What a document holds between the tags of its root.
inline std::string Records(const std::string& document) {
  const std::size_t begin = document.find("<root>") + 6;
  return document.substr(begin, document.rfind("</root>") - begin);
}

// The same of a download's only document.
inline std::string OnlyRecords(const DownloadAnswer& answer) {
  EXPECT_EQ(answer.status, ce::S_OK);
  EXPECT_EQ(answer.documents.size(), 1u);
  return answer.documents.empty() ? std::string() : Records(answer.documents[0]);
}

// How many of these parts each document holds.
inline std::vector<std::size_t> Sizes(const DownloadAnswer& answer,
                                      const std::vector<std::string>& parts) {
  std::vector<std::size_t> sizes;
  for (const std::string& document : answer.documents) {
    sizes.push_back(0);
    for (const std::string& part : parts) sizes.back() += Occurrences(document, part);
  }
  return sizes;
}

inline void ExpectOnlyTrailer(const DownloadAnswer& answer, ce::HRESULT status) {
  EXPECT_TRUE(answer.complete);
  EXPECT_TRUE(answer.documents.empty());
  EXPECT_EQ(answer.status, status);
  EXPECT_EQ(answer.returned, status);
}

// A download of one of the exporters, which end it themselves.
inline DownloadAnswer RunExport(ce::HRESULT (*exporter)(CorvaneStream*)) {
  DesktopEnd desktop;
  CorvaneStream stream;
  stream.Attach(desktop.socket());
  const ce::HRESULT status = exporter(&stream);
  return ReadDownload({status, desktop.Received()});
}

// The input of a download of chosen records.
inline std::string ChosenRecords(ce::DWORD kind, const std::vector<ce::LONG>& oids) {
  std::string input = Word(kind);
  for (const ce::LONG oid : oids) input += Word(static_cast<ce::DWORD>(oid));
  return input;
}

inline ce::HRESULT DeleteKind(ce::DWORD kind) {
  const std::string input = Word(kind);
  return DeleteAllPIMRecords(4, reinterpret_cast<const ce::BYTE*>(input.data()), nullptr, nullptr,
                             nullptr);
}

// A handheld and its contacts.
class PimTest : public LoggedTest {
 protected:
  PimTest() { store_ = std::make_unique<ContactStore>(); }

  void TearDown() override {
    store_.reset();
    LoggedTest::TearDown();
  }

  // Of the agent's routines; the stream's own lines are left out.
  std::vector<std::string> LogMessages() {
    std::vector<std::string> messages = LoggedTest::LogMessages();
    std::erase_if(messages, [](const std::string& message) {
      return message.starts_with("CorvaneStream::");
    });
    return messages;
  }

  std::unique_ptr<ContactStore> store_;
};

}  // namespace corvane::testing
