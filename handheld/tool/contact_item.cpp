#include "handheld/tool/records.h"

#include <fmt/core.h>

namespace tool {
namespace {

using ce::IContact;
using formats::Contact;
using formats::ContactField;
using std::chrono::local_seconds;
using std::chrono::year_month_day;

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

std::optional<year_month_day> CalendarDate(ce::DATE date) {
  const auto day = DayOf(date);
  return day ? std::optional<year_month_day>(*day) : std::nullopt;
}

// Sets a date; one that a handheld cannot keep is a line of `notKept`.
void PutDate(IContact& item, ce::HRESULT (IContact::*put)(ce::DATE), std::string_view name,
             std::optional<year_month_day> date, NotKept& notKept) {
  const auto time =
      date ? std::optional<local_seconds>(std::chrono::local_days{*date}) : std::nullopt;
  Check((item.*put)(KeptDateOf(time, name, notKept)), name);
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
