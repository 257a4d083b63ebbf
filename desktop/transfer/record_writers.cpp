#include "desktop/transfer/record_writers.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <optional>
#include <sstream>
#include <string>
#include <unordered_map>
#include <utility>

#include "common/formats/backup/sms_backup.h"
#include "common/formats/csv/csv.h"
#include "common/formats/icalendar/icalendar.h"
#include "common/formats/items/identity.h"
#include "common/formats/items/normal_form.h"
#include "desktop/records/appointment_xml.h"
#include "desktop/records/contact_xml.h"
#include "desktop/records/phone_records.h"
#include "desktop/records/task_xml.h"
#include "desktop/records/wire_losses.h"
#include "desktop/transfer/state_hash.h"
#include "desktop/wire/error.h"

namespace desktop {
namespace {

using formats::SeriesEnd;

class XmlWriter : public RecordWriter {
 public:
  explicit XmlWriter(ByteSink sink) : sink_(std::move(sink)) {}

  void Begin() override { sink_("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<root>\n"); }
  void Write(const Record& record) override { sink_(record.bytes + "\n"); }
  void End() override { sink_("</root>\n"); }

 private:
  ByteSink sink_;
};

// An object a line.
class JsonWriter : public RecordWriter {
 public:
  JsonWriter(const WriterOptions& options, ByteSink sink)
      : kind_(WordsOf(options.kind)), zone_(options.zone), sink_(std::move(sink)) {}

  void Write(const Record& record) override { sink_(kind_.json(record, zone_) + "\n"); }

 private:
  const KindWords& kind_;
  calendar::Zone zone_;
  ByteSink sink_;
};

class CsvWriter : public RecordWriter {
 public:
  CsvWriter(const WriterOptions& options, ByteSink sink)
      : kind_(WordsOf(options.kind)),
        csv_(kind_.isItem ? formats::CsvKind::kContacts : formats::CsvKind::kCalls),
        zone_(options.zone),
        sink_(std::move(sink)) {}

  void Begin() override { sink_(formats::CsvHeader(csv_)); }
  void Write(const Record& record) override {
    sink_(formats::CsvRow(csv_, kind_.json(record, zone_)));
  }

 private:
  const KindWords& kind_;
  const formats::CsvKind csv_;
  calendar::Zone zone_;
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
class BackupWriter : public RecordWriter {
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

// Gives each item that comes the UID that the mapping has for it, or gets.
class Memory {
 public:
  explicit Memory(Mapping& mapping) : mapping_(mapping) {
    for (const auto& [key, item] : mapping.expected()) expected_.emplace(item.state, item);
  }

  // Takes the record into the mapping. It would be sent as `xml`.
  std::string Remember(const Record& record, std::string_view xml, std::string state) {
    MappedItem item{*record.oid,
                    std::string(KindOfElement(record.element.name)),
                    {},
                    {},
                    formats::ContentHash(xml),
                    std::move(state)};
    const MappedItem* known = mapping_.FindOid(item.oid);
    if (known != nullptr && known->kind == item.kind) {
      item.uid = known->uid;
    } else if (const std::optional<MappedItem> added = TakeExpected(item.state)) {
      item.uid = added->uid;
      item.content = added->content;
    }
    if (item.uid.empty()) item.uid = formats::NewUid();
    std::string uid = item.uid;
    mapping_.Put(std::move(item));
    return uid;
  }

 private:
  // What a push has added without hearing of it.
  std::optional<MappedItem> TakeExpected(const std::string& state) {
    for (auto found = expected_.find(state); found != expected_.end();
         found = expected_.find(state)) {
      const MappedItem item = expected_.extract(found).mapped();
      const bool mapped = item.uid.empty()
                              ? mapping_.FindContent(item.kind, item.content) != nullptr
                              : mapping_.FindUid(item.kind, item.uid) != nullptr;
      if (!mapped) return item;
    }
    return std::nullopt;
  }

