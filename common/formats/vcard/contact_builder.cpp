#include "common/formats/vcard/contact_builder.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>

#include "common/formats/lines/category_list.h"
#include "common/formats/lines/content_writer.h"
#include "common/formats/vcard/overflow_block.h"
#include "common/formats/vcard/overflow_collection.h"
#include "common/formats/vcard/personal_name.h"
#include "common/formats/vcard/slot_placement.h"
#include "common/formats/vcard/vcard_dates.h"
#include "common/formats/vcard/vcard_rules.h"
#include "common/text/text.h"

namespace formats {
namespace {

using Field = ContactField;

class ContactBuilder {
 public:
  ContactBuilder(Overflow overflow, NoticeList& notices) : overflow_(overflow), notices_(notices) {}
  Contact Build(std::vector<Property>& properties);

 private:
  struct WeakText {
    const Property* property;
    Field field;
    std::string text;
  };

  void ApplyTypes(std::vector<Property>& properties);
  void Take(const Property& property);
  void TakeByKind(const Property& property, const PropertyRule& rule);
  void Finish();

  // Puts a text into a field that holds one; a different second one makes a notice.
  void SetText(const Property& property, Field field, const std::string& text);
  void SetDate(const Property& property, std::optional<year_month_day>& date,
               std::string_view text);
  void TakeName(const Property& property);
  void TakeOrganization(const Property& property);
  void TakeNote(const Property& property);
  void TakeCategories(const Property& property);
  void TakeChild(const std::string& name);
  void TakeRelated(const Property& property);
  void TakeLabelledDate(const Property& property);
  void TakeUid(const Property& property);
  void TakeKind(const Property& property);
  void TakeSound(const Property& property);
  void TakeAndroidItem(const Property& property);
  void UseFormattedName();
  void CompareFormattedName(const std::string& name);

  bool hasBlock() const { return overflow_ != Overflow::kLeftOut; }

