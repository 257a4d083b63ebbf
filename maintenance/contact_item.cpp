#include "maintenance/contact_item.h"

#include <fmt/core.h>

#include <cmath>

#include "maintenance/status_error.h"
#include "platform/com_ptr.h"
#include "platform/host/handheld.h"
#include "platform/host/system/utf.h"

namespace maintenance {
namespace {

using ce::Bstr;
using ce::IContact;
using formats::Contact;
using formats::ContactField;

struct FieldRow {
  ContactField field;
  ce::HRESULT (IContact::*get)(ce::BSTR*);
  ce::HRESULT (IContact::*put)(ce::BSTR);
};

#define FIELD(Name) \
  { ContactField::k##Name, &IContact::get_##Name, &IContact::put_##Name }
constexpr FieldRow kFields[] = {
    FIELD(Email1Address),
    FIELD(Email2Address),
    FIELD(Email3Address),
    FIELD(FirstName),
    FIELD(LastName),
    FIELD(CompanyName),
    FIELD(FileAs),
    FIELD(BusinessFaxNumber),
    FIELD(Department),
    FIELD(MobileTelephoneNumber),
    FIELD(PagerNumber),
    FIELD(BusinessTelephoneNumber),
    FIELD(JobTitle),
    FIELD(HomeTelephoneNumber),
    FIELD(Spouse),
    FIELD(Home2TelephoneNumber),
    FIELD(HomeFaxNumber),
    FIELD(AssistantName),
    FIELD(Children),
    FIELD(WebPage),
    FIELD(Business2TelephoneNumber),
    FIELD(Title),
    FIELD(MiddleName),
    FIELD(Suffix),
    FIELD(HomeAddressStreet),
    FIELD(HomeAddressCity),
    FIELD(HomeAddressState),
    FIELD(HomeAddressPostalCode),
    FIELD(HomeAddressCountry),
    FIELD(OtherAddressStreet),
    FIELD(OtherAddressCity),
    FIELD(OtherAddressState),
    FIELD(OtherAddressPostalCode),
    FIELD(OtherAddressCountry),
    FIELD(BusinessAddressStreet),
    FIELD(BusinessAddressCity),
    FIELD(BusinessAddressState),
    FIELD(BusinessAddressPostalCode),
    FIELD(BusinessAddressCountry),
    FIELD(RadioTelephoneNumber),
    FIELD(Body),
    FIELD(YomiCompanyName),
    FIELD(YomiFirstName),
    FIELD(YomiLastName),
    FIELD(OfficeLocation),
    FIELD(CarTelephoneNumber),
    FIELD(AssistantTelephoneNumber),
};
#undef FIELD
static_assert(std::size(kFields) == formats::kContactFieldCount);

// A handheld's lines end with CR LF, those of people's contacts with LF.
std::u16string WithStoredLineEnds(std::u16string_view text) {
  std::u16string stored;
  for (const char16_t unit : text) {
    if (unit == u'\n' && (stored.empty() || stored.back() != u'\r')) stored += u'\r';
    stored += unit;
  }
  return stored;
}

std::string WithPlainLineEnds(std::string text) {
  std::size_t kept = 0;
  for (std::size_t i = 0; i < text.size(); ++i)
    if (text[i] != '\r' || i + 1 == text.size() || text[i + 1] != '\n') text[kept++] = text[i];
  text.resize(kept);
  return text;
}

std::string ReadText(IContact& item, ce::HRESULT (IContact::*get)(ce::BSTR*),
                     std::string_view name) {
  Bstr text;
  const ce::HRESULT status = (item.*get)(text.put());
  if (status == ce::E_NOTIMPL) return {};
  Check(status, name);
  return WithPlainLineEnds(ce::host::ToUtf8Lossy(text.view()));
}

// Names are separated by a comma and, possibly, one blank.
std::vector<std::string> SplitCategories(std::string_view text) {
  std::vector<std::string> names;
  while (!text.empty()) {
    const std::size_t comma = text.find(',');
    if (const std::string_view name = text.substr(0, comma); !name.empty())
      names.emplace_back(name);
    if (comma == std::string_view::npos) break;
    text.remove_prefix(comma + 1);
    if (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  }
  return names;
}

std::string JoinCategories(const std::vector<std::string>& names) {
  std::string joined;
  for (const std::string& name : names) {
    if (!joined.empty()) joined += ',';
    joined += name;
  }
  return joined;
}

std::optional<formats::Date> DateOf(ce::DATE date) {
  if (date == ce::kNoDate) return std::nullopt;
  ce::SYSTEMTIME time{};
  if (!ce::VariantTimeToSystemTime(std::floor(date), &time)) return std::nullopt;
  return formats::Date{time.wYear, time.wMonth, time.wDay};
}

// Sets a date; one that no calendar has is a line of `notKept`.
void PutDate(IContact& item, ce::HRESULT (IContact::*put)(ce::DATE), std::string_view name,
             const std::optional<formats::Date>& date, std::vector<std::string>& notKept) {
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

// The longest text that the setter takes, found without knowing its limit.
std::size_t PutLongest(IContact& item, const FieldRow& row, std::u16string_view text) {
  std::size_t fits = 0;
  std::size_t tooLong = text.size();
  while (tooLong - fits > 1) {
    const std::size_t middle = fits + (tooLong - fits) / 2;
    const ce::HRESULT status = (item.*row.put)(Bstr(text.substr(0, middle)).get());
    if (status != ce::kTextTooLong) Check(status, formats::ContactFieldName(row.field));
    (status == ce::kTextTooLong ? tooLong : fits) = middle;
  }
  // Not between the halves of one character.
  if (fits > 0 && (text[fits - 1] & 0xFC00) == 0xD800) --fits;
  Check((item.*row.put)(Bstr(text.substr(0, fits)).get()), formats::ContactFieldName(row.field));
  return fits;
}

void PutText(IContact& item, const FieldRow& row, std::string_view utf8,
             std::vector<std::string>& notKept) {
  const std::string_view name = formats::ContactFieldName(row.field);
  const std::u16string text = WithStoredLineEnds(ce::host::FromUtf8Lossy(utf8));
  const ce::HRESULT status = (item.*row.put)(Bstr(std::u16string_view(text)).get());
  if (status == ce::kTextTooLong) {
    const std::size_t kept = PutLongest(item, row, text);
    notKept.push_back(
        fmt::format("{}: cut from {} to {} characters, which is what a handheld keeps", name,
                    text.size(), kept));
  } else if (status == ce::E_NOTIMPL) {
    if (!text.empty()) notKept.push_back(fmt::format("{}: this handheld does not have it", name));
  } else {
    Check(status, name);
  }
}

}  // namespace

Contact ReadContactItem(IContact& item) {
  Contact contact;
  for (const FieldRow& row : kFields)
    contact[row.field] = ReadText(item, row.get, formats::ContactFieldName(row.field));
  contact.categories = SplitCategories(ReadText(item, &IContact::get_Categories, "Categories"));
  ce::DATE date = ce::kNoDate;
  Check(item.get_Birthday(&date), "Birthday");
  contact.birthday = DateOf(date);
  Check(item.get_Anniversary(&date), "Anniversary");
  contact.anniversary = DateOf(date);
  return contact;
}

std::vector<std::string> WriteContactItem(const Contact& contact, IContact& item) {
  std::vector<std::string> notKept;
  for (const FieldRow& row : kFields) {
    // A name to file under that is set stays as it is; without one the handheld derives it.
    if (row.field == ContactField::kFileAs && contact[row.field].empty()) continue;
    PutText(item, row, contact[row.field], notKept);
  }
  // Whole names only: a category that is cut would be another category.
  std::vector<std::string> categories = contact.categories;
  for (;;) {
    const std::u16string joined = ce::host::FromUtf8Lossy(JoinCategories(categories));
    const ce::HRESULT status = item.put_Categories(Bstr(std::u16string_view(joined)).get());
    if (status != ce::kTextTooLong) {
      Check(status, "Categories");
      break;
    }
    notKept.push_back(fmt::format("Categories: no room for \"{}\"", categories.back()));
    categories.pop_back();
  }
  PutDate(item, &IContact::put_Birthday, "Birthday", contact.birthday, notKept);
  PutDate(item, &IContact::put_Anniversary, "Anniversary", contact.anniversary, notKept);
  return notKept;
}

}  // namespace maintenance
