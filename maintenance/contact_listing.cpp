#include "maintenance/contact_listing.h"

#include <fmt/core.h>

#include <fstream>

#include "formats/contact_json.h"
#include "formats/identity.h"
#include "maintenance/contact_walk.h"
#include "maintenance/imported_contacts.h"
#include "maintenance/status_error.h"

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
    fmt::print(report.out, "{} contact{}\n", count, count == 1 ? "" : "s");
  return Outcome::kDone;
}

Outcome ExportContacts(Session& session, const std::optional<std::filesystem::path>& file,
                       formats::VCardVersion version, const Report& report) {
  ImportedContacts imported(session);
  std::vector<std::pair<std::uint32_t, Contact>> strangers;
  // Into a neighbour that takes the file's place when it is whole.
  std::filesystem::path partial;
  std::FILE* out = report.out;
  if (file) {
    partial = *file;
    partial += ".partial";
    out = std::fopen(partial.c_str(), "wb");
    if (!out) {
      fmt::print(report.err, "corvane-device: {} cannot be written\n", file->string());
      return Outcome::kFailed;
    }
  }
  std::size_t count = 0;
  bool written = true;
  ForEachContact(session, [&](std::uint32_t oid, const Contact& stored) {
    Contact contact = stored;
    contact.uid = imported.UidOf(oid);
    if (contact.uid.empty()) {
      contact.uid = formats::NewUid();
      strangers.emplace_back(oid, contact);
    }
    const std::string card = formats::WriteVCard(contact, version);
    written = std::fwrite(card.data(), 1, card.size(), out) == card.size() && written;
    ++count;
  });
  if (file) {
    written = std::fclose(out) == 0 && written;
    std::error_code failed;
    if (written) std::filesystem::rename(partial, *file, failed);
    if (!written || failed) {
      std::filesystem::remove(partial, failed);
      fmt::print(report.err, "corvane-device: {} cannot be written\n", file->string());
      return Outcome::kFailed;
    }
    fmt::print(report.out, "{}: {} contact{}\n", file->string(), count, count == 1 ? "" : "s");
  }
  for (const auto& [oid, contact] : strangers) imported.Remember(contact, oid);
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
