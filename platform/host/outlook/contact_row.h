// A contact as the store has it, and the statements that read and write it.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/automation.h"
#include "platform/host/outlook/contact_fields.h"
#include "platform/host/outlook/session.h"
#include "platform/host/outlook/store.h"

namespace ce::host {

// The texts of one contact, in one block of memory: most of them are short, many empty.
class ContactTexts {
 public:
  // Stored text (stored_text.h), valid until the next change.
  std::string_view operator[](ContactText text) const {
    return View(static_cast<std::size_t>(text));
  }
  std::string_view View(std::size_t index) const;

  void Reserve(std::size_t bytes) { block_.reserve(bytes); }
  void Set(std::size_t index, std::u16string_view text);
  void SetStored(std::size_t index, std::string_view stored);

 private:
  struct Span {
    std::uint32_t offset = 0;
    std::uint32_t bytes = 0;
  };
  void Replaced(std::size_t index, std::size_t offset);
  void Compact();

  std::string block_;
  std::array<Span, kContactTextCount> spans_{};
  std::size_t used_ = 0;  // bytes of the block that spans refer to
};

struct ContactRow {
  ContactTexts texts;
  bool fileAsSet = false;
  DATE birthday = kNoDate;
  DATE anniversary = kNoDate;
  std::vector<BYTE> ink;  // empty for none
};

// Characters that a text of this kind may have.
std::size_t LongestText(const ItemLimits& limits, TextKind kind);

// `found` false, and success, when there is no such contact.
[[nodiscard]] HRESULT ReadContact(Store& store, std::uint32_t oid, ContactRow& row, bool& found);
// Stores a new contact under a new identifier. Within a write.
[[nodiscard]] HRESULT InsertContact(Store& store, const ContactRow& row, std::uint32_t& oid);
// Within a write.
[[nodiscard]] HRESULT UpdateContact(Store& store, std::uint32_t oid, const ContactRow& row,
                                    bool& found);
[[nodiscard]] HRESULT ContactExists(Store& store, std::uint32_t oid, bool& found);

}  // namespace ce::host
