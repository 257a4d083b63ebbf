#include "handheld/tool/records.h"

#include <fmt/core.h>

namespace tool {
namespace {

using ce::IContact;
using formats::Contact;
using formats::ContactField;

struct FieldRow {
  ContactField field;
  ce::HRESULT (IContact::*get)(ce::BSTR*);
  ce::HRESULT (IContact::*put)(ce::BSTR);
};

constexpr FieldRow kFields[] = {
#define TOOL_FIELD(Name) {ContactField::k##Name, &IContact::get_##Name, &IContact::put_##Name},
    FORMATS_CONTACT_FIELDS(TOOL_FIELD)
#undef TOOL_FIELD
};

std::optional<formats::Date> CalendarDate(ce::DATE date) {
  const auto day = DayOf(date);
  if (!day) return std::nullopt;
  const std::chrono::year_month_day ymd{*day};
  return formats::Date{static_cast<int>(ymd.year()),
                       static_cast<int>(static_cast<unsigned>(ymd.month())),
                       static_cast<int>(static_cast<unsigned>(ymd.day()))};
}

// Sets a date; one that no calendar has is a line of `notKept`.
void PutDate(IContact& item, ce::HRESULT (IContact::*put)(ce::DATE), std::string_view name,
             const std::optional<formats::Date>& date, NotKept& notKept) {
  ce::DATE value = ce::kNoDate;
  if (date) {
    ce::SYSTEMTIME time{};
    time.wYear = static_cast<ce::WORD>(date->year);
    time.wMonth = static_cast<ce::WORD>(date->month);
    time.wDay = static_cast<ce::WORD>(date->day);
    if (date->year < 1900 || date->year > 2999 || !ce::SystemTimeToVariantTime(&time, &value)) {
      notKept.push_back(fmt::format("{}: {:04}-{:02}-{:02} is no date that a handheld keeps", name,
                                    date->year, date->month, date->day));
      value = ce::kNoDate;
    }
  }
  Check((item.*put)(value), name);
}

}  // namespace

Contact ReadItem(IContact& item) {
  Contact contact;
  for (const FieldRow& row : kFields)
    contact[row.field] = ReadText(item, row.get, formats::ContactFieldName(row.field));
  contact.categories = ReadCategories(item);
  contact.birthday = CalendarDate(Read(item, &IContact::get_Birthday, "Birthday"));
  contact.anniversary = CalendarDate(Read(item, &IContact::get_Anniversary, "Anniversary"));
  return contact;
}

NotKept WriteItem(const Contact& contact, IContact& item) {
  NotKept notKept;
  for (const FieldRow& row : kFields) {
    // A name to file under that is set stays as it is; without one the handheld derives it.
    if (row.field == ContactField::kFileAs && contact[row.field].empty()) continue;
    PutText(item, row.put, formats::ContactFieldName(row.field), contact[row.field], notKept);
  }
  PutCategories(item, contact.categories, notKept);
  PutDate(item, &IContact::put_Birthday, "Birthday", contact.birthday, notKept);
  PutDate(item, &IContact::put_Anniversary, "Anniversary", contact.anniversary, notKept);
  return notKept;
}

}  // namespace tool