  const Overflow overflow_;
  Contact contact_;
  OverflowBlock block_;
  NoticeList& notices_;
  PropertyRefs phones_, emails_, addresses_, addressLabels_, webPages_;
  std::vector<WeakText> weakTexts_;
  std::size_t noteLine_ = 0;
  std::set<std::string> notes_, categories_, children_;
  std::string name_;  // N as it came
  std::string formattedName_;
  const Property* formatted_ = nullptr;
  bool nameGiven_ = false;
  bool isOrganization_ = false;
};

bool IsBlank(std::string_view text) {
  return text::TrimBlanks(text).empty();
}

bool IsEmptyText(std::string_view value) {
  return value.find_first_not_of(';') == value.npos;
}

// Nothing, or the separators of components alone.
bool IsEmptyValue(const Property& property, PropertyKind kind) {
  if (kind == PropertyKind::kWebPage) return property.value.empty();
  return IsEmptyText(property.value) && property.Parameter("LABEL") == nullptr;
}

// As vCard 3.0 writes it.
std::string ValueOnOneLine(const Property& property) {
  if (property.dialect == VCardDialect::k21) return ContentValue().Add(TextOf(property)).text();
  std::string value;
  for (const char c : property.value) {
    if (c == '\n')
      value += "\\n";
    else if (!text::IsControl(c))
      value += c;
  }
  return value;
}

Contact ContactBuilder::Build(std::vector<Property>& properties) {
  ApplyTypes(properties);
  std::vector<std::pair<int, const Property*>> ordered;
  ordered.reserve(properties.size());
  for (const Property& property : properties) {
    ordered.emplace_back(property.Preference(), &property);
  }
  std::stable_sort(ordered.begin(), ordered.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  for (const auto& [preference, property] : ordered) Take(*property);
  Finish();
  return std::move(contact_);
}

// A group's label tells the kind of the other properties of the group; some names tell it, too.
void ContactBuilder::ApplyTypes(std::vector<Property>& properties) {
  std::map<std::string, std::string> labels;
  for (const Property& property : properties) {
    if (property.name == "X-ABLABEL" && !property.group.empty()) {
      labels.emplace(property.group, TextOf(property));
    }
  }
  for (Property& property : properties) {
    const PropertyRule& rule = FindPropertyRule(property.name);
    if (rule.kind == PropertyKind::kPhone && !rule.detail.empty()) {
      property.parameters.emplace_back("TYPE", rule.detail);
    }
    const auto label = labels.find(property.group);
    if (label == labels.end() || property.name == "X-ABLABEL") continue;
    if (const std::string_view* types = FindLabelTypes(label->second)) {
      for (std::string_view type : SplitValue(*types, ',')) {
        property.parameters.emplace_back("TYPE", type);
      }
    } else {
      property.label = label->second;
    }
  }
}

void ContactBuilder::Take(const Property& property) {
  const PropertyRule& rule = FindPropertyRule(property.name);
  if (rule.kind == PropertyKind::kIgnored || IsEmptyValue(property, rule.kind)) return;
  if (rule.kind == PropertyKind::kNotKept || (rule.kind == PropertyKind::kForNote && !hasBlock())) {
    notices_.Add(property, rule.detail);
    return;
  }
  if (!property.problem.empty()) notices_.Add(property, property.problem);
  TakeByKind(property, rule);
}

void ContactBuilder::TakeByKind(const Property& property, const PropertyRule& rule) {
  const bool keepsNoLabel =
      rule.kind == PropertyKind::kPhone || rule.kind == PropertyKind::kEmail ||
      rule.kind == PropertyKind::kAddress || rule.kind == PropertyKind::kWebPage;
  if (keepsNoLabel && !property.label.empty() && !hasBlock()) {
    notices_.Add(property, "a contact keeps no labels of a person's own");
  }
  switch (rule.kind) {
    case PropertyKind::kIgnored:
    case PropertyKind::kNotKept:
      return;
    case PropertyKind::kForNote:
      // It may have been controls alone.
      if (std::string value = ValueOnOneLine(property); !IsEmptyText(value))
        block_.Add(property, std::move(value));
      return;
    case PropertyKind::kName:
      return TakeName(property);
    case PropertyKind::kFormattedName: {
      const bool derived = property.Parameter("DERIVED") || property.Parameter("X-DERIVED");
      if (formattedName_.empty() && !derived) {
        formattedName_ = TextOf(property);
        formatted_ = &property;
      }
      return;
    }
    case PropertyKind::kOrganization:
      return TakeOrganization(property);
    case PropertyKind::kText:
      return SetText(property, rule.field, TextOf(property));
    case PropertyKind::kWeakText:
      weakTexts_.push_back({&property, rule.field, TextOf(property)});
      return;
    case PropertyKind::kPhone:
      return phones_.push_back(&property);
    case PropertyKind::kEmail:
      return emails_.push_back(&property);
    case PropertyKind::kAddress:
      return addresses_.push_back(&property);
    case PropertyKind::kAddressLabel:
      return addressLabels_.push_back(&property);
    case PropertyKind::kWebPage:
      return webPages_.push_back(&property);
    case PropertyKind::kBirthday:
      return SetDate(property, contact_.birthday, TextOf(property));
    case PropertyKind::kAnniversary:
      return SetDate(property, contact_.anniversary, TextOf(property));
    case PropertyKind::kLabelledDate:
      return TakeLabelledDate(property);
    case PropertyKind::kNote:
      return TakeNote(property);
    case PropertyKind::kCategories:
      return TakeCategories(property);
    case PropertyKind::kUid:
      return TakeUid(property);
    case PropertyKind::kChild:
      return TakeChild(TextOf(property));
    case PropertyKind::kRelated:
      return TakeRelated(property);
    case PropertyKind::kKind:
      return TakeKind(property);
    case PropertyKind::kShowAs:
      isOrganization_ = isOrganization_ || text::EqualsNoCase(TextOf(property), "COMPANY");
      return;
    case PropertyKind::kClass:
      if (text::EqualsNoCase(TextOf(property), "PUBLIC")) return;
      return notices_.Add(property, "a contact cannot be marked as private");
    case PropertyKind::kSound:
      return TakeSound(property);
    case PropertyKind::kAndroidItem:
      return TakeAndroidItem(property);
  }
}

void ContactBuilder::SetText(const Property& property, Field field, const std::string& text) {
  std::string& kept = contact_[field];
  if (text.empty() || text == kept) return;
  if (kept.empty()) {
    kept = text;
  } else {
    notices_.Add(property, "a contact has one " + std::string(ContactFieldName(field)) +
                               ", left out: " + text::Excerpt(text));
  }
}

void ContactBuilder::SetDate(const Property& property, std::optional<year_month_day>& date,
                             std::string_view text) {
  DateReading reading = ReadDate(text);
  const std::string* omitted = property.Parameter("X-APPLE-OMIT-YEAR");
  if (reading.date && omitted != nullptr && text.starts_with(*omitted)) {
    reading = ReadDate("--");  // the year is there for the form's sake
  }
  if (!reading.date) {
    notices_.Add(property, std::string(reading.problem) + ": " + text::Excerpt(text));
  } else if (!date) {
    date = reading.date;
  } else if (date != reading.date) {
    notices_.Add(property, "a contact has one such date, left out: " + text::Excerpt(text));
  }
}

void ContactBuilder::TakeName(const Property& property) {
  if (nameGiven_) {
    if (property.value == name_) return;
    return notices_.Add(property, "a contact has one name, this one was left out");
  }
  name_ = property.value;
  const std::vector<std::string_view> parts = SplitValue(property.value, ';');
  constexpr struct {
    Field field;
    std::string_view glue;  // of a list; empty where a comma is text
  } kParts[] = {{Field::kLastName, ""},
                {Field::kFirstName, ""},
                {Field::kMiddleName, " "},
                {Field::kTitle, " "},
                {Field::kSuffix, ", "}};
  Unescaper unescape(property);
  for (std::size_t i = 0; i < std::min(parts.size(), std::size(kParts)); ++i) {
    const auto& [field, glue] = kParts[i];
    contact_[field] =
        glue.empty() ? unescape(parts[i]) : JoinListValues(property, unescape, parts[i], glue);
    nameGiven_ = nameGiven_ || !IsBlank(contact_[field]);
  }
  for (std::size_t i = std::size(kParts); i < parts.size(); ++i) {
    if (IsBlank(parts[i])) continue;
    notices_.Add(property, "a name has five parts, what follows was left out");
    break;
  }
  std::string sortAs;
  for (const auto& [name, text] : property.parameters) {
    if (name != "SORT-AS" || text.empty()) continue;
    sortAs += sortAs.empty() ? text : ", " + text;
  }
  if (!sortAs.empty()) weakTexts_.push_back({&property, Field::kFileAs, sortAs});
}

void ContactBuilder::TakeOrganization(const Property& property) {
  const std::vector<std::string> parts = ComponentsOf(property);
  std::string department;
  for (std::size_t i = 1; i < parts.size(); ++i) {
    if (parts[i].empty()) continue;
    if (!department.empty()) department += "; ";
    department += parts[i];
  }
  std::string& company = contact_[Field::kCompanyName];
  std::string& kept = contact_[Field::kDepartment];
  if (company.empty() && kept.empty()) {
    company = parts.front();
    kept = std::move(department);
  } else if (company != parts.front() || (!department.empty() && department != kept)) {
    notices_.Add(property,
                 "a contact has one organization, left out: " + text::Excerpt(parts.front()));
  }
}

void ContactBuilder::TakeNote(const Property& property) {
  const std::string text = TextOf(property);
  if (text.empty() || !notes_.insert(text).second) return;
  noteLine_ = property.line;
  std::string& body = contact_[Field::kBody];
  if (!body.empty()) body += '\n';
  body += text;
}

void ContactBuilder::TakeCategories(const Property& property) {
  for (std::string& category : CategoriesOf(property, notices_)) {
    if (categories_.insert(category).second) contact_.categories.push_back(std::move(category));
  }
}

void ContactBuilder::TakeUid(const Property& property) {
  const std::string text = TextOf(property);
  if (contact_.uid.empty()) {
    contact_.uid = text;
  } else if (text != contact_.uid) {
    notices_.Add(property, "a contact has one identity, left out: " + text::Excerpt(text));
  }
}

void ContactBuilder::TakeChild(const std::string& name) {
  if (name.empty() || !children_.insert(name).second) return;
  std::string& children = contact_[Field::kChildren];
  if (!children.empty()) children += ", ";
  children += name;
}

void ContactBuilder::TakeRelated(const Property& property) {
  const std::string* value = property.Parameter("VALUE");
  const bool isText = property.name != "RELATED" || property.dialect != VCardDialect::k40 ||
                      (value != nullptr && text::EqualsNoCase(*value, "text"));
  const std::string text = TextOf(property);
  if (!isText && text.find(':') != std::string::npos) {
    notices_.Add(property, "a contact holds no links to other cards");
  } else if (property.HasType("SPOUSE")) {
    SetText(property, Field::kSpouse, text);
  } else if (property.HasType("CHILD")) {
    TakeChild(text);
  } else if (property.HasType("ASSISTANT")) {
    SetText(property, Field::kAssistantName, text);
  } else {
    notices_.Add(property, "of related people a contact names spouse, children and assistant");
  }
}

void ContactBuilder::TakeLabelledDate(const Property& property) {
  if (property.HasType("ANNIVERSARY")) {
    SetDate(property, contact_.anniversary, TextOf(property));
  } else {
    notices_.Add(property, "of dates a contact keeps the birthday and an anniversary");
  }
}

void ContactBuilder::TakeKind(const Property& property) {
  const std::string kind = TextOf(property);
  if (text::EqualsNoCase(kind, "org")) {
    isOrganization_ = true;
  } else if (!text::EqualsNoCase(kind, "individual")) {
    notices_.Add(property, "kept as if it were a person: " + text::Excerpt(kind));
  }
}

// Japanese telephones give the reading of a name as what it sounds like.
void ContactBuilder::TakeSound(const Property& property) {
  if (!property.HasType("X-IRMC-N")) return notices_.Add(property, "a contact holds no sounds");
  const std::vector<std::string> parts = ComponentsOf(property);
  SetText(property, Field::kYomiLastName, parts[0]);
  if (parts.size() > 1) SetText(property, Field::kYomiFirstName, parts[1]);
}

// "vnd.android.cursor.item/relation;Jenny;14;...": the item's kind, its value and its type.
void ContactBuilder::TakeAndroidItem(const Property& property) {
  std::vector<std::string> parts = ComponentsOf(property);
  parts.resize(std::max<std::size_t>(parts.size(), 3));
  const std::string kind = parts[0].substr(parts[0].find('/') + 1);
  const std::string& type = parts[2];
  if (kind == "contact_event" && type == "1") {
    SetDate(property, contact_.anniversary, parts[1]);
  } else if (kind == "contact_event" && type == "3") {
    SetDate(property, contact_.birthday, parts[1]);
  } else if (kind == "relation" && type == "1") {
    SetText(property, Field::kAssistantName, parts[1]);
  } else if (kind == "relation" && type == "3") {
    TakeChild(parts[1]);
  } else if (kind == "relation" && type == "14") {
    SetText(property, Field::kSpouse, parts[1]);
  } else if (kind == "nickname" && hasBlock()) {
    Property nickname;
    nickname.name = "NICKNAME";
    block_.Add(nickname, ContentValue().Add(parts[1]).text());
  } else {
    notices_.Add(property, "a contact has no field for it (" + text::Excerpt(kind) + ")");
  }
}

// What a card calls its contact is a name only when nothing else in it is called the same.
void ContactBuilder::UseFormattedName() {
  const std::string name(text::TrimBlanks(formattedName_));
  if (name.empty()) return;
  if (nameGiven_) return CompareFormattedName(name);
  std::string& company = contact_[Field::kCompanyName];
  if (isOrganization_ && IsBlank(company)) company = name;
  if (isOrganization_) return;
  const bool sameElsewhere = std::any_of(
      contact_.fields.begin(), contact_.fields.end(),
      [&](const std::string& field) { return text::EqualsNoCase(text::TrimBlanks(field), name); });
  if (sameElsewhere) return;
  const PersonalName parts = SplitFullName(name);
  contact_[Field::kTitle] = parts.title;
  contact_[Field::kFirstName] = parts.first;
  contact_[Field::kMiddleName] = parts.middle;
  contact_[Field::kLastName] = parts.last;
  contact_[Field::kSuffix] = parts.suffix;
}

// Beside a name it says the same in another way, or what a contact has no place for.
void ContactBuilder::CompareFormattedName(const std::string& name) {
  const PersonalName parts = {contact_[Field::kTitle], contact_[Field::kFirstName],
                              contact_[Field::kMiddleName], contact_[Field::kLastName],
                              contact_[Field::kSuffix]};
  if (name == JoinFullName(parts)) return;
  const std::string_view texts[] = {parts.title,
                                    parts.first,
                                    parts.middle,
                                    parts.last,
                                    parts.suffix,
                                    contact_[Field::kFileAs],
                                    contact_[Field::kCompanyName],
                                    contact_[Field::kDepartment],
                                    contact_[Field::kJobTitle]};
  if (IsMadeOfWords(name, texts)) return;
  notices_.Add(*formatted_,
               "a contact is called what its N says, left out: " + text::Excerpt(name));
}

void ContactBuilder::Finish() {
  OverflowBlock known;
  if (hasBlock()) known = OverflowBlock::TakeFrom(contact_[Field::kBody], noteLine_);
  for (const Property& line : known.lines()) Take(line);
  PlacePhones(phones_, overflow_, contact_, notices_);
  PlaceEmails(emails_, overflow_, contact_, notices_);
  PlaceAddresses(addresses_, addressLabels_, contact_, notices_);
  PlaceWebPages(webPages_, contact_, notices_);
  for (const WeakText& weak : weakTexts_) SetText(*weak.property, weak.field, weak.text);
  UseFormattedName();
  if (!hasBlock()) return;
  CollectOverflow({phones_, emails_, addresses_, webPages_}, overflow_, contact_, block_);
  KeepDescriptions(known, contact_, block_);
  block_.AppendTo(contact_[Field::kBody]);
}

}  // namespace

Contact BuildContact(std::vector<Property>& properties, Overflow overflow, NoticeList& notices) {
  return ContactBuilder(overflow, notices).Build(properties);
}

}  // namespace formats
