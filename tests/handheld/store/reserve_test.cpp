#include "handheld/store/reserve.h"

#include "handheld/base/fault.h"
#include "handheld/store/store_check.h"
#include "tests/handheld/outlook/outlook_support.h"

namespace ce::host::testing {
namespace {

namespace fs = std::filesystem;

class Reserve : public HandheldTest {
 protected:
  // Logged on to a handheld that has the room.
  static ComPtr<IPOutlookApp> WithReserve() {
    LoggedOn();
    return LoggedOn();
  }
  fs::path path() const { return handheld_.directory() / "store.reserve"; }
  // What the volume has left, as far as the store can tell, while the plan is in force.
  static FaultPlan Room(DWORD bytes) { return FaultPlan::GiveFewer("statvfs:reserve", bytes); }
};

TEST_F(Reserve, IsKeptFromTheFirstLogonOn) {
  EXPECT_FALSE(fs::exists(path()));
  LoggedOn();
  EXPECT_EQ(fs::file_size(path()), kReserveBytes);
  EXPECT_EQ(fs::status(path()).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(Reserve, IsGivenToADeletionOnAFullVolume) {
  const auto app = WithReserve();
  const LONG oid = AddContact(app, u"Ada");
  const auto item = ContactByOid(app, oid);
  const auto plan = Room(kReserveBytes - 1);
  EXPECT_EQ(item->Delete(), S_OK);
  EXPECT_FALSE(fs::exists(path()));
}

TEST_F(Reserve, StaysWhereThereIsRoom) {
  const auto app = WithReserve();
  const auto item = ContactByOid(app, AddContact(app, u"Ada"));
  const auto plan = Room(kReserveBytes);
  EXPECT_EQ(item->Delete(), S_OK);
  EXPECT_TRUE(fs::exists(path()));
}

TEST_F(Reserve, IsNotGivenToAnAddition) {
  const auto app = WithReserve();
  const auto plan = Room(0);
  AddContact(app, u"Ada");
  EXPECT_TRUE(fs::exists(path()));
}

TEST_F(Reserve, ComesBackWithTheRoom) {
  LoggedOn();
  fs::remove(path());
  {
    const auto plan = Room(100 * 1024);
    EXPECT_EQ(DescribeStoreProblem(*handheld_), "");
    EXPECT_FALSE(fs::exists(path()));
  }
  {
    const auto plan = Room(1 << 20);
    EXPECT_EQ(DescribeStoreProblem(*handheld_), "");
    EXPECT_EQ(fs::file_size(path()), 512u * 1024) << "half of what is free";
  }
  EXPECT_EQ(DescribeStoreProblem(*handheld_), "");
  EXPECT_EQ(fs::file_size(path()), kReserveBytes);
}

TEST_F(Reserve, ThatCannotBeMadeIsNoFailure) {
  fs::create_directory(path());
  LoggedOn();
  EXPECT_EQ(DescribeStoreProblem(*handheld_), "");
}

}  // namespace
}  // namespace ce::host::testing
