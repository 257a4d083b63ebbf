#include "maintenance/contact_listing.h"

#include <fmt/core.h>

#include "files/atomic_file.h"
#include "formats/contact_json.h"
#include "formats/identity.h"
#include "maintenance/contact_walk.h"
#include "maintenance/imported_contacts.h"
#include "maintenance/status_error.h"
#include "platform/host/outlook/store_batch.h"

namespace maintenance {
namespace {

using formats::Contact;
using formats::ContactField;

// Padded, or cut with an ellipsis, to so many characters of UTF-8; on one line.
std::string Column(std::string_view text, std::size_t width) {
  std::string column;
  std::size_t characters = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool starts = (static_cast<unsigned char>(text[i]) & 0xC0) != 0x80;
    if (starts && characters + 1 == width && text.find_first_not_of(' ', i) != text.npos) {
      column += "…";
      ++characters;
      break;
    }
    characters += starts;
    column += text[i] == '\n' || text[i] == '\r' ? ' ' : text[i];
  }
  return column + std::string(width > characters ? width - characters : 0, ' ');
}

const std::string& FirstOf(const Contact& contact, std::initializer_list<ContactField> fields) {
  for (const ContactField field : fields)
    if (!contact[field].empty()) return contact[field];
  return contact[*fields.begin()];
}

void PrintRow(const Report& report, std::uint32_t oid, const Contact& contact) {
  const std::string& phone =
      FirstOf(contact, {ContactField::kMobileTelephoneNumber, ContactField::kHomeTelephoneNumber,
                        ContactField::kBusinessTelephoneNumber});
  const std::string& email = FirstOf(
      contact,
      {ContactField::kEmail1Address, ContactField::kEmail2Address, ContactField::kEmail3Address});
  fmt::print(report.out, "{:>10}  {} {} {} {}\n", oid, Column(formats::DisplayName(contact), 28),
             Column(contact[ContactField::kCompanyName], 20), Column(phone, 20), email);
}

const char* Plural(std::size_t count) {
  return count == 1 ? "" : "s";
}

void RememberAll(Session& session, ImportedContacts& imported,
                 const std::vector<std::pair<std::uint32_t, Contact>>& contacts) {
  ce::host::StoreBatch batch;
  Check(batch.Begin(session.Outlook().get()), "the store");
  for (const auto& [oid, contact] : contacts) imported.Remember(contact, oid);
  Check(batch.Commit(), "the memory of imports");
}

}  // namespace

Outcome ShowContacts(Session& session, bool json, const Report& report) {
  std::size_t count = 0;
  if (json) fmt::print(report.out, "[");
  ForEachContact(session, [&](std::uint32_t oid, const Contact& contact) {
    if (json) {
      fmt::print(report.out, "{}\n{}", count ? "," : "", formats::ContactToJson(contact, oid));
    } else {
      if (count == 0)
        fmt::print(report.out, "{:>10}  {} {} {} E-mail\n", "OID", Column("Name", 28),
                   Column("Company", 20), Column("Phone", 20));
      PrintRow(report, oid, contact);
    }
    ++count;
  });
  if (json)
    fmt::print(report.out, "{}]\n", count ? "\n" : "");
  else
    fmt::print(report.out, "{} contact{}\n", count, Plural(count));
  return Outcome::kDone;
}

Outcome ExportContacts(Session& session, const std::optional<std::filesystem::path>& file,
                       formats::VCardVersion version, const Report& report) {
  ImportedContacts imported(session);
  std::optional<files::AtomicFile> output;
  if (file) output.emplace(*file);
  std::vector<std::pair<std::uint32_t, Contact>> strangers;
  std::size_t count = 0;
  ForEachContact(session, [&](std::uint32_t oid, const Contact& stored) {
    Contact contact = stored;
    contact.uid = imported.UidOf(oid);
    if (contact.uid.empty()) {
      contact.uid = formats::NewUid();
      strangers.emplace_back(oid, contact);
    }
    const std::string card = formats::WriteVCard(contact, version);
    output ? output->Write(card) : fmt::print(report.out, "{}", card);
    ++count;
  });
  if (output) output->Commit();
  if (file) fmt::print(report.out, "{}: {} contact{}\n", file->string(), count, Plural(count));
  RememberAll(session, imported, strangers);
  return Outcome::kDone;
}

Outcome RemoveItems(Session& session, const std::vector<std::uint32_t>& oids,
                    const Report& report) {
  std::size_t removed = 0;
  for (const std::uint32_t oid : oids) {
    ce::ComPtr<ce::IDispatch> item;
    ce::HRESULT status = session.Outlook()->GetItemFromOid(static_cast<ce::LONG>(oid), item.put());
    if (ce::Succeeded(status)) {
      const auto contact = item.query<ce::IContact>();
      status = contact ? contact->Delete() : ce::E_NOINTERFACE;
    }
    if (ce::Failed(status)) {
      fmt::print(report.err, "corvane-device: {}: {}\n", oid, StatusText(status));
      continue;
    }
    fmt::print(report.out, "removed {:>10}\n", oid);
    ++removed;
  }
  if (removed == oids.size()) return Outcome::kDone;
  return removed == 0 ? Outcome::kFailed : Outcome::kPartlyDone;
}

}  // namespace maintenance
