// Contacts that several tests use.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <string_view>
#include <utility>

#include "platform/pocket_outlook.h"
#include "tests/support/item_store.h"

namespace corvane::testing {

using TextGetter = ce::HRESULT (ce::IContact::*)(ce::BSTR*);
using TextSetter = ce::HRESULT (ce::IContact::*)(ce::BSTR);

struct SampleText {
  TextSetter put;
  TextGetter get;
  std::u16string_view value;
};

#define CORVANE_SAMPLE(Property, Value)                                 \
  SampleText {                                                          \
    &ce::IContact::put_##Property, &ce::IContact::get_##Property, Value \
  }

// Every text that the wire carries, each its own; the Yomi texts last.
inline constexpr std::array kFullTexts{
    CORVANE_SAMPLE(Email1Address, u"hanako@example.jp"),
    CORVANE_SAMPLE(Email2Address, u"h.yamada@work.example"),
    CORVANE_SAMPLE(Email3Address, u"\"H Y\" <hy@home.example>"),
    CORVANE_SAMPLE(FirstName, u"\u82B1\u5B50"),
    CORVANE_SAMPLE(LastName, u"\u5C71\u7530"),
    CORVANE_SAMPLE(CompanyName, u"Yamada & Co <KK>"),
    CORVANE_SAMPLE(FileAs, u"Yamada, Hanako"),
    CORVANE_SAMPLE(BusinessFaxNumber, u"+81 3 1000 0001"),
    CORVANE_SAMPLE(Department, u"R&D"),
    CORVANE_SAMPLE(MobileTelephoneNumber, u"+81 90 1000 0002"),
    CORVANE_SAMPLE(PagerNumber, u"+81 3 1000 0003"),
    CORVANE_SAMPLE(BusinessTelephoneNumber, u"+81 3 1000 0004"),
    CORVANE_SAMPLE(JobTitle, u"Chief \"Engineer\""),
    CORVANE_SAMPLE(HomeTelephoneNumber, u"+81 3 1000 0005"),
    CORVANE_SAMPLE(Spouse, u"Taro"),
    CORVANE_SAMPLE(Home2TelephoneNumber, u"+81 3 1000 0006"),
    CORVANE_SAMPLE(HomeFaxNumber, u"+81 3 1000 0007"),
    CORVANE_SAMPLE(AssistantName, u"\u00C5sa O'Neill"),
    CORVANE_SAMPLE(Children, u"Jiro, Saburo"),
    CORVANE_SAMPLE(Categories, u"Business, Personal"),
    CORVANE_SAMPLE(WebPage, u"http://example.jp/?a=1&b=2"),
    CORVANE_SAMPLE(Business2TelephoneNumber, u"+81 3 1000 0008"),
    CORVANE_SAMPLE(Title, u"Dr."),
    CORVANE_SAMPLE(MiddleName, u"M."),
    CORVANE_SAMPLE(Suffix, u"Jr."),
    CORVANE_SAMPLE(HomeAddressStreet, u"1-2-3 Home\r\nRoom 4"),
    CORVANE_SAMPLE(HomeAddressCity, u"Chiyoda"),
    CORVANE_SAMPLE(HomeAddressState, u"Tokyo"),
    CORVANE_SAMPLE(HomeAddressPostalCode, u"100-0001"),
    CORVANE_SAMPLE(HomeAddressCountry, u"\u65E5\u672C"),
    CORVANE_SAMPLE(OtherAddressStreet, u"5 Other"),
    CORVANE_SAMPLE(OtherAddressCity, u"Sapporo"),
    CORVANE_SAMPLE(OtherAddressState, u"Hokkaido"),
    CORVANE_SAMPLE(OtherAddressPostalCode, u"060-0001"),
    CORVANE_SAMPLE(OtherAddressCountry, u"Japan"),
    CORVANE_SAMPLE(BusinessAddressStreet, u"6 Business"),
    CORVANE_SAMPLE(BusinessAddressCity, u"Osaka"),
    CORVANE_SAMPLE(BusinessAddressState, u"Kansai"),
    CORVANE_SAMPLE(BusinessAddressPostalCode, u"530-0001"),
    CORVANE_SAMPLE(BusinessAddressCountry, u"JP"),
    CORVANE_SAMPLE(RadioTelephoneNumber, u"JA1XYZ"),
    CORVANE_SAMPLE(Body, u"First line\r\nSecond \U0001F600 line"),
    CORVANE_SAMPLE(YomiCompanyName, u"\u3084\u307E\u3060"),
    CORVANE_SAMPLE(YomiFirstName, u"\u306F\u306A\u3053"),
    CORVANE_SAMPLE(YomiLastName, u"\u3084\u307E\u3060\u3055\u3093"),
};

// What a contact has beside them and the wire never carries.
inline constexpr std::array kPrivateTexts{
    CORVANE_SAMPLE(OfficeLocation, u"Tower 7"),
    CORVANE_SAMPLE(CarTelephoneNumber, u"+81 80 1000 0009"),
    CORVANE_SAMPLE(AssistantTelephoneNumber, u"+81 80 1000 0010"),
};

#undef CORVANE_SAMPLE

inline constexpr ce::DATE kSampleBirthday = 28903.0;     // 1979-02-17
inline constexpr ce::DATE kSampleAnniversary = 39493.0;  // 2008-02-15
inline constexpr std::string_view kSampleInk{"{\\pwi\x01\x02\x03", 8};

// Every property there is.
inline void FillContact(ce::IContact& contact) {
  for (const SampleText& text : kFullTexts) SetText(contact, text.put, text.value);
  for (const SampleText& text : kPrivateTexts) SetText(contact, text.put, text.value);
  EXPECT_EQ(contact.put_Birthday(kSampleBirthday), ce::S_OK);
  EXPECT_EQ(contact.put_Anniversary(kSampleAnniversary), ce::S_OK);
  SetInk(contact, kSampleInk);
}

}  // namespace corvane::testing
