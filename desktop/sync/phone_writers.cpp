#include "desktop/sync/phone_writers.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sstream>
#include <string>
#include <utility>

#include "common/formats/backup/sms_backup.h"
#include "common/formats/json/message_json.h"
#include "desktop/wire/error.h"

namespace desktop {
namespace {

class JsonWriter : public PhoneWriter {
 public:
  JsonWriter(PhoneKind kind, ByteSink sink) : kind_(kind), sink_(std::move(sink)) {}

  void Write(const Record& record) override {
    std::string line = kind_ == PhoneKind::kCalls
                           ? formats::CallToJson(CallFromXml(record.element))
                           : formats::MessageToJson(MessageFromXml(record.element), record.oidText);
    line += '\n';
    sink_(line);
  }

 private:
  PhoneKind kind_;
  ByteSink sink_;
};

class XmlWriter : public PhoneWriter {
 public:
  explicit XmlWriter(ByteSink sink) : sink_(std::move(sink)) {}

  void Begin() override { sink_("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<root>\n"); }
  void Write(const Record& record) override { sink_(record.bytes + "\n"); }
  void End() override { sink_("</root>\n"); }

 private:
  ByteSink sink_;
};

// A file without a name, gone with the object.
class Spool {
 public:
  Spool() : file_(std::tmpfile()) {
    if (file_ == nullptr) Fail("make");
  }

  void Write(std::string_view bytes) {
    if (std::fwrite(bytes.data(), 1, bytes.size(), file_.get()) != bytes.size()) Fail("write");
  }

  void CopyTo(const ByteSink& sink) {
    if (std::fflush(file_.get()) != 0) Fail("write");
    if (std::fseek(file_.get(), 0, SEEK_SET) != 0) Fail("read");
    std::array<char, 64 * 1024> block;
    while (const std::size_t count = std::fread(block.data(), 1, block.size(), file_.get())) {
      sink(std::string_view(block.data(), count));
    }
    if (std::ferror(file_.get()) != 0) Fail("read");
  }

 private:
  [[noreturn]] static void Fail(const char* what) {
    throw Error(std::string("cannot ") + what + " a temporary file: " + std::strerror(errno));
  }

  struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  std::unique_ptr<std::FILE, Closer> file_;
};

formats::TextMessage ItemOf(const Record& record, const formats::MessageBackupWriter& /*writer*/) {
  return MessageFromXml(record.element);
}

formats::Call ItemOf(const Record& record, const formats::CallBackupWriter& /*writer*/) {
  return CallFromXml(record.element);
}

// The records are written behind a beginning that is dropped: the count of the real one is known
// only once they all are there.
template <typename FormatWriter>
class BackupWriter : public PhoneWriter {
 public:
  explicit BackupWriter(ByteSink sink) : sink_(std::move(sink)), items_(buffer_, 0) { Taken(); }

  void Write(const Record& record) override {
    items_.Write(ItemOf(record, items_));
    spool_.Write(Taken());
    ++count_;
  }

  void End() override {
    const FormatWriter beginning(buffer_, count_);
    sink_(Taken());
    spool_.CopyTo(sink_);
    items_.Finish();
    sink_(Taken());
  }

 private:
  std::string Taken() {
    std::string bytes = buffer_.str();
    buffer_.str({});
    return bytes;
  }

  ByteSink sink_;
  std::ostringstream buffer_;
  FormatWriter items_;
  Spool spool_;
  std::size_t count_ = 0;
};

}  // namespace

std::unique_ptr<PhoneWriter> MakePhoneJsonWriter(PhoneKind kind, ByteSink sink) {
  return std::make_unique<JsonWriter>(kind, std::move(sink));
}

std::unique_ptr<PhoneWriter> MakePhoneXmlWriter(ByteSink sink) {
  return std::make_unique<XmlWriter>(std::move(sink));
}

std::unique_ptr<PhoneWriter> MakePhoneBackupWriter(PhoneKind kind, ByteSink sink) {
  if (kind == PhoneKind::kCalls) {
    return std::make_unique<BackupWriter<formats::CallBackupWriter>>(std::move(sink));
  }
  return std::make_unique<BackupWriter<formats::MessageBackupWriter>>(std::move(sink));
}

}  // namespace desktop
