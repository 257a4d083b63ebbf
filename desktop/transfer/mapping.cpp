#include "desktop/transfer/mapping.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <nlohmann/json.hpp>
#include <system_error>
#include <utility>
#include <vector>

#include "common/files/atomic_file.h"
#include "desktop/wire/error.h"

namespace desktop {
namespace {

using nlohmann::json;

constexpr int kVersion = 1;

std::string UidKey(std::string_view kind, std::string_view uid) {
  return fmt::format("u{}\n{}", kind, uid);
}

std::string ContentKey(std::string_view kind, std::string_view content) {
  return fmt::format("c{}\n{}", kind, content);
}

std::vector<std::string> KeysOf(const MappedItem& item) {
  std::vector<std::string> keys;
  if (!item.uid.empty()) keys.push_back(UidKey(item.kind, item.uid));
  if (!item.content.empty()) keys.push_back(ContentKey(item.kind, item.content));
  return keys;
}

json ToJson(const MappedItem& item) {
  json object = {{"oid", item.oid}, {"kind", item.kind}, {"hash", item.hash}};
  if (!item.uid.empty()) object["uid"] = item.uid;
  if (!item.content.empty()) object["content"] = item.content;
  if (!item.state.empty()) object["state"] = item.state;
  if (item.again) object["again"] = true;
  return object;
}

std::int64_t WholeNumberFrom(const json& object, const char* name) {
  const json& number = object.at(name);
  if (!number.is_number_integer()) throw Error(fmt::format("{} is no whole number", name));
  return number.get<std::int64_t>();
}

Oid OidFrom(const json& object) {
  const std::int64_t oid = WholeNumberFrom(object, "oid");
  if (oid <= 0 || oid > std::int64_t{UINT32_MAX}) throw Error(fmt::format("an OID of {}", oid));
  return static_cast<Oid>(oid);
}

MappedItem ExpectedFrom(const json& object) {
  return {0,
          object.at("kind").get<std::string>(),
          object.value("uid", ""),
          object.value("content", ""),
          object.at("hash").get<std::string>(),
          object.value("state", ""),
          object.value("again", false)};
}

MappedItem ItemFrom(const json& object) {
  MappedItem item = ExpectedFrom(object);
  item.oid = OidFrom(object);
  return item;
}

// A line of the journal: an item as it now is, or an OID that has none any more.
json LineFor(Oid oid, const MappedItem* item) {
  return item == nullptr ? json{{"oid", oid}, {"gone", true}} : ToJson(*item);
}

json ExpectedLine(const MappedItem& item, bool expected) {
  json object = ToJson(item);
  object["expected"] = expected;
  return object;
}

std::string Dump(const json& value, int indent) {
  return value.dump(indent, ' ', false, json::error_handler_t::replace) + "\n";
}

void CheckVersion(const json& object) {
  const std::int64_t version = WholeNumberFrom(object, "version");
  if (version != kVersion) throw Error(fmt::format("it has version {}", version));
}

}  // namespace

Mapping::Mapping(std::filesystem::path path)
    : path_(std::move(path)), journal_(path_.string() + ".journal") {
  Lock();
  try {
    Load();
  } catch (...) {
    close(lock_);
    throw;
  }
}

Mapping::~Mapping() {
  close(lock_);
}

void Mapping::Lock() {
  files::MakePrivateDirectories(path_.parent_path());
  const std::string name = path_.string() + ".lock";
  lock_ = open(name.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  if (lock_ < 0) {
    throw Error(fmt::format("cannot use the mapping file {}: {}: {}", path_.string(), name,
                            std::strerror(errno)));
  }
  if (flock(lock_, LOCK_EX | LOCK_NB) == 0) return;
  close(lock_);
  throw Error(
      fmt::format("the mapping file {} is in use by another corvane-desktop", path_.string()));
}

void Mapping::Load() {
  LoadFile();
  changed_ = false;
  if (journal_.exists()) {
    LoadJournal();
    Save();
  }
  unsaved_.clear();
  unsavedExpected_.clear();
}

void Mapping::Refuse(const std::filesystem::path& path, const std::string& why) {
  throw Error(fmt::format(
      "the mapping file {} cannot be understood ({}). It tells which item here is which on the "
      "handheld. Bring back a good copy; or move it away and pull the contacts as vcf and the "
      "calendar and the tasks as ics, which makes a new one",
      path.string(), why));
}

void Mapping::LoadFile() {
  std::error_code error;
  if (!std::filesystem::exists(path_, error) && !error) return;
  if (std::filesystem::is_regular_file(path_, error)) chmod(path_.c_str(), 0600);
  const std::string bytes = files::ReadWholeFile(path_);
  try {
    const json file = json::parse(bytes);
    CheckVersion(file);
    for (const json& object : file.at("items")) {
      const MappedItem item = ItemFrom(object);
      if (FindOid(item.oid) != nullptr) throw Error(fmt::format("it has OID {} twice", item.oid));
      Put(item);
    }
    if (file.contains("expected")) {
      for (const json& object : file.at("expected")) Expect(ExpectedFrom(object));
    }
  } catch (const std::exception& problem) {
    Refuse(path_, problem.what());
  }
}

// Each line sets what is so from then on. That lines are there which the file has already taken in
// does no harm: the process may have ended between the two.
void Mapping::LoadJournal() {
  const std::vector<std::string> lines = journal_.Lines();
  std::size_t number = 0;
  try {
    for (const std::string& line : lines) {
      ++number;
      if (number == 1) {
        CheckVersion(json::parse(line));
      } else {
        LoadLine(line);
      }
    }
  } catch (const std::exception& problem) {
    Refuse(journal_.path(), fmt::format("line {}: {}", number, problem.what()));
  }
}

void Mapping::LoadLine(std::string_view line) {
  const json object = json::parse(line);
  if (object.contains("gone")) {
    Remove(OidFrom(object));
  } else if (object.contains("expected")) {
    const MappedItem item = ExpectedFrom(object);
    Settle(item);
    if (object.at("expected").get<bool>()) Expect(item);
  } else {
    const MappedItem item = ItemFrom(object);
    Remove(item.oid);
    Put(item);
  }
}

const MappedItem* Mapping::FindOid(Oid oid) const {
  const auto found = items_.find(oid);
  return found == items_.end() ? nullptr : &found->second;
}

const MappedItem* Mapping::FindUid(std::string_view kind, std::string_view uid) const {
  const auto found = byKey_.find(UidKey(kind, uid));
  return found == byKey_.end() ? nullptr : FindOid(found->second);
}

const MappedItem* Mapping::FindContent(std::string_view kind, std::string_view content) const {
  const auto found = byKey_.find(ContentKey(kind, content));
  return found == byKey_.end() ? nullptr : FindOid(found->second);
}

void Mapping::Put(MappedItem item) {
  if (const MappedItem* before = FindOid(item.oid);
      before != nullptr && before->kind == item.kind) {
    if (item.uid.empty()) item.uid = before->uid;
    if (item.content.empty()) item.content = before->content;
  }
  item.again = false;
  Remove(item.oid);
  Settle(item);
  for (const std::string& key : KeysOf(item)) {
    const auto other = byKey_.find(key);
    if (other != byKey_.end()) Remove(Oid{other->second});
    byKey_[key] = item.oid;
  }
  unsaved_.insert(item.oid);
  items_[item.oid] = std::move(item);
  changed_ = true;
}

void Mapping::Move(Oid from, Oid to) {
  const MappedItem* item = FindOid(from);
  if (item == nullptr || from == to) return;
  MappedItem moved = *item;
  Remove(from);
  moved.oid = to;
  Put(std::move(moved));
}

void Mapping::Remove(Oid oid) {
  const auto found = items_.find(oid);
  if (found == items_.end()) return;
  for (const std::string& key : KeysOf(found->second)) byKey_.erase(key);
  items_.erase(found);
  unsaved_.insert(oid);
  changed_ = true;
}

void Mapping::RemoveKind(std::string_view kind) {
  std::vector<Oid> oids;
  for (const auto& [oid, item] : items_) {
    if (item.kind == kind) oids.push_back(oid);
  }
  for (const Oid oid : oids) Remove(oid);
}

void Mapping::Expect(MappedItem item) {
  const std::vector<std::string> keys = KeysOf(item);
  if (keys.empty()) return;
  item.oid = 0;
  unsavedExpected_ += Dump(ExpectedLine(item, true), -1);
  expected_[keys.front()] = std::move(item);
  changed_ = true;
}

void Mapping::Settle(const MappedItem& item) {
  for (const std::string& key : KeysOf(item)) {
    if (expected_.erase(key) == 0) continue;
    unsavedExpected_ += Dump(ExpectedLine(item, false), -1);
    changed_ = true;
  }
}

void Mapping::NoteChanges() {
  if (unsaved_.empty() && unsavedExpected_.empty()) return;
  std::string lines;
  if (journal_.empty()) lines = Dump({{"version", kVersion}}, -1);
  for (const Oid oid : unsaved_) lines += Dump(LineFor(oid, FindOid(oid)), -1);
  // After the items, since taking in an item settles it.
  lines += unsavedExpected_;
  journal_.Append(lines);
  unsaved_.clear();
  unsavedExpected_.clear();
}

void Mapping::SaveChanges() {
  NoteChanges();
  journal_.Sync();
}

void Mapping::Save() {
  if (changed_) {
    json items = json::array();
    for (const auto& [oid, item] : items_) items.push_back(ToJson(item));
    json file = {{"version", kVersion}, {"items", std::move(items)}};
    for (const auto& [key, item] : expected_) file["expected"].push_back(ToJson(item));
    files::AtomicFile output(path_, files::Access::kPrivate);
    output.Write(Dump(file, 1));
    output.Commit();
    changed_ = false;
    unsaved_.clear();
    unsavedExpected_.clear();
  }
  journal_.Discard();
}

std::vector<Oid> OidsOf(const Mapping& mapping, std::string_view kind,
                        const std::vector<std::string>& uids) {
  std::vector<Oid> oids;
  for (const std::string& uid : uids) {
    const MappedItem* const item = mapping.FindUid(kind, uid);
    if (item == nullptr) throw Error(fmt::format("no {} with the UID {} is known here", kind, uid));
    oids.push_back(item->oid);
  }
  return oids;
}

std::filesystem::path MappingPath(const std::optional<std::filesystem::path>& chosen,
                                  const Target& target) {
  if (chosen) return *chosen;
  std::string name = target.host + "_" + target.port + ".json";
  for (char& c : name) {
    if (c == '/' || c == ':') c = '-';
  }
  const char* state = std::getenv("XDG_STATE_HOME");
  if (state != nullptr && state[0] == '/') return std::filesystem::path(state) / "corvane" / name;
  const char* home = std::getenv("HOME");
  if (home == nullptr || home[0] != '/') {
    throw Error("neither XDG_STATE_HOME nor HOME says where to keep the mapping: use --map FILE");
  }
  return std::filesystem::path(home) / ".local/state/corvane" / name;
}

}  // namespace desktop
