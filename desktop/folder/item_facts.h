// What an appointment or a task says, field by field.
#pragma once

#include <map>
#include <set>
#include <string>

#include "desktop/merge/item.h"

namespace desktop {

// By name; a field without a value is not there. An exception of a series has its day before the
// names of its fields: "2026-11-29/Subject", "2026-11-30/Deleted".
using ItemFacts = std::map<std::string, std::string>;

// In the common form. Of no contact.
ItemFacts FactsOf(const Item& item);

// The fields that one has otherwise than the other.
std::set<std::string> DifferingFields(const ItemFacts& a, const ItemFacts& b);

}  // namespace desktop
