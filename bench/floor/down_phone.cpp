#include <vector>

#include "bench/floor/down.h"
#include "platform/mapi.h"
#include "platform/phone.h"

namespace floors {
namespace {

constexpr int kFirstDocument = 1;
constexpr int kOtherDocuments = 40;

struct Folder {
  std::int64_t id;
  std::string path;
};

// Each followed by those below it. Drafts and what was thrown away stay at home.
void ListFolders(Query& children, std::int64_t parent, const std::string& path,
                 std::vector<Folder>& folders) {
  std::vector<Folder> found;
  children.Bind(1, parent);
  while (children.Step()) {
    found.push_back({children.Integer(0), path + "/" + std::string(children.Text(1))});
  }
  children.Reset();
  for (const Folder& folder : found) {
    folders.push_back(folder);
    ListFolders(children, folder.id, folder.path, folders);
  }
}

std::vector<Folder> ExportedFolders(const Database& store) {
  Query top(store,
            "SELECT f.id FROM message_folders f JOIN message_stores s ON f.entry_id ="
            " s.subtree_entry_id WHERE s.display_name = 'SMS'");
  Query children(store,
                 "SELECT f.id, f.display_name FROM message_folders f JOIN message_stores s"
                 " ON f.store = s.id WHERE f.parent = ?1 AND f.entry_id IS NOT s.drafts_entry_id"
                 " AND f.entry_id IS NOT s.wastebasket_entry_id ORDER BY f.id");
  std::vector<Folder> folders;
  if (top.Step()) ListFolders(children, top.Integer(0), "", folders);
  return folders;
}

void AddHex(Xml& xml, std::string_view bytes) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  char digits[128];
  char* end = digits;
  for (const char byte : bytes.substr(0, sizeof(digits) / 2)) {
    *end++ = kDigits[static_cast<unsigned char>(byte) >> 4];
    *end++ = kDigits[byte & 0xF];
  }
  xml.Raw({digits, static_cast<std::size_t>(end - digits)});
}

// A row for each recipient, at least one.
constexpr char kMessages[] =
    "SELECT m.id, entry_id, delivery_time, flags, sender_address, subject, r.address"
    " FROM messages m LEFT JOIN message_recipients r ON r.message = m.id"
    " WHERE folder = ?1 ORDER BY m.id, r.position";

void OpenMessage(Xml& xml, std::string_view folder, const Query& message) {
  xml.Raw("<SMS Oid=\"");
  AddHex(xml, message.Text(1));
  xml.Raw("\">");
  xml.Element("Folder", folder);
  xml.FileTime("Time", message.Integer(2));
  xml.Element("Flags", message.Integer(3));
  if ((message.Integer(3) & ce::MSGFLAG_FROMME) == 0) xml.Element("Sender", message.Text(4));
  xml.Element("NOTES", message.Text(5));
}

void AddRecipient(Xml& xml, const Query& message, bool& any) {
  if (message.IsNull(6)) return;
  if (!any) xml.Raw("<Recipients>");
  any = true;
  xml.Raw("<Recipient>");
  xml.Element("Number", message.Text(6));
  xml.Raw("</Recipient>");
}

void SendFolder(Query& message, const Folder& folder, RecordStream& stream) {
  stream.Group(kFirstDocument, kOtherDocuments);
  message.Bind(1, folder.id);
  bool more = message.Step();
  while (more) {
    Xml& xml = stream.Next();
    const std::int64_t id = message.Integer(0);
    OpenMessage(xml, folder.path, message);
    bool anyRecipient = false;
    do {
      AddRecipient(xml, message, anyRecipient);
      more = message.Step();
    } while (more && message.Integer(0) == id);
    if (anyRecipient) xml.Raw("</Recipients>");
    xml.Raw("</SMS>");
  }
  message.Reset();
}

// The calls of the workload have no notes.
constexpr char kCalls[] =
    "SELECT number, name, name_type, flags, caller_id_type, start_time, end_time FROM calls"
    " ORDER BY start_time DESC, id DESC";

void AddBool(Xml& xml, std::string_view name, bool value) {
  xml.Element(name, value ? "TRUE" : "FALSE");
}

void AddCall(Xml& xml, const Query& call) {
  xml.Raw("<Call>");
  xml.Element("Number", call.Text(0));
  xml.Element("Name", call.Text(1));
  xml.Element("Type", call.Text(2));
  const std::int64_t flags = call.Integer(3);
  AddBool(xml, "Outgoing", (flags & ce::CALLLOG_OUTGOING) != 0);
  AddBool(xml, "Connected", (flags & ce::CALLLOG_CONNECTED) != 0);
  AddBool(xml, "Roam", (flags & ce::CALLLOG_ROAM) != 0);
  AddBool(xml, "Ended", (flags & ce::CALLLOG_ENDED) != 0);
  xml.Element("CID", call.Integer(4));
  xml.FileTime("Start", call.Integer(5));
  xml.FileTime("End", call.Integer(6));
  xml.Raw("</Call>");
}

}  // namespace

void SendMessages(const Database& store, RecordStream& stream) {
  Query message(store, kMessages);
  for (const Folder& folder : ExportedFolders(store)) SendFolder(message, folder, stream);
}

void SendCalls(const Database& store, RecordStream& stream) {
  Query call(store, kCalls);
  stream.Group(kFirstDocument, kOtherDocuments);
  while (call.Step()) AddCall(stream.Next(), call);
}

}  // namespace floors
