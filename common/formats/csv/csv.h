// Contacts and calls for spreadsheets: comma-separated values as RFC 4180 has them, in UTF-8.
#pragma once

#include <string>

namespace formats {

enum class CsvKind { kContacts, kCalls };

// The names of the columns, and the columns of an object that ContactToJson or CallToJson has made,
// each with its CR LF. What the object lacks is empty, categories have commas between them.
//
// A value is written as it is, whatever a spreadsheet would make of one that begins with "=": it is
// data, and who opens strangers' data as a sheet has to say that it is text.
std::string CsvHeader(CsvKind kind);
std::string CsvRow(CsvKind kind, const std::string& json);

}  // namespace formats