  Mapping& mapping_;
  std::unordered_multimap<std::string, MappedItem> expected_;  // by state
};

class VCardWriter : public RecordWriter {
 public:
  VCardWriter(const WriterOptions& options, Mapping& mapping, ByteSink sink)
      : version_(options.version),
        overflow_(options.overflow),
        memory_(mapping),
        sink_(std::move(sink)) {}

  void Write(const Record& record) override {
    formats::Contact contact = ContactFromXml(record.element);
    contact.uid =
        memory_.Remember(record, ContactToXml(formats::WithFileAs(contact)), StateHash(contact));
    sink_(formats::WriteVCard(contact, version_, overflow_));
  }

 private:
  formats::VCardVersion version_;
  formats::Overflow overflow_;
  Memory memory_;
  ByteSink sink_;
};

class ICalendarWriter : public RecordWriter {
 public:
  ICalendarWriter(const calendar::Zone& zone, Mapping& mapping, ByteSink sink)
      : zone_(zone), memory_(mapping), sink_(std::move(sink)) {}

  void Write(const Record& record) override {
    if (KindOfElement(record.element.name) == kTaskKind) {
      formats::Task task = Normalized(TaskFromXml(record.element, zone_), SeriesEnd::kCount);
      task.uid = memory_.Remember(record, TaskToXml(task), StateHash(record.element));
      AddLosses(record, DisplayName(task));
      tasks_.push_back(std::move(task));
    } else {
      formats::Appointment appointment =
          Normalized(AppointmentFromXml(record.element, zone_), SeriesEnd::kCount);
      appointment.uid =
          memory_.Remember(record, AppointmentToXml(appointment, zone_), StateHash(record.element));
      AddLosses(record, DisplayName(appointment));
      appointments_.push_back(std::move(appointment));
    }
  }

  void End() override {
    const formats::CalendarText text = formats::WriteICalendar(appointments_, tasks_, zone_);
    for (const std::string& loss : text.losses) losses_.push_back(Parted(loss));
    sink_(text.bytes);
  }

  [[nodiscard]] std::vector<RecordLoss> Losses() const override { return losses_; }

 private:
  void AddLosses(const Record& record, const std::string& name) {
    for (const std::string& loss : RecordLosses(record.element)) losses_.push_back({name, loss});
  }
  // "NAME: why", of which a name may have a colon.
  static RecordLoss Parted(const std::string& loss) {
    const std::size_t colon = loss.rfind(": ");
    return {loss.substr(0, colon), loss.substr(colon + 2)};
  }

  calendar::Zone zone_;
  Memory memory_;
  ByteSink sink_;
  std::vector<formats::Appointment> appointments_;
  std::vector<formats::Task> tasks_;
  std::vector<RecordLoss> losses_;
};

}  // namespace

bool NeedsMapping(RecordFormat format) {
  return format == RecordFormat::kVcf || format == RecordFormat::kIcs;
}

std::unique_ptr<RecordWriter> MakeRecordWriter(const WriterOptions& options, Mapping* mapping,
                                               ByteSink sink) {
  switch (options.format) {
    case RecordFormat::kVcf:
      return std::make_unique<VCardWriter>(options, *mapping, std::move(sink));
    case RecordFormat::kIcs:
      return std::make_unique<ICalendarWriter>(options.zone, *mapping, std::move(sink));
    case RecordFormat::kJson:
      return std::make_unique<JsonWriter>(options, std::move(sink));
    case RecordFormat::kCsv:
      return std::make_unique<CsvWriter>(options, std::move(sink));
    case RecordFormat::kSmsBackup:
      if (options.kind == RecordKind::kCalls)
        return std::make_unique<BackupWriter<formats::CallBackupWriter>>(std::move(sink));
      return std::make_unique<BackupWriter<formats::MessageBackupWriter>>(std::move(sink));
    case RecordFormat::kXml:
      break;
  }
  return std::make_unique<XmlWriter>(std::move(sink));
}

}  // namespace desktop
