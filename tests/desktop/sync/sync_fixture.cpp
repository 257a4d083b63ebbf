#include "tests/desktop/sync/sync_fixture.h"

#include <algorithm>
#include <ostream>
#include <stdexcept>
#include <utility>

#include "common/files/atomic_file.h"
#include "common/formats/icalendar/icalendar.h"
#include "common/formats/vcard/vcard.h"
#include "desktop/sync/plan.h"
#include "desktop/wire/error.h"

namespace desktop::testing {
namespace {

namespace fs = std::filesystem;
using formats::ContactField;

const calendar::Zone& Berlin() {
  static const calendar::Zone zone = ZoneNamed("Europe/Berlin");
  return zone;
}

constexpr const char* kFolders[] = {"contacts", "calendar", "tasks"};
constexpr const char* kExtensions[] = {".vcf", ".ics", ".ics"};

std::string TextOf(const Item& item) {
  if (const auto* contact = std::get_if<formats::Contact>(&item)) {
    return WriteVCard(*contact, formats::VCardVersion::k30);
  }
  if (const auto* appointment = std::get_if<formats::Appointment>(&item)) {
    return formats::WriteICalendar({appointment, 1}, {}, Berlin()).bytes;
  }
  return formats::WriteICalendar({}, {&std::get<formats::Task>(item), 1}, Berlin()).bytes;
}

}  // namespace

void PrintTo(const TestItem& item, std::ostream* stream) {
  *stream << "{" << item.name << " / " << item.first << " / " << item.second << "}";
}

bool HasSecond(ItemKind kind) {
  return kind != ItemKind::kTask;
}

Item ItemFrom(ItemKind kind, const TestItem& test) {
  if (kind == ItemKind::kContact) {
    formats::Contact contact;
    contact[ContactField::kFirstName] = test.name;
    contact[ContactField::kLastName] = "Brook";
    contact[ContactField::kHomeTelephoneNumber] = "+49 30 5550100";
    contact[ContactField::kJobTitle] = test.first;
    contact[ContactField::kBody] = test.second;
    return contact;
  }
  if (kind == ItemKind::kAppointment) {
    formats::Appointment appointment;
    appointment.subject = test.name;
    appointment.start = At(Day(2026, 11, 22), 9, 30);
    appointment.end = At(Day(2026, 11, 22), 10);
    appointment.location = test.first;
    appointment.body = test.second;
    return appointment;
  }
  formats::Task task;
  task.subject = test.name;
  task.due = Day(2026, 11, 30);
  task.body = test.first;
  return task;
}

TestItem TestItemFrom(const Item& item) {
  if (const auto* contact = std::get_if<formats::Contact>(&item)) {
    return {(*contact)[ContactField::kFirstName], (*contact)[ContactField::kJobTitle],
            (*contact)[ContactField::kBody]};
  }
  if (const auto* appointment = std::get_if<formats::Appointment>(&item)) {
    return {appointment->subject, appointment->location, appointment->body};
  }
  const auto& task = std::get<formats::Task>(item);
  return {task.subject, task.body, {}};
}

SyncOptions SyncWorld::Options() {
  SyncOptions options;
  options.zone = Berlin();
  options.country = "DE";
  options.quiet = {};
  return options;
}

std::vector<DeskItem> SyncWorld::DeskItems(ItemKind kind) const {
  std::vector<DeskItem> items;
  for (const auto& [name, file] : DeskFolder(options_.folder, Berlin()).Read({}, {}).files) {
    for (const DeskItem& item : file.items) {
      if (KindOf(item.item) == kind) items.push_back(item);
    }
  }
  return items;
}

DeskItem SyncWorld::FindOnDesk(ItemKind kind, const TestItem& item) const {
  for (const DeskItem& each : DeskItems(kind)) {
    if (TestItemFrom(each.item) == item) return each;
  }
  throw std::logic_error(item.name + " is not on the desk");
}

std::map<Oid, Item> SyncWorld::HandheldItems(ItemKind kind) const {
  std::map<Oid, Item> items;
  for (const auto& [oid, bytes] : store_.items) {
    Item item = ItemOfRecord(bytes, Berlin());
    if (KindOf(item) == kind) items.emplace(oid, std::move(item));
  }
  return items;
}

Oid SyncWorld::FindOnHandheld(ItemKind kind, const TestItem& item) const {
  for (const auto& [oid, each] : HandheldItems(kind)) {
    if (TestItemFrom(each) == item) return oid;
  }
  throw std::logic_error(item.name + " is not on the handheld");
}

void SyncWorld::WriteFile(const fs::path& file, const Item& item) const {
  fs::create_directories(file.parent_path());
  files::AtomicFile output(file);
  output.Write(TextOf(item));
  output.Commit();
}

void SyncWorld::AddOnDesk(ItemKind kind, const TestItem& item) {
  const std::string name = "person-" + std::to_string(++files_);
  Item made = ItemFrom(kind, item);
  SetUid(made, name + "@desk");
  const auto which = static_cast<std::size_t>(kind);
  WriteFile(options_.folder / kFolders[which] / (name + kExtensions[which]), made);
}

void SyncWorld::ChangeOnDesk(ItemKind kind, const TestItem& item, const TestItem& to) {
  const DeskItem now = FindOnDesk(kind, item);
  Item changed = ItemFrom(kind, to);
  SetUid(changed, UidOf(now.item));
  WriteFile(options_.folder / now.file, changed);
}

void SyncWorld::RemoveFromDesk(ItemKind kind, const TestItem& item) {
  fs::remove(options_.folder / FindOnDesk(kind, item).file);
}

void SyncWorld::RenameFileOnDesk(ItemKind kind, const TestItem& item) {
  const fs::path file = options_.folder / FindOnDesk(kind, item).file;
  fs::rename(file, file.parent_path() /
                       ("renamed-" + std::to_string(++files_) + file.extension().string()));
}

void SyncWorld::AddOnHandheld(ItemKind kind, const TestItem& item) {
  while (store_.items.contains(nextOid_)) ++nextOid_;
  store_.items[nextOid_++] = RecordFor(ItemFrom(kind, item), {}, Berlin()).xml;
}

void SyncWorld::ChangeOnHandheld(ItemKind kind, const TestItem& item, const TestItem& to) {
  store_.items[FindOnHandheld(kind, item)] = RecordFor(ItemFrom(kind, to), {}, Berlin()).xml;
}

void SyncWorld::RemoveFromHandheld(ItemKind kind, const TestItem& item) {
  store_.items.erase(FindOnHandheld(kind, item));
}

std::vector<TestItem> SyncWorld::Desk(ItemKind kind) const {
  std::vector<TestItem> items;
  for (const DeskItem& item : DeskItems(kind)) items.push_back(TestItemFrom(item.item));
  std::ranges::sort(items);
  return items;
}

std::vector<TestItem> SyncWorld::Handheld(ItemKind kind) const {
  std::vector<TestItem> items;
  for (const auto& [oid, item] : HandheldItems(kind)) items.push_back(TestItemFrom(item));
  std::ranges::sort(items);
  return items;
}

std::map<std::string, std::string> SyncWorld::FolderBytes() const {
  std::map<std::string, std::string> bytes;
  if (!fs::exists(options_.folder)) return bytes;
  for (const auto& entry : fs::recursive_directory_iterator(options_.folder)) {
    const std::string name = fs::relative(entry.path(), options_.folder).string();
    bytes[name] = entry.is_regular_file() ? files::ReadWholeFile(entry.path()) : "(a folder)";
  }
  return bytes;
}

std::map<std::string, std::string> SyncWorld::Bytes() const {
  std::map<std::string, std::string> bytes = FolderBytes();
  std::erase_if(bytes, [](const auto& entry) { return entry.first.starts_with(".corvane"); });
  for (const auto& [oid, record] : store_.items) bytes[std::to_string(oid)] = record;
  return bytes;
}

SyncSeen SyncWorld::Sync(std::size_t mostAnswers) {
  constexpr std::size_t kMostConnections = 40;
  FakeAgent agent(std::vector<FakeAgent::Script>(kMostConnections, store_.Serve(mostAnswers)));
  SyncSeen seen;
  const SyncListener listener{[&](const SyncPlan& plan) {
                                for (const Action& action : plan.items.actions) {
                                  if (std::string line = ToText(action); !line.empty())
                                    seen.planned.push_back(line);
                                }
                                seen.notices = plan.items.notices;
                              },
                              [&](const SyncPlan&, const SyncResults& results) {
                                seen.results = results;
                                seen.ended = true;
                              }};
  try {
    Synchronise(agent.options(), options_, listener);
    seen.problem = seen.results.problem;
  } catch (const Error& problem) {
    seen.problem = problem.what();
  }
  return seen;
}

}  // namespace desktop::testing
