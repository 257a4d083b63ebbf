#include "handheld/store/row_scan.h"

#include "handheld/base/fault.h"
#include "handheld/store/item_row.h"
#include "tests/handheld/outlook/outlook_support.h"

namespace ce::host::testing {
namespace {

constexpr char kRows[] = "SELECT oid FROM contacts WHERE oid >= ?1 ORDER BY oid";

class RowScanTest : public HandheldTest {
 protected:
  RowScanTest() {
    AddContacts(LoggedOn(), 5);
    store_ = NewStore();
  }
  std::unique_ptr<Store> NewStore() {
    std::unique_ptr<Store> store;
    std::string problem;
    EXPECT_EQ(Store::Open(*handheld_, store, problem), S_OK) << problem;
    return store;
  }
  // The next row's number; 0 behind the last.
  std::int64_t Next() {
    bool row = false;
    EXPECT_EQ(scan_.Next("test", row), S_OK);
    return row ? scan_.row().Integer(0) : 0;
  }
  static HRESULT Delete(Store& store, int oid) {
    return store.Write(
        nullptr, [&] { return store.Run("DELETE FROM contacts WHERE oid = ?1", "test", oid); });
  }

  std::unique_ptr<Store> store_;
  RowScan scan_;
};

TEST_F(RowScanTest, GoesFromRowToRowOfASnapshot) {
  ASSERT_EQ(store_->BeginSnapshot(), S_OK);
  EXPECT_FALSE(scan_.GoesOn(*store_));
  ASSERT_EQ(scan_.Begin(*store_, kRows, 2), S_OK);
  EXPECT_EQ(Next(), 2);
  const auto other = NewStore();
  ASSERT_EQ(Delete(*other, 3), S_OK);
  EXPECT_TRUE(scan_.GoesOn(*store_));
  EXPECT_EQ(Next(), 3);
  EXPECT_EQ(Next(), 4);
  EXPECT_EQ(Next(), 5);
  EXPECT_EQ(Next(), 0);
  EXPECT_FALSE(scan_.GoesOn(*store_));
  store_->EndSnapshot();
}

TEST_F(RowScanTest, EndsWithTheSnapshot) {
  ASSERT_EQ(store_->BeginSnapshot(), S_OK);
  ASSERT_EQ(scan_.Begin(*store_, kRows, 1), S_OK);
  EXPECT_EQ(Next(), 1);
  store_->EndSnapshot();
  EXPECT_FALSE(scan_.GoesOn(*store_));
  ASSERT_EQ(store_->BeginSnapshot(), S_OK);
  EXPECT_FALSE(scan_.GoesOn(*store_)) << "another one";
  store_->EndSnapshot();
}

TEST_F(RowScanTest, DoesNotKeepItsStoreFromWriting) {
  ASSERT_EQ(store_->BeginSnapshot(), S_OK);
  ASSERT_EQ(scan_.Begin(*store_, kRows, 1), S_OK);
  EXPECT_EQ(Next(), 1);
  // Past the snapshot, which could not become a write any more.
  const auto other = NewStore();
  ASSERT_EQ(Delete(*other, 3), S_OK);
  EXPECT_EQ(Delete(*store_, 4), S_OK);
  EXPECT_FALSE(scan_.GoesOn(*store_));
  EXPECT_EQ(store_->snapshot(), 0u);
  ASSERT_EQ(scan_.Begin(*store_, kRows, 2), S_OK);
  EXPECT_EQ(Next(), 2);
  EXPECT_EQ(Next(), 5);
  store_->EndSnapshot();
}

TEST_F(RowScanTest, IsOverAfterAFailure) {
  ASSERT_EQ(store_->BeginSnapshot(), S_OK);
  ASSERT_EQ(scan_.Begin(*store_, kRows, 1), S_OK);
  {
    const auto plan = FaultPlan::FailCalls("test", ERROR_READ_FAULT);
    bool row = true;
    EXPECT_TRUE(Failed(scan_.Next("test", row)));
    EXPECT_FALSE(row);
  }
  EXPECT_FALSE(scan_.GoesOn(*store_));
  store_->EndSnapshot();
}

TEST_F(RowScanTest, MayOutliveItsStore) {
  ASSERT_EQ(store_->BeginSnapshot(), S_OK);
  ASSERT_EQ(scan_.Begin(*store_, kRows, 1), S_OK);
  EXPECT_EQ(Next(), 1);
  store_.reset();
  scan_.End();
}

TEST_F(RowScanTest, SeveralGoOnWithTheSameStatement) {
  ASSERT_EQ(store_->BeginSnapshot(), S_OK);
  RowScan second;
  ASSERT_EQ(scan_.Begin(*store_, kRows, 1), S_OK);
  ASSERT_EQ(second.Begin(*store_, kRows, 4), S_OK);
  EXPECT_EQ(Next(), 1);
  bool row = false;
  EXPECT_EQ(second.Next("test", row), S_OK);
  EXPECT_EQ(second.row().Integer(0), 4);
  EXPECT_EQ(Next(), 2);
  store_->EndSnapshot();
}

TEST_F(RowScanTest, ItemsAreFoundInWhateverOrder) {
  ASSERT_EQ(store_->BeginSnapshot(), S_OK);
  for (const std::uint32_t oid : {1, 2, 3, 5, 4, 4, 1, 2, 7, 3}) {
    ContactRow row;
    bool found = false;
    ASSERT_EQ(ScanItem(*store_, scan_, oid, row, found), S_OK);
    EXPECT_EQ(found, oid <= 5) << oid;
    ContactRow same;
    ASSERT_EQ(ReadItem(*store_, oid, same, found), S_OK);
    EXPECT_EQ(row.fields.texts[ContactText::kLastName], same.fields.texts[ContactText::kLastName]);
  }
  store_->EndSnapshot();
}

}  // namespace
}  // namespace ce::host::testing
