#include "handheld/directory/handheld.h"

#include <atomic>
#include <cerrno>
#include <system_error>
#include <utility>
#include <vector>

#include "common/text/unicode.h"
#include "handheld/base/durable_file.h"
#include "handheld/base/upload_memory.h"
#include "handheld/clock/handheld_clock.h"
#include "handheld/clock/zone.h"
#include "handheld/directory/directory_lock.h"
#include "handheld/directory/handheld_migration.h"
#include "handheld/registry/registry_store.h"

namespace ce::host {
namespace {

namespace fs = std::filesystem;

std::atomic<Handheld*> g_current{nullptr};

// One step a format version; empty until there is a second one.
constexpr std::span<const Migration> kMigrations;

fs::path RegistryFile(const fs::path& directory) {
  return directory / "registry.reg";
}

void RequireHandheld(const fs::path& directory) {
  std::error_code error;
  const fs::file_status status = fs::status(directory, error);
  if (!fs::exists(status)) {
    throw HandheldError(
        directory.string() + " cannot be opened: " +
        (error ? error : std::make_error_code(std::errc::no_such_file_or_directory)).message());
  }
  if (!fs::is_directory(status)) throw HandheldError(directory.string() + " is not a directory");
  const fs::file_status registry = fs::status(RegistryFile(directory), error);
  if (registry.type() == fs::file_type::none) {
    throw HandheldError(directory.string() + " cannot be read: " + error.message());
  }
  if (!fs::exists(registry)) {
    throw HandheldError(directory.string() + " is not a handheld: it has no registry.reg");
  }
  if (!fs::is_directory(directory / "files", error)) {
    throw HandheldError(directory.string() + " is not a handheld: it has no directory \"files\"");
  }
}

// Removes what was made when making the rest fails.
class Unfinished {
 public:
  ~Unfinished() {
    std::error_code ignored;
    for (auto path = made_.rbegin(); path != made_.rend(); ++path) fs::remove(*path, ignored);
  }
  void MakeDirectory(const fs::path& path) {
    std::error_code error;
    if (fs::create_directory(path, error)) {
      made_.push_back(path);
    } else if (error || !fs::is_directory(path)) {
      throw HandheldError(path.string() + " cannot be made: " + error.message());
    }
  }
  // A file that is about to be made.
  void Expect(const fs::path& path) { made_.push_back(path); }
  void Keep() { made_.clear(); }

