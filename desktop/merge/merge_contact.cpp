#include <algorithm>
#include <array>
#include <span>
#include <string>
#include <utility>

#include "common/formats/items/identity.h"
#include "common/formats/vcard/contact_slots.h"
#include "common/text/text.h"
#include "desktop/merge/entry_merge.h"
#include "desktop/merge/field_words.h"
#include "desktop/merge/item.h"
#include "desktop/merge/item_merge.h"

namespace desktop {
namespace {

using formats::AddressSlot;
using formats::Contact;
using formats::ContactField;
using Fields = std::span<const ContactField>;

constexpr ContactField kTexts[] = {
    ContactField::kTitle,         ContactField::kFirstName,   ContactField::kMiddleName,
    ContactField::kLastName,      ContactField::kSuffix,      ContactField::kYomiFirstName,
    ContactField::kYomiLastName,  ContactField::kCompanyName, ContactField::kYomiCompanyName,
    ContactField::kDepartment,    ContactField::kJobTitle,    ContactField::kOfficeLocation,
    ContactField::kAssistantName, ContactField::kSpouse,      ContactField::kChildren,
    ContactField::kWebPage,       ContactField::kBody,
};
constexpr std::size_t kEmailCount = 3;
constexpr std::size_t kNumberCount = 11;
constexpr std::size_t kAddressFieldCount = 15;
constexpr std::size_t kFileAsCount = 1;
static_assert(std::size(kTexts) + kEmailCount + kNumberCount + kAddressFieldCount + kFileAsCount ==
              formats::kContactFieldCount);

void MergeTextField(const Versions<Contact>& versions, ContactField field,
                    MergeConflicts& conflicts) {
  MergeField(
      versions, FieldWords(field),
      [&](const Contact& contact) -> const std::string& { return contact[field]; },
      [&](Contact& contact, const std::string& text) { contact[field] = text; }, SameText, SameText,
      [](const std::string& text) { return Words(text); }, conflicts);
}

Slots SlotsOf(const Contact& contact, Fields fields) {
  Slots slots;
  for (const ContactField field : fields) slots.push_back(contact[field]);
  return slots;
}

void MergeSlotFields(const Versions<Contact>& versions, Fields fields, const std::string& listName,
                     const Alike& alike, MergeConflicts& conflicts) {
  std::vector<std::string> names;
  for (const ContactField field : fields) names.push_back(FieldWords(field));
  const Slots winnerBase = SlotsOf(versions.winnerBase, fields);
  const Slots loserBase = SlotsOf(versions.loserBase, fields);
  Slots winnerOut = SlotsOf(versions.winner, fields);
  Slots loserOut = SlotsOf(versions.loser, fields);
  const Slots winner = winnerOut;
  const Slots loser = loserOut;
  MergeSlots({winnerBase, winner, loserBase, loser, winnerOut, loserOut}, names, listName, alike,
             conflicts);
  for (std::size_t i = 0; i < fields.size(); ++i) {
    versions.winnerOut[fields[i]] = std::move(winnerOut[i]);
    versions.loserOut[fields[i]] = std::move(loserOut[i]);
  }
}

using AddressTexts = std::array<std::string, 5>;

void MergeAddress(const Versions<Contact>& versions, const AddressSlot& slot,
                  const std::string& name, MergeConflicts& conflicts) {
  const auto fields = slot.fields();
  const auto get = [&](const Contact& contact) {
    AddressTexts texts;
    for (std::size_t i = 0; i < fields.size(); ++i) texts[i] = contact[fields[i]];
    return texts;
  };
  const auto set = [&](Contact& contact, const AddressTexts& texts) {
    for (std::size_t i = 0; i < fields.size(); ++i) contact[fields[i]] = texts[i];
  };
  const auto same = [](const AddressTexts& a, const AddressTexts& b) {
    return std::ranges::equal(a, b, SameText);
  };
  const auto words = [](const AddressTexts& texts) {
    std::string all;
    for (const std::string& text : texts) {
      if (const std::string part = text::OnOneLine(text); !part.empty()) {
        all += (all.empty() ? "" : ", ") + part;
      }
    }
    return all;
  };
  MergeField(versions, name, get, set, same, same, words, conflicts);
}

template <typename Date>
void MergeDate(const Versions<Contact>& versions, const char* name, Date Contact::*member,
               MergeConflicts& conflicts) {
  MergeField(
      versions, name, [&](const Contact& contact) { return contact.*member; },
      [&](Contact& contact, const Date& date) { contact.*member = date; }, std::equal_to<Date>(),
      std::equal_to<Date>(), [](const Date& date) { return Words(date); }, conflicts);
}

std::string DerivedFileAs(Contact contact) {
  contact[ContactField::kFileAs].clear();
  return formats::WithFileAs(std::move(contact))[ContactField::kFileAs];
}

// Empty when it is as it would be derived.
std::string TypedFileAs(const Contact& contact) {
  const std::string& text = contact[ContactField::kFileAs];
  return SameText(text, DerivedFileAs(contact)) ? std::string() : text;
}

// Nobody typed it: it is as it would be derived, or was so before the name alone has changed.
bool HasUntypedFileAs(const Contact& base, const Contact& current) {
  const bool stale = SameText(base[ContactField::kFileAs], current[ContactField::kFileAs]) &&
                     TypedFileAs(base).empty();
  return TypedFileAs(current).empty() || stale;
}

// After the name and the company, from which it is derived.
void MergeFileAs(const Versions<Contact>& versions, MergeConflicts& conflicts) {
  constexpr ContactField kFileAs = ContactField::kFileAs;
  // Who changes the name alone has not typed a FileAs, though it no longer is as derived.
  const auto same = [](const Contact& a, const Contact& b) {
    return SameText(a[kFileAs], b[kFileAs]) || SameText(TypedFileAs(a), TypedFileAs(b));
  };
  const auto agree = [](const Contact& a, const Contact& b) {
    return SameText(TypedFileAs(a), TypedFileAs(b));
  };
  const auto whole = [](const Contact& contact) -> const Contact& { return contact; };
  const Flow flow = FlowOfField(versions, whole, same, agree);
  LetFlow(versions, flow, whole, [](Contact& out, const Contact& from) {
    const bool filled = !out[kFileAs].empty();
    out[kFileAs] = TypedFileAs(from);
    if (out[kFileAs].empty() && filled) out[kFileAs] = DerivedFileAs(out);
  });
  if (flow == Flow::kConflict) {
    TellConflict(
        versions, FieldWords(kFileAs), whole,
        [](const Contact& contact) { return Words(contact[kFileAs]); }, conflicts);
  }
  if (flow != Flow::kNone) return;
  if (!HasUntypedFileAs(versions.winnerBase, versions.winner) ||
      !HasUntypedFileAs(versions.loserBase, versions.loser)) {
    return;
  }
  for (Contact* const out : {&versions.winnerOut, &versions.loserOut}) {
    if (!(*out)[kFileAs].empty() && !TypedFileAs(*out).empty()) {
      (*out)[kFileAs] = DerivedFileAs(*out);
    }
  }
}

}  // namespace

void MergeContact(const Versions<Contact>& versions, const phone::PhoneNumbers& numbers,
                  MergeConflicts& conflicts) {
  for (const ContactField field : kTexts) MergeTextField(versions, field, conflicts);
  MergeFileAs(versions, conflicts);
  MergeSlotFields(
      versions, formats::kEmailSlots, "E-mail addresses",
      [](const std::string& a, const std::string& b) {
        return text::EqualsNoCase(CommonText(a), CommonText(b));
      },
      conflicts);
  for (const formats::PhoneSlots& kind : formats::kPhoneSlots) {
    MergeSlotFields(
        versions, kind.slots, FieldWords(kind.slots.front()),
        [&](const std::string& a, const std::string& b) { return numbers.Same(a, b); }, conflicts);
  }
  constexpr const char* kAddressNames[] = {"Home address", "Business address", "Other address"};
  static_assert(std::size(kAddressNames) == std::size(formats::kAddressSlots));
  for (std::size_t i = 0; i < std::size(kAddressNames); ++i) {
    MergeAddress(versions, formats::kAddressSlots[i], kAddressNames[i], conflicts);
  }
  MergeDate(versions, "Birthday", &Contact::birthday, conflicts);
  MergeDate(versions, "Anniversary", &Contact::anniversary, conflicts);
  MergeNames({versions.winnerBase.categories, versions.winner.categories,
              versions.loserBase.categories, versions.loser.categories,
              versions.winnerOut.categories, versions.loserOut.categories});
}

}  // namespace desktop
