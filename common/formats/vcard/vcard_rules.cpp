#include "common/formats/vcard/vcard_rules.h"

#include <string>
#include <unordered_map>

#include "common/text/text.h"

namespace formats {
namespace {

using Kind = PropertyKind;
using Field = ContactField;

constexpr std::string_view kPicture = "a contact holds no pictures";
constexpr std::string_view kKeys = "a contact holds no keys";
constexpr std::string_view kPlace = "a contact holds no position or time zone";
constexpr std::string_view kChat = "a contact holds no chat or call addresses";
constexpr std::string_view kCalendar = "a contact holds no calendar addresses";
constexpr std::string_view kManager = "a contact has no field for a manager";
constexpr std::string_view kSecondPage = "a contact has one web page";
constexpr std::string_view kNick = "a contact has no field for a nickname";

constexpr PropertyRule kRules[] = {
    {"VERSION", Kind::kIgnored},
    {"REV", Kind::kIgnored},
    {"PRODID", Kind::kIgnored},
    {"SOURCE", Kind::kIgnored},
    {"NAME", Kind::kIgnored},
    {"PROFILE", Kind::kIgnored},
    {"CLIENTPIDMAP", Kind::kIgnored},
    {"X-ABADR", Kind::kIgnored},
    {"X-ABUID", Kind::kIgnored},
    {"X-IRMC-LUID", Kind::kIgnored},
    {"X-ABLABEL", Kind::kIgnored},  // looked at before

    {"N", Kind::kName},
    {"FN", Kind::kFormattedName},
    {"ORG", Kind::kOrganization},
    {"TITLE", Kind::kText, Field::kJobTitle},
    {"ROLE", Kind::kWeakText, Field::kJobTitle},
    {"TEL", Kind::kPhone},
    {"X-TEL", Kind::kPhone},
    {"X-MS-TEL", Kind::kPhone},
    {"X-ASSISTANT-PHONE", Kind::kPhone, Field::kBody, "ASSISTANT"},
    {"X-MS-ASSISTANT-PHONE", Kind::kPhone, Field::kBody, "ASSISTANT"},
    {"X-EVOLUTION-ASSISTANT-PHONE", Kind::kPhone, Field::kBody, "ASSISTANT"},
    {"EMAIL", Kind::kEmail},
    {"ADR", Kind::kAddress},
    {"LABEL", Kind::kAddressLabel},
    {"URL", Kind::kWebPage},
    {"BDAY", Kind::kBirthday},
    {"ANNIVERSARY", Kind::kAnniversary},
    {"X-ANNIVERSARY", Kind::kAnniversary},
    {"X-MS-ANNIVERSARY", Kind::kAnniversary},
    {"X-EVOLUTION-ANNIVERSARY", Kind::kAnniversary},
    {"X-KADDRESSBOOK-X-ANNIVERSARY", Kind::kAnniversary},
    {"X-ABDATE", Kind::kLabelledDate},
    {"NOTE", Kind::kNote},
    {"CATEGORIES", Kind::kCategories},
    {"UID", Kind::kUid},
    {"X-SPOUSE", Kind::kText, Field::kSpouse},
    {"X-MS-SPOUSE", Kind::kText, Field::kSpouse},
    {"X-EVOLUTION-SPOUSE", Kind::kText, Field::kSpouse},
    {"X-KADDRESSBOOK-X-SPOUSESNAME", Kind::kText, Field::kSpouse},
    {"X-ASSISTANT", Kind::kText, Field::kAssistantName},
    {"X-MS-ASSISTANT", Kind::kText, Field::kAssistantName},
    {"X-EVOLUTION-ASSISTANT", Kind::kText, Field::kAssistantName},
    {"X-KADDRESSBOOK-X-ASSISTANTSNAME", Kind::kText, Field::kAssistantName},
    {"X-CHILDREN", Kind::kChild},
    {"X-MS-CHILD", Kind::kChild},
    {"RELATED", Kind::kRelated},
    {"X-ABRELATEDNAMES", Kind::kRelated},
    {"X-PHONETIC-FIRST-NAME", Kind::kText, Field::kYomiFirstName},
    {"X-PHONETIC-LAST-NAME", Kind::kText, Field::kYomiLastName},
    {"X-PHONETIC-ORG", Kind::kText, Field::kYomiCompanyName},
    {"X-MS-YOMI-FIRST-NAME", Kind::kText, Field::kYomiFirstName},
    {"X-MS-YOMI-LAST-NAME", Kind::kText, Field::kYomiLastName},
    {"X-FILE-AS", Kind::kText, Field::kFileAs},
    {"X-MS-FILE-AS", Kind::kText, Field::kFileAs},
    {"X-EVOLUTION-FILE-AS", Kind::kText, Field::kFileAs},
    {"SORT-STRING", Kind::kWeakText, Field::kFileAs},
    {"X-OFFICE", Kind::kText, Field::kOfficeLocation},
    {"X-MS-OFFICE", Kind::kText, Field::kOfficeLocation},
    {"X-EVOLUTION-OFFICE", Kind::kText, Field::kOfficeLocation},
    {"X-KADDRESSBOOK-X-OFFICE", Kind::kText, Field::kOfficeLocation},
    {"KIND", Kind::kKind},
    {"X-ADDRESSBOOKSERVER-KIND", Kind::kKind},
    {"X-ABSHOWAS", Kind::kShowAs},
    {"CLASS", Kind::kClass},
    {"SOUND", Kind::kSound},
    {"X-ANDROID-CUSTOM", Kind::kAndroidItem},

    {"NICKNAME", Kind::kForNote, Field::kBody, kNick},
    {"X-EPOCSECONDNAME", Kind::kForNote, Field::kBody, kNick},
    {"PHOTO", Kind::kNotKept, Field::kBody, kPicture},
    {"LOGO", Kind::kNotKept, Field::kBody, kPicture},
    {"X-MS-CARDPICTURE", Kind::kNotKept, Field::kBody, kPicture},
    {"KEY", Kind::kNotKept, Field::kBody, kKeys},
    {"GEO", Kind::kNotKept, Field::kBody, kPlace},
    {"TZ", Kind::kNotKept, Field::kBody, kPlace},
    {"IMPP", Kind::kForNote, Field::kBody, kChat},
    {"X-AIM", Kind::kForNote, Field::kBody, kChat},
    {"X-ICQ", Kind::kForNote, Field::kBody, kChat},
    {"X-MSN", Kind::kForNote, Field::kBody, kChat},
    {"X-YAHOO", Kind::kForNote, Field::kBody, kChat},
    {"X-JABBER", Kind::kForNote, Field::kBody, kChat},
    {"X-SKYPE", Kind::kForNote, Field::kBody, kChat},
    {"X-SKYPE-USERNAME", Kind::kForNote, Field::kBody, kChat},
    {"X-GOOGLE-TALK", Kind::kForNote, Field::kBody, kChat},
    {"X-GADUGADU", Kind::kForNote, Field::kBody, kChat},
    {"X-GROUPWISE", Kind::kForNote, Field::kBody, kChat},
    {"X-QQ", Kind::kForNote, Field::kBody, kChat},
    {"X-SIP", Kind::kForNote, Field::kBody, kChat},
    {"X-MS-IMADDRESS", Kind::kForNote, Field::kBody, kChat},
    {"X-SOCIALPROFILE", Kind::kForNote, Field::kBody, kChat},
    {"FBURL", Kind::kNotKept, Field::kBody, kCalendar},
    {"CALURI", Kind::kNotKept, Field::kBody, kCalendar},
    {"CALADRURI", Kind::kNotKept, Field::kBody, kCalendar},
    {"X-EVOLUTION-BLOG-URL", Kind::kNotKept, Field::kBody, kSecondPage},
    {"X-EVOLUTION-VIDEO-URL", Kind::kNotKept, Field::kBody, kSecondPage},
    {"X-MANAGER", Kind::kNotKept, Field::kBody, kManager},
    {"X-MS-MANAGER", Kind::kNotKept, Field::kBody, kManager},
    {"X-EVOLUTION-MANAGER", Kind::kNotKept, Field::kBody, kManager},
    {"GENDER", Kind::kNotKept, Field::kBody, "a contact has no field for a gender"},
    {"X-GENDER", Kind::kNotKept, Field::kBody, "a contact has no field for a gender"},
    {"LANG", Kind::kNotKept, Field::kBody, "a contact has no field for languages"},
    {"MEMBER", Kind::kNotKept, Field::kBody, "a contact has no members"},
    {"AGENT", Kind::kNotKept, Field::kBody, "a contact holds no other card"},
    {"XML", Kind::kNotKept, Field::kBody, "a contact holds no documents"},
    {"MAILER", Kind::kNotKept, Field::kBody, "a contact has no field for a mail program"},
    {"X-MS-OL-DESIGN", Kind::kNotKept, Field::kBody, "a contact has no card design"},
    {"X-MS-OL-DEFAULT-POSTAL-ADDRESS", Kind::kNotKept, Field::kBody,
     "a contact does not say which address is for mail"},
};

constexpr PropertyRule kUnknown = {"", Kind::kNotKept, Field::kBody,
                                   "a contact has no field for it"};

struct LabelTypes {
  std::string_view label;  // upper case, without blanks
  std::string_view types;
};
constexpr LabelTypes kLabels[] = {
    {"HOME", "HOME"},
    {"WORK", "WORK"},
    {"OTHER", "OTHER"},
    {"MAIN", "MAIN"},
    {"MOBILE", "CELL"},
    {"CELL", "CELL"},
    {"IPHONE", "CELL"},
    {"PAGER", "PAGER"},
    {"CAR", "CAR"},
    {"RADIO", "RADIO"},
    {"HOMEFAX", "HOME,FAX"},
    {"WORKFAX", "WORK,FAX"},
    {"OTHERFAX", "FAX"},
    {"FAX", "FAX"},
    {"ASSISTANT", "ASSISTANT"},
    {"SPOUSE", "SPOUSE"},
    {"HUSBAND", "SPOUSE"},
    {"WIFE", "SPOUSE"},
    {"CHILD", "CHILD"},
    {"SON", "CHILD"},
    {"DAUGHTER", "CHILD"},
    {"ANNIVERSARY", "ANNIVERSARY"},
    {"HOMEPAGE", ""},
    {"EMAIL", ""},
    {"PHONE", ""},
    {"ADDRESS", ""},
};

}  // namespace

const PropertyRule& FindPropertyRule(std::string_view name) {
  static const auto rules = [] {
    std::unordered_map<std::string_view, const PropertyRule*> byName;
    for (const PropertyRule& rule : kRules) byName.emplace(rule.name, &rule);
    return byName;
  }();
  const auto found = rules.find(name);
  return found == rules.end() ? kUnknown : *found->second;
}

const std::string_view* FindLabelTypes(std::string_view label) {
  label = text::TrimBlanks(label);
  if (label.starts_with("_$!<")) label.remove_prefix(4);
  if (label.ends_with(">!$_")) label.remove_suffix(4);
  std::string key;
  for (char c : text::ToUpperAscii(label.substr(0, 40))) {
    if (c != ' ' && c != '-') key += c;
  }
  for (const LabelTypes& known : kLabels) {
    if (known.label == key) return &known.types;
  }
  return nullptr;
}

}  // namespace formats
