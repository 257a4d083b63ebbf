#include "desktop/mapping.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <nlohmann/json.hpp>
#include <system_error>
#include <utility>
#include <vector>

#include "desktop/atomic_file.h"
#include "desktop/error.h"

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
  return object;
}

MappedItem ItemFrom(const json& object) {
  const auto oid = object.at("oid").get<std::int64_t>();
  if (oid <= 0 || oid > std::int64_t{UINT32_MAX}) throw Error(fmt::format("an OID of {}", oid));
  return {static_cast<Oid>(oid), object.at("kind").get<std::string>(), object.value("uid", ""),
          object.value("content", ""), object.at("hash").get<std::string>()};
}

}  // namespace

Mapping::Mapping(std::filesystem::path path) : path_(std::move(path)) {
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
  std::error_code error;
  if (path_.has_parent_path()) std::filesystem::create_directories(path_.parent_path(), error);
  const std::string name = path_.string() + ".lock";
  lock_ = open(name.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
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
  std::error_code error;
  if (!std::filesystem::exists(path_, error) && !error) return;
  const std::string bytes = ReadWholeFile(path_);
  try {
    const json file = json::parse(bytes);
    const int version = file.at("version").get<int>();
    if (version != kVersion) throw Error(fmt::format("it has version {}", version));
    for (const json& object : file.at("items")) {
      const MappedItem item = ItemFrom(object);
      if (FindOid(item.oid) != nullptr) throw Error(fmt::format("it has OID {} twice", item.oid));
      Put(item);
    }
  } catch (const std::exception& problem) {
    throw Error(fmt::format(
        "the mapping file {} cannot be understood ({}). It tells which contact here is which on "
        "the handheld. Bring back a good copy; or move it away and pull the contacts as vcf, "
        "which makes a new one",
        path_.string(), problem.what()));
  }
  changed_ = false;
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
  Remove(item.oid);
  for (const std::string& key : KeysOf(item)) {
    const auto other = byKey_.find(key);
    if (other != byKey_.end()) Remove(Oid{other->second});
    byKey_[key] = item.oid;
  }
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
  changed_ = true;
}

void Mapping::RemoveKind(std::string_view kind) {
  std::vector<Oid> oids;
  for (const auto& [oid, item] : items_) {
    if (item.kind == kind) oids.push_back(oid);
  }
  for (const Oid oid : oids) Remove(oid);
}

void Mapping::Save() {
  if (!changed_) return;
  json items = json::array();
  for (const auto& [oid, item] : items_) items.push_back(ToJson(item));
  const json file = {{"version", kVersion}, {"items", std::move(items)}};
  AtomicFile output(path_);
  output.Write(file.dump(1, ' ', false, json::error_handler_t::replace));
  output.Write("\n");
  output.Commit();
  changed_ = false;
}

std::filesystem::path DefaultMappingPath(const Target& target) {
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
