// A contact as the store has it, and the statements that read and write it.
#pragma once

#include <cstdint>
#include <vector>

#include "handheld/store/contact_fields.h"
#include "handheld/store/store.h"
#include "platform/automation.h"

namespace ce::host {

using ContactTexts = ItemTexts<ContactText, kContactTextCount>;

struct ContactRow {
  ContactTexts texts;
  bool fileAsSet = false;
  DATE birthday = kNoDate;
  DATE anniversary = kNoDate;
  std::vector<BYTE> ink;  // empty for none
};

// `found` false, and success, when there is no such contact.
[[nodiscard]] HRESULT ReadContact(Store& store, std::uint32_t oid, ContactRow& row, bool& found);
// Stores a new contact under a new identifier. Within a write.
[[nodiscard]] HRESULT InsertContact(Store& store, const ContactRow& row, std::uint32_t& oid);
// Within a write.
[[nodiscard]] HRESULT UpdateContact(Store& store, std::uint32_t oid, const ContactRow& row,
                                    bool& found);
[[nodiscard]] HRESULT ContactExists(Store& store, std::uint32_t oid, bool& found);

}  // namespace ce::host
