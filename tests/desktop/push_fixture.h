// A push against an agent with a store.
#pragma once

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "common/text/little_endian.h"
#include "desktop/commands/commands_push.h"
#include "desktop/records/record_kind.h"
#include "desktop/wire/xml_records.h"
#include "tests/desktop/fixtures.h"

namespace desktop::testing {

inline std::string Card(const std::string& uid, const std::string& name) {
  return "BEGIN:VCARD\r\nVERSION:3.0\r\nN:" + name + ";;;;\r\nFN:" + name + "\r\n" +
         (uid.empty() ? "" : "UID:" + uid + "\r\n") + "END:VCARD\r\n";
}

// An agent with a store: adds with OIDs from 101, changes and deletes as the real one does.
class Store {
 public:
  // Serves one connection: an upload, which after as many answers as the bound says goes away
  // midway, or a download.
  FakeAgent::Script Serve(std::size_t mostAnswers = SIZE_MAX) {
    return [this, mostAnswers](Peer& peer) {
      const std::scoped_lock lock(mutex_);  // an agent that a test holds, and the next one
      const SeenRequest seen = ReadRequest(peer.ReceiveCounted());
      requests.push_back(seen.function);
      peer.Send(Word(0));
      if (seen.function == "UploadPIMRecords") {
        TakeUpload(peer, mostAnswers);
      } else {
        peer.Send(Documents(Download(seen)) + Word(0) + Word(0));
      }
    };
  }

  std::vector<std::size_t> RecordsOfChunks() const {
    std::vector<std::size_t> counts;
    for (const std::string& chunk : chunks) counts.push_back(ParseRecords(chunk).size());
    return counts;
  }

  std::vector<std::string> requests;
  std::vector<std::string> chunks;
  bool ended = false;
  std::map<Oid, std::string> items;
  std::string refused;  // a record that holds this text fails
  std::string forgets;  // the name of an element that it does not keep

 private:
  void TakeUpload(Peer& peer, std::size_t mostAnswers) {
    std::size_t answers = 0;
    for (std::string chunk = peer.ReceiveCounted(); !chunk.empty(); chunk = peer.ReceiveCounted()) {
      chunks.push_back(chunk);
      for (const Record& record : ParseRecords(chunk)) {
        const std::string answer = Apply(record);
        if (answers++ == mostAnswers) {
          shutdown(peer.socket(), SHUT_WR);  // a reset could overtake the answers
          return peer.AwaitEnd();
        }
        peer.Send(answer);
      }
    }
    ended = true;
  }

  // Two records a document.
  static std::string Documents(const std::vector<std::string>& records) {
    std::string documents;
    for (std::size_t i = 0; i < records.size(); i += 2) {
      const bool last = i + 1 == records.size();
      documents += Counted(Document(records[i] + (last ? "" : records[i + 1])));
    }
    return records.empty() ? Counted(Document("")) : documents;
  }

  std::vector<std::string> Download(const SeenRequest& seen) const {
    std::vector<std::string> records;
    if (seen.function == "DownloadAllPIMRecords") {
      const auto kind = WordsOf(static_cast<RecordKind>(text::WordAt(seen.input, 0))).name;
      for (const auto& [oid, bytes] : items) {
        const std::string name = bytes.substr(1, bytes.find_first_of(" />") - 1);
        if (KindOfElement(name) == kind) records.push_back(Stored(oid));
      }
      return records;
    }
    for (std::size_t at = 4; at < seen.input.size(); at += 4) {
      const Oid oid = text::WordAt(seen.input, at);
      records.push_back(items.contains(oid) ? Stored(oid)
                                            : "<Error Oid=\"" + OidAttribute(oid) +
                                                  "\"><Value>-2147024894</Value></Error>");
    }
    return records;
  }

  std::string Stored(Oid oid) const {
    std::string bytes = items.at(oid);
    if (const std::size_t at = bytes.find(" Oid=\""); at != std::string::npos) {
      bytes.erase(at, bytes.find('"', at + 6) + 1 - at);  // as sent: it may have got another since
    }
    return WithOid(bytes, oid);
  }

  std::string Apply(const Record& record) {
    const Oid oid = record.oid.value_or(0);
    if (record.deletes) {
      items.erase(oid);
      return Word(oid) + Word(0);
    }
    if (!refused.empty() && record.bytes.find(refused) != std::string::npos) {
      return Word(0) + Word(0x80040066);
    }
    while (items.contains(next_)) ++next_;
    const Oid stored = items.contains(oid) ? oid : next_++;
    items[stored] = Kept(record.bytes);
    return Word(stored) + Word(0);
  }

  std::string Kept(std::string bytes) const {
    const std::size_t first = forgets.empty() ? std::string::npos : bytes.find("<" + forgets + ">");
    if (first == std::string::npos) return bytes;
    const std::string end = "</" + forgets + ">";
    return bytes.erase(first, bytes.find(end) + end.size() - first);
  }

  std::mutex mutex_;
  Oid next_ = 101;
};

class PushTest : public CommandTest {
 protected:
  PushTest() {
    options_.mapping = directory_ / "map.json";
    options_.files = {directory_ / "in.vcf"};
    options_.policy.quiet = {};
    console_.console.verbosity = Verbosity::kAll;
  }

  int Run(const ConnectionOptions& connection) {
    console_.out.str("");
    console_.err.str("");
    return Push(connection, options_, console_.console);
  }
  int RunAgainst(FakeAgent::Script script) {
    FakeAgent agent({std::move(script)});
    const int code = Run(agent.options());
    return code;
  }
  // As many connections as it makes: two looks at what is expected, one at what is mapped, an
  // upload, another look and a deletion.
  int PushTo(Store& store, std::size_t mostAnswers = SIZE_MAX) {
    const FakeAgent::Script serve = store.Serve(mostAnswers);
    FakeAgent agent({serve, serve, serve, serve, serve, serve});
    return Run(agent.options());
  }
  void Input(const std::string& bytes) { directory_.Write(options_.files[0], bytes); }
  std::string place(int line) const {
    return options_.files[0].string() + ":" + std::to_string(line) + ": ";
  }

  PushOptions options_;
  Store store_;
};

}  // namespace desktop::testing
