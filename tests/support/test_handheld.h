// A handheld for one test: a real one, whose directory lies in memory, with a clock that stands
// still once it is set.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

#include "handheld/directory/handheld.h"
#include "tests/support/temporary_directory.h"

namespace corvane::testing {

class TestHandheld {
 public:
  explicit TestHandheld(const ce::host::HandheldSettings& settings = {});
  ~TestHandheld();  // closes it and removes the directory

  ce::host::Handheld& operator*() { return *handheld_; }
  ce::host::Handheld* operator->() { return handheld_.get(); }
  const std::filesystem::path& directory() const { return directory_.path(); }

  // Closes it and opens it again, as a restart of the agent does. The clock runs afterwards.
  void Reopen();

  // Stops the clock at this UTC time; when the agent sets it, it stands still at the new one.
  void FreezeClock(const ce::SYSTEMTIME& utc);
  void SetZone(std::string_view zone);
  void SetLanguage(ce::LANGID language);
  void SetOsVersion(ce::DWORD major, ce::DWORD minor);
  // A DWORD value of the agent's own registry key (SOFTWARE\Tenbrook\Corvane).
  void SetAgentValue(const char16_t* name, ce::DWORD value);
  // The content of a file under files/, empty when it does not exist.
  std::string FileContent(const std::string& name) const;

 private:
  TemporaryDirectory directory_;
  std::unique_ptr<ce::host::Handheld> handheld_;
};

// Gives each test a handheld, and fails it when a COM object outlives it.
class HandheldTest : public ::testing::Test {
 protected:
  void TearDown() override;
  TestHandheld handheld_;
};

}  // namespace corvane::testing
