#include "desktop/sync/item_fields.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <string>
#include <vector>

#include "tests/desktop/merge/merge_cases.h"

namespace desktop::testing {
namespace {

template <typename T>
void RequireNoneWhereTheContentIsTheSame() {
  const Case each = AnyCase<T>(OneIn(2));
  Log(each);
  for (const Item* const other : {&each.base, &each.handheld, &each.handheldBase}) {
    RC_ASSERT(DifferentFields(each.desk, *other).empty() == SameContent(each.desk, *other));
  }
}

RC_GTEST_PROP(DifferentFields, OfContactsAreNoneWhereTheContentIsTheSame, ()) {
  RequireNoneWhereTheContentIsTheSame<Contact>();
}

RC_GTEST_PROP(DifferentFields, OfAppointmentsAreNoneWhereTheContentIsTheSame, ()) {
  RequireNoneWhereTheContentIsTheSame<Appointment>();
}

TEST(DifferentFields, CountADerivedFileAsAndTheOrderOfCategoriesForNothing) {
  Contact desk;
  desk[ContactField::kFirstName] = "Ada ";
  desk[ContactField::kLastName] = "Brook";
  desk.categories = {"b", "a"};
  Contact handheld = desk;
  handheld[ContactField::kFirstName] = "Ada";
  handheld[ContactField::kFileAs] = "Brook, Ada";
  handheld.categories = {"a", "b"};
  EXPECT_EQ(DifferentFields(desk, handheld), std::vector<std::string>());
  handheld[ContactField::kFileAs] = "Ada";
  handheld.categories = {"a"};
  EXPECT_EQ(DifferentFields(desk, handheld), (std::vector<std::string>{"File as", "Categories"}));
}

}  // namespace
}  // namespace desktop::testing
