#include "maintenance/import_contacts.h"

#include <fmt/core.h>

#include <fstream>
#include <iterator>
#include <string>

#include "formats/identity.h"
#include "formats/vcard.h"
#include "maintenance/contact_item.h"
#include "maintenance/imported_contacts.h"
#include "maintenance/status_error.h"
#include "platform/host/outlook/store_batch.h"

namespace maintenance {
namespace {

using formats::Contact;
namespace fs = std::filesystem;

struct Tally {
  std::size_t added = 0, changed = 0, unchanged = 0, failed = 0, notices = 0;
  std::size_t done() const { return added + changed + unchanged; }
};

// Writes come together in transactions: one that fails takes earlier contacts with it, so that the
// import ends there.
struct StoreFailure : StatusError {
  explicit StoreFailure(const StatusError& failure) : StatusError(failure) {}
};

ce::ComPtr<ce::IContact> AsContact(const ce::ComPtr<ce::IDispatch>& item) {
  ce::ComPtr<ce::IContact> contact;
  Check(item->QueryInterface(ce::IContact::kIid, contact.put_void()), "a contact");
  return contact;
}

class Importer {
 public:
  Importer(Session& session, const ImportOptions& options, const Report& report)
      : session_(session), options_(options), report_(report), imported_(session) {
    Check(batch_.Begin(session.Outlook().get()), "the store");
  }

  // False when the file could not be read at all.
  bool ImportFile(const fs::path& file, Tally& tally);
  // Makes what was imported last. Throws StatusError when it cannot be.
  void Commit() { Check(batch_.Commit(), "storing"); }

 private:
  void ImportContact(const fs::path& file, const formats::ParsedContact& parsed, Tally& tally);
  ce::ComPtr<ce::IContact> ItemOf(std::uint32_t oid);
  ce::ComPtr<ce::IContact> NewItem();
  std::uint32_t Store(ce::IContact& item, const Contact& contact);
  void Notice(const fs::path& file, std::size_t line, std::string_view text, Tally& tally);
  void Say(const char* verb, std::uint32_t oid, const Contact& contact);

  Session& session_;
  const ImportOptions options_;
  const Report report_;
  ImportedContacts imported_;
  ce::host::StoreBatch batch_;
};

void Importer::Notice(const fs::path& file, std::size_t line, std::string_view text, Tally& tally) {
  ++tally.notices;
  fmt::print(report_.err, "{}:{}: {}\n", file.string(), line, text);
}

void Importer::Say(const char* verb, std::uint32_t oid, const Contact& contact) {
  const std::string name = formats::DisplayName(contact);
  if (oid == 0)
    fmt::print(report_.out, "would be {:<8} {}\n", verb, name);
  else
    fmt::print(report_.out, "{:<8} {:>10}  {}\n", verb, oid, name);
}

// Null when it does not exist any more.
ce::ComPtr<ce::IContact> Importer::ItemOf(std::uint32_t oid) {
  ce::ComPtr<ce::IDispatch> item;
  const ce::HRESULT status =
      session_.Outlook()->GetItemFromOid(static_cast<ce::LONG>(oid), item.put());
  if (status == ce::E_INVALIDARG) return nullptr;
  Check(status, "looking it up");
  return AsContact(item);
}

// Nothing is stored before it is saved.
ce::ComPtr<ce::IContact> Importer::NewItem() {
  ce::ComPtr<ce::IDispatch> added;
  Check(session_.Contacts()->Add(added.put()), "adding");
  return AsContact(added);
}

std::uint32_t Importer::Store(ce::IContact& item, const Contact& contact) {
  try {
    Check(item.Save(), "storing");
    ce::LONG oid = 0;
    Check(item.get_Oid(&oid), "storing");
    imported_.Remember(contact, static_cast<std::uint32_t>(oid));
    return static_cast<std::uint32_t>(oid);
  } catch (const StatusError& failure) {
    throw StoreFailure(failure);
  }
}

void Importer::ImportContact(const fs::path& file, const formats::ParsedContact& parsed,
                             Tally& tally) {
  const Contact& contact = parsed.contact;
  const auto known = options_.duplicate ? std::nullopt : imported_.Find(contact);
  const bool pretended = known && known->oid == 0;
  const auto item = known && !pretended ? ItemOf(known->oid) : nullptr;
  const bool exists = pretended || item;
  if (exists && known->contentHash == formats::ContentHash(contact)) {
    ++tally.unchanged;
    return;
  }
  const ce::ComPtr<ce::IContact> target = item ? item : NewItem();
  for (const std::string& notKept : WriteContactItem(contact, *target.get()))
    Notice(file, parsed.line, notKept, tally);
  std::uint32_t oid = 0;
  if (options_.dryRun) {
    imported_.Pretend(contact);
  } else {
    oid = Store(*target.get(), contact);
  }
  ++(exists ? tally.changed : tally.added);
  Say(exists ? "changed" : "added", oid, contact);
}

bool Importer::ImportFile(const fs::path& file, Tally& tally) {
  std::error_code error;
  std::ifstream stream(file, std::ios::binary);
  if (!stream || fs::is_directory(file, error)) {
    fmt::print(report_.err, "corvane-device: {} cannot be read\n", file.string());
    return false;
  }
  const std::string bytes{std::istreambuf_iterator<char>(stream), {}};
  const formats::VCardFile cards = formats::ReadVCards(bytes);
  for (const formats::Notice& notice : cards.notices) Notice(file, notice.line, notice.text, tally);
  for (const formats::ParsedContact& parsed : cards.contacts) {
    for (const formats::Notice& notice : parsed.notices)
      Notice(file, notice.line, notice.text, tally);
    try {
      ImportContact(file, parsed, tally);
    } catch (const StoreFailure&) {
      throw;
    } catch (const StatusError& failure) {
      ++tally.failed;
      fmt::print(report_.err, "{}:{}: {}: {}\n", file.string(), parsed.line,
                 formats::DisplayName(parsed.contact), failure.what());
    }
  }
  if (cards.contacts.empty()) {
    fmt::print(report_.err, "corvane-device: {}: no contacts in it\n", file.string());
    return false;
  }
  return true;
}

}  // namespace

Outcome ImportFiles(Session& session, const std::vector<fs::path>& files,
                    const ImportOptions& options, const Report& report) {
  Importer importer(session, options, report);
  std::size_t done = 0;
  std::size_t failed = 0;
  for (const fs::path& file : files) {
    Tally tally;
    try {
      if (!importer.ImportFile(file, tally)) {
        ++failed;
        continue;
      }
      importer.Commit();
    } catch (const StatusError& failure) {
      fmt::print(report.err,
                 "corvane-device: {}: {}; some contacts named above may not be stored: import the "
                 "file again\n",
                 file.string(), failure.what());
      return done > 0 ? Outcome::kPartlyDone : Outcome::kFailed;
    }
    fmt::print(report.out, "{}: {}{} added, {} changed, {} unchanged, {} failed; {} notices\n",
               file.string(), options.dryRun ? "would be " : "", tally.added, tally.changed,
               tally.unchanged, tally.failed, tally.notices);
    done += tally.done();
    failed += tally.failed;
  }
  if (failed == 0) return Outcome::kDone;
  return done > 0 ? Outcome::kPartlyDone : Outcome::kFailed;
}

}  // namespace maintenance
