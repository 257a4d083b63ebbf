// The store of a handheld as another program would see and change it, below the object model.
#pragma once

#include <string>

#include "handheld/directory/handheld.h"

namespace corvane::testing {

// False when the database refuses.
bool RunSql(const ce::host::Handheld& handheld, const std::string& sql);
// The first column of each row, with a blank between; NULL is "NULL".
std::string QuerySql(const ce::host::Handheld& handheld, const std::string& sql);
// Leaves what the first format of stores had: contacts and the memory of imports.
void TakeBackToTheFirstFormat(const ce::host::Handheld& handheld);

}  // namespace corvane::testing
