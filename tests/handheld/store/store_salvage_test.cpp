#include "handheld/store/store_salvage.h"

#include <sqlite3.h>

#include <cstdlib>

#include "handheld/store/store_error.h"
#include "tests/handheld/outlook/calendar_support.h"
#include "tests/support/sanitizers.h"
#include "tests/support/store_sql.h"

namespace ce::host::testing {
namespace {

namespace fs = std::filesystem;
using corvane::testing::kSanitizer;
using corvane::testing::TemporaryDirectory;

// The database's allocations: which of the next ones is refused, 0 for none.
int g_refused = 0;
sqlite3_mem_methods g_real;
bool IsRefused() {
  return g_refused > 0 && --g_refused == 0;
}
void* Allocate(int size) {
  return IsRefused() ? nullptr : g_real.xMalloc(size);
}
void* Reallocate(void* block, int size) {
  return IsRefused() ? nullptr : g_real.xRealloc(block, size);
}

class SalvageWithoutMemory : public HandheldTest {
 protected:
  void SetUp() override {
    AddContacts(LoggedOn(), 3);
    // So long that a text has pages of its own.
    ASSERT_TRUE(RunSql(*handheld_, "UPDATE contacts SET body = body || hex(zeroblob(5000))"));
    ASSERT_TRUE(RunSql(*handheld_, "VACUUM INTO '" + std::string(directory_ / "damaged.db") + "'"));
    UseAllocator(Allocate, Reallocate);
  }
  void TearDown() override {
    UseAllocator(g_real.xMalloc, g_real.xRealloc);
    HandheldTest::TearDown();
  }
  static void UseAllocator(void* (*allocate)(int), void* (*reallocate)(void*, int)) {
    ASSERT_EQ(sqlite3_shutdown(), SQLITE_OK);
    if (g_real.xMalloc == nullptr) {
      ASSERT_EQ(sqlite3_config(SQLITE_CONFIG_GETMALLOC, &g_real), SQLITE_OK);
    }
    sqlite3_mem_methods methods = g_real;
    methods.xMalloc = allocate;
    methods.xRealloc = reallocate;
    ASSERT_EQ(sqlite3_config(SQLITE_CONFIG_MALLOC, &methods), SQLITE_OK);
    ASSERT_EQ(sqlite3_initialize(), SQLITE_OK);
  }

  HRESULT SalvageAnew(Salvage& salvage) const {
    fs::remove(directory_ / "fresh.db");
    fs::copy_file(directory_ / "damaged.db", directory_ / "copy.db",
                  fs::copy_options::overwrite_existing);
    std::string problem;
    return SalvageStore(directory_ / "copy.db", directory_ / "fresh.db", salvage, problem);
  }

  const TemporaryDirectory directory_;
};

TEST_F(SalvageWithoutMemory, FailsOrSavesAll) {
  Salvage whole;
  ASSERT_EQ(SalvageAnew(whole), S_OK);
  ASSERT_EQ(whole.saved.front(), std::pair(std::string("contacts"), std::uint64_t{3}));
  const std::string fresh = directory_.Read("fresh.db");
  int failed = 0;
  for (int refused = 1;; refused += kSanitizer ? 16 : 2) {
    SCOPED_TRACE(refused);
    g_refused = refused;
    Salvage salvage;
    const HRESULT status = SalvageAnew(salvage);
    const bool wasRefused = g_refused == 0;
    g_refused = 0;
    if (Failed(status)) {
      ++failed;
    } else {
      ASSERT_EQ(salvage.saved, whole.saved);
      ASSERT_EQ(salvage.lost, whole.lost);
      ASSERT_TRUE(directory_.Read("fresh.db") == fresh);
    }
    if (!wasRefused) break;
  }
  EXPECT_GT(failed, 20);
}

}  // namespace
}  // namespace ce::host::testing
