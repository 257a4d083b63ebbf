// What becomes of each vCard property: one row a name.
#pragma once

#include <string_view>

#include "common/formats/items/contact.h"

namespace formats {

enum class PropertyKind {
  kIgnored,  // says nothing about the person
  kNotKept,  // a contact has no place for it
  kForNote,  // nor for this, but its note may have
  kName,
  kFormattedName,
  kOrganization,
  kText,      // one field
  kWeakText,  // the same field, unless something better fills it
  kPhone,
  kEmail,
  kAddress,
  kAddressLabel,
  kWebPage,
  kBirthday,
  kAnniversary,
  kLabelledDate,  // what its group's label says
  kNote,
  kCategories,
  kUid,
  kChild,
  kRelated,  // spouse, child or assistant, as its type or label says
  kKind,
  kShowAs,
  kClass,
  kSound,
  kAndroidItem,
};

struct PropertyRule {
  std::string_view name;
  PropertyKind kind;
  ContactField field = ContactField::kBody;  // of kText and kWeakText
  // Why it is not kept (kNotKept, kForNote), or the type that the name implies (kPhone).
  std::string_view detail = {};
};

// The row of an upper-case name; for an unknown one a row of kind kNotKept.
const PropertyRule& FindPropertyRule(std::string_view name);

// The type words, separated by commas, that a group's label such as "_$!<HomeFAX>!$_" stands for.
// Null for a label that is a person's own words.
const std::string_view* FindLabelTypes(std::string_view label);

}  // namespace formats
