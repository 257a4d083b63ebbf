// What a person hands in to be sent, file by file.
#pragma once

#include <filesystem>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "desktop/oid.h"

namespace desktop {

struct PushRecord {
  std::string place;  // "FILE:LINE", or "contact" when it comes from no file
  std::string title;  // what to call it in a message; empty for none
  std::string kind;   // the mapping's
  std::string uid;
  std::string content;  // the mapping's stand-in for a UID; empty when there is one, or an own OID
  std::string hash;
  std::string state;          // StateHash of a contact; empty for other records
  std::string xml;            // with an "Oid" only when ownOid has it
  std::optional<Oid> ownOid;  // the file itself says which item it is
  bool deletes = false;
};

// Contacts of a vCard file, or the records of an XML document that the agent takes in. Which of
// them it is, the extension says (.vcf, .vcard, .xml), otherwise the first character. What was read
// but cannot be sent goes to notices as FILE:LINE: text. Throws Error when the file cannot be read,
// is malformed, or is no vCard file though it should be.
std::vector<PushRecord> ReadPushFile(const std::filesystem::path& path, std::ostream& notices);

// Asks for the deletion of a contact.
PushRecord DeletionOf(Oid oid);

}  // namespace desktop
