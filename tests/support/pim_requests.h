// Runs the agent's streamed requests against a desktop's end in the same process, and reads what
// they answer. For test programs that link the agent's folders.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "agent/core/corvane_stream.h"
#include "agent/log/log.h"
#include "agent/request_handler.h"
#include "common/text/unicode.h"
#include "tests/support/contact_store.h"
#include "tests/support/desktop_end.h"
#include "tests/support/test_handheld.h"
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

// A handheld, its contacts, and the log's messages without what stands before each.
class PimTest : public HandheldTest {
 protected:
  PimTest() { store_ = std::make_unique<ContactStore>(); }

  void TearDown() override {
    store_.reset();
    CloseLog();
    ResetLogSettings();
    HandheldTest::TearDown();
  }

  void SwitchLogOn() {
    LoadLogSettings();
    SetLoggingLevel(1);
  }

  // Of the agent's routines; the stream's own lines are left out.
  std::vector<std::string> LogMessages() {
    CloseLog();
    const std::string content = handheld_.FileContent("CorvaneLog.txt");
    std::vector<std::string> messages;
    for (std::size_t at = content.find(",thr 0x"); at != std::string::npos;
         at = content.find(",thr 0x", at + 1)) {
      const std::size_t begin = content.find(" : ", at) + 3;
      std::string message = content.substr(begin, content.find("\r\n", begin) - begin);
      const bool framing = message.starts_with("====") || message.starts_with("Log ") ||
                           message.starts_with("CorvaneStream::");
      if (!framing) messages.push_back(std::move(message));
    }
    return messages;
  }

  std::unique_ptr<ContactStore> store_;
};

}  // namespace corvane::testing