 private:
  std::vector<fs::path> made_;
};

// Nor does a directory in which nothing is but what a process left that was killed at making one.
bool HoldsNothing(const fs::path& directory, std::error_code& error) {
  bool nothing = true;
  for (fs::directory_iterator each(directory, error), end; each != end; each.increment(error)) {
    std::error_code other;
    const fs::path name = each->path().filename();
    nothing = nothing && ((name == "files" && each->is_directory(other) &&
                           fs::is_empty(each->path(), other) && !other) ||
                          name == UnfinishedFile(RegistryFile(directory)).filename());
  }
  return nothing;
}

std::vector<NamedRegistryValue> InitialSettings(const HandheldSettings& settings) {
  const auto number = RegistryValue::Number;
  return {{setting::kFormatVersion, number(Handheld::kFormatVersion)},
          {setting::kLanguage, number(settings.language)},
          {setting::kOsMajor, number(settings.osMajor)},
          {setting::kOsMinor, number(settings.osMinor)},
          {setting::kZone, RegistryValue::Text(text::FromUtf8Lossy(settings.zone))},
          {setting::kClockOffset, RegistryValue::Text(u"0")},
          {setting::kFirstOid, number(settings.firstOid)}};
}

std::shared_ptr<Registry> LoadRegistry(const fs::path& directory,
                                       std::span<const Migration> migrations) {
  std::shared_ptr<Registry> registry = Registry::Load(RegistryFile(directory));
  MigrateHandheld(directory, *registry, Handheld::kFormatVersion, migrations);
  return registry;
}

void StoreSetting(Registry& registry, const fs::path& directory, const char16_t* name,
                  RegistryValue value) {
  if (const DWORD error = registry.SetValue(setting::kKey, name, std::move(value))) {
    throw HandheldError(RegistryFile(directory).string() + " cannot be written (error " +
                        std::to_string(error) + ")");
  }
}

}  // namespace

void Handheld::Create(const fs::path& directory, const HandheldSettings& settings) {
  if (!ValidZoneName(settings.zone)) {
    throw HandheldError("\"" + settings.zone + "\" is no name of a time zone");
  }
  Unfinished unfinished;
  unfinished.MakeDirectory(directory);
  std::error_code error;
  if (!HoldsNothing(directory, error) || error) {
    throw HandheldError(directory.string() +
                        (error ? " cannot be read: " + error.message() : " is not empty"));
  }
  // Whom the owner knows is nobody else's business.
  fs::permissions(directory, fs::perms::owner_all, error);
  if (error) throw HandheldError(directory.string() + " cannot be changed: " + error.message());
  unfinished.MakeDirectory(directory / "files");
  // The registry comes last: it is what makes the directory a handheld.
  unfinished.Expect(RegistryFile(directory));
  Registry registry(RegistryFile(directory));
  if (const DWORD code = registry.SetValues(setting::kKey, InitialSettings(settings))) {
    throw HandheldError(RegistryFile(directory).string() + " cannot be written (error " +
                        std::to_string(code) + ")");
  }
  unfinished.Keep();
}

std::unique_ptr<Handheld> Handheld::Open(const fs::path& directory, std::string_view program) {
  RequireHandheld(directory);
  auto lock = std::make_unique<DirectoryLock>(directory, program);
  return std::unique_ptr<Handheld>(new Handheld(directory, std::move(lock)));
}

std::unique_ptr<Handheld> Handheld::OpenToLook(const fs::path& directory,
                                               std::string_view program) {
  try {
    return Open(directory, program);
  } catch (const HandheldInUse&) {
    return std::unique_ptr<Handheld>(new Handheld(directory, nullptr));
  }
}

Handheld::Handheld(const fs::path& directory, std::unique_ptr<DirectoryLock> lock)
    : directory_(fs::absolute(directory)),
      lock_(std::move(lock)),
      registry_(LoadRegistry(directory_, lock_ ? kMigrations : std::span<const Migration>())),
      clock_(std::make_unique<Clock>(*registry_)),
      maxBlock_(Number(setting::kMaxBlock, kDefaultMaxBlock)) {}

Handheld::~Handheld() {
  Handheld* self = this;
  g_current.compare_exchange_strong(self, nullptr);
}

Handheld* Handheld::Current() {
  return g_current;
}

void Handheld::MakeCurrent(Handheld* handheld) {
  g_current = handheld;
  if (handheld) handheld->LimitUploads();
}

void Handheld::LimitUploads() const {
  SharedUploadMemory().SetLimits(Number(setting::kUploadMemory, UploadMemory::kDefaultBytes),
                                 std::chrono::seconds(RequestTimeout()));
}

DWORD Handheld::Number(const char16_t* name, DWORD fallback) const {
  const auto value = registry_->Value(setting::kKey, name);
  return value ? value->AsNumber().value_or(fallback) : fallback;
}

DWORD Handheld::Number(Remembered& remembered, const char16_t* name, DWORD fallback) const {
  const std::uint64_t version = registry_->version();
  const std::uint64_t known = remembered.load(std::memory_order_acquire);
  if (known >> 32 == version) return static_cast<DWORD>(known);
  const DWORD number = Number(name, fallback);
  remembered.store(version << 32 | number, std::memory_order_release);
  return number;
}

LANGID Handheld::Language() const {
  return static_cast<LANGID>(Number(language_, setting::kLanguage, HandheldSettings().language));
}

DWORD Handheld::RequestTimeout() const {
  return Number(requestTimeout_, setting::kRequestTimeout, kDefaultRequestTimeout);
}

DWORD Handheld::PeerTimeout() const {
  return Number(peerTimeout_, setting::kPeerTimeout, kDefaultPeerTimeout);
}

std::u16string Handheld::Text(const char16_t* name, std::u16string_view fallback) const {
  const auto value = registry_->Value(setting::kKey, name);
  return value ? value->AsText().value_or(std::u16string(fallback)) : std::u16string(fallback);
}

void Handheld::RequireOwnership() const {
  if (IsShared()) throw HandheldInUse(directory_.string() + " is in use by another program");
}

void Handheld::Set(const char16_t* name, DWORD value) {
  RequireOwnership();
  StoreSetting(*registry_, directory_, name, RegistryValue::Number(value));
  if (std::u16string_view(name) == setting::kMaxBlock) maxBlock_ = value;
  if (Current() == this) LimitUploads();
}

void Handheld::Set(const char16_t* name, std::u16string_view value) {
  RequireOwnership();
  StoreSetting(*registry_, directory_, name, RegistryValue::Text(value));
}

std::optional<TIME_ZONE_INFORMATION> Handheld::ZoneRules() const {
  const std::string name = text::ToUtf8Lossy(Text(setting::kZone, u"UTC"));
  const std::lock_guard guard(zoneLock_);
  if (!zone_ || zoneName_ != name) {
    zone_ = ReadZone(name);
    zoneName_ = name;
  }
  return zone_;
}

}  // namespace ce::host
