#include "tests/support/wire/agent_process.h"

#include <stdexcept>

#include "platform/registry.h"
#include "tests/support/paths.h"

namespace corvane::testing {

HandheldDirectory::HandheldDirectory(const ce::host::HandheldSettings& settings) {
  ce::host::Handheld::Create(path(), settings);
}

void HandheldDirectory::SetAgentValue(const char16_t* name, ce::DWORD value) {
  const auto handheld = ce::host::Handheld::Open(path(), "a test");
  ce::host::Handheld::MakeCurrent(handheld.get());
  ce::HKEY key = 0;
  ce::RegCreateKeyExW(ce::HKEY_LOCAL_MACHINE, u"SOFTWARE\\Tenbrook\\Corvane", 0, nullptr, 0, 0,
                      nullptr, &key, nullptr);
  const ce::LONG status =
      ce::RegSetValueExW(key, name, 0, ce::REG_DWORD, reinterpret_cast<const ce::BYTE*>(&value), 4);
  ce::RegCloseKey(key);
  ce::host::Handheld::MakeCurrent(nullptr);
  if (status != 0) throw std::runtime_error("the registry value could not be set");
}

HandheldDirectory& WireTest::handheld() {
  if (!handheld_) handheld_.emplace(settings_);
  return *handheld_;
}

std::uint16_t WireTest::port() {
  if (!agent_) {
    agent_.emplace(ProgramPath("corvane"),
                   std::vector<std::string>{"--handheld", handheld().path().string(), "--listen",
                                            "127.0.0.1:0"},
                   options_);
    const std::string line = agent_->ReadLine();
    const std::size_t colon = line.rfind(':');
    if (colon == std::string::npos) throw std::runtime_error("the agent did not start: " + line);
    port_ = static_cast<std::uint16_t>(std::stoi(line.substr(colon + 1)));
  }
  return port_;
}

std::optional<RawConnection> WireTest::Wake() {
  try {
    return Connect();
  } catch (const std::runtime_error&) {
    return std::nullopt;
  }
}

void WireTest::StopAgent(int signal) {
  agent_->Kill(signal);
  agent_->Wait();
  agent_.reset();
}

int WireTest::WaitForAgent() {
  return agent_->Wait();
}

BufferedReply WireTest::CallBuffered(const Invoke& invoke) {
  RawConnection connection = Connect();
  connection.Send(Record(invoke.Body()));
  BufferedReply reply{};
  for (std::uint32_t* field :
       {&reply.totalLength, &reply.reserved, &reply.status, &reply.statusAgain, &reply.outputCount})
    *field = connection.ReceiveWord();
  // After our end is finished the agent's side closes: what comes until then is all it sent.
  connection.FinishSending();
  reply.output = connection.ReceiveToEnd();
  return reply;
}

Download WireTest::ReadDownload(RawConnection& connection) {
  Download download;
  for (std::uint32_t count; (count = connection.ReceiveWord()) != 0;)
    download.documents.push_back(connection.Receive(count));
  download.finalStatus = connection.ReceiveWord();
  download.rest = connection.ReceiveToEnd();
  return download;
}

Download WireTest::CallDownload(const std::string& function, const std::string& input) {
  RawConnection connection = Connect();
  connection.Send(Record(Invoke{.function = function, .input = input, .streamFlag = 1}.Body()));
  EXPECT_EQ(connection.ReceiveWord(), 0u) << "status of a known streamed name";
  return ReadDownload(connection);
}

std::vector<UploadReply> WireTest::Upload(const std::vector<std::string>& documents,
                                          std::size_t records) {
  RawConnection connection = Connect();
  connection.Send(Record(Invoke{.function = "UploadPIMRecords", .streamFlag = 1}.Body()));
  EXPECT_EQ(connection.ReceiveWord(), 0u);
  std::string stream;
  for (const std::string& document : documents) stream += Chunk(document);
  connection.Send(stream + Word(0));
  std::vector<UploadReply> replies(records);
  for (UploadReply& reply : replies) {
    reply.oid = connection.ReceiveWord();
    reply.result = connection.ReceiveWord();
  }
  EXPECT_EQ(connection.ReceiveToEnd(), "") << "nothing but the replies";
  return replies;
}

std::vector<std::uint32_t> WireTest::AddContacts(int count) {
  std::string document = "<root>";
  for (int i = 1; i <= count; ++i)
    document += "<CONTACT><FIRST_NAME>Contact" + std::to_string(i) + "</FIRST_NAME></CONTACT>";
  std::vector<std::uint32_t> oids;
  for (const UploadReply& reply : Upload({document + "</root>"}, static_cast<std::size_t>(count))) {
    EXPECT_EQ(reply.result, 0u);
    oids.push_back(reply.oid);
  }
  return oids;
}

std::string WireTest::AllContacts() {
  std::string all;
  for (const std::string& document : CallDownload("DownloadAllPIMRecords", Word(1)).documents)
    all += document;
  return all;
}

void WireTest::ExpectServing() {
  const BufferedReply reply = CallBuffered({.function = "CVCeGetSystemTime"});
  EXPECT_EQ(reply.status, 0u);
  EXPECT_EQ(reply.output.size(), 16u);
}

}  // namespace corvane::testing
