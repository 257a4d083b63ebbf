#include "desktop/wire/oid_set.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <set>

namespace desktop::testing {
namespace {

TEST(OidSet, KnowsTheFirstAndTheLastOfAll) {
  OidSet set;
  EXPECT_TRUE(set.Insert(0xFFFFFFFF));
  EXPECT_TRUE(set.Insert(0xFFFFFFFE));
  EXPECT_TRUE(set.Insert(1));
  EXPECT_FALSE(set.Insert(0xFFFFFFFF));
  EXPECT_FALSE(set.Contains(2));
  EXPECT_TRUE(set.Contains(0xFFFFFFFE));
}

RC_GTEST_PROP(OidSet, IsASet, ()) {
  const auto oids = *rc::gen::container<std::vector<Oid>>(rc::gen::inRange<Oid>(1, 40));
  OidSet set;
  std::set<Oid> plain;
  for (const Oid oid : oids) RC_ASSERT(set.Insert(oid) == plain.insert(oid).second);
  for (Oid oid = 0; oid < 41; ++oid) RC_ASSERT(set.Contains(oid) == plain.contains(oid));
}

}  // namespace
}  // namespace desktop::testing
