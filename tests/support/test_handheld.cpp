#include "tests/support/test_handheld.h"

#include <stdexcept>

#include "common/text/unicode.h"
#include "handheld/base/com_object.h"
#include "handheld/clock/handheld_clock.h"
#include "handheld/registry/registry_store.h"

namespace corvane::testing {
namespace {

constexpr char16_t kAgentKey[] = u"SOFTWARE\\Tenbrook\\Corvane";

}  // namespace

TestHandheld::TestHandheld(const ce::host::HandheldSettings& settings) {
  ce::host::Handheld::Create(directory_.path(), settings);
  Reopen();
}

TestHandheld::~TestHandheld() = default;

void TestHandheld::Reopen() {
  handheld_.reset();
  handheld_ = ce::host::Handheld::Open(directory_.path(), "test");
  ce::host::Handheld::MakeCurrent(handheld_.get());
}

void TestHandheld::FreezeClock(const ce::SYSTEMTIME& utc) {
  ce::LONGLONG ticks = 0;
  if (!ce::host::TicksFromSystemTime(utc, ticks)) throw std::invalid_argument("no such time");
  handheld_->clock().Freeze(ticks);
}

void TestHandheld::SetZone(std::string_view zone) {
  handheld_->Set(ce::host::setting::kZone, text::FromUtf8Lossy(zone));
}

void TestHandheld::SetLanguage(ce::LANGID language) {
  handheld_->Set(ce::host::setting::kLanguage, ce::DWORD{language});
}

void TestHandheld::SetOsVersion(ce::DWORD major, ce::DWORD minor) {
  handheld_->Set(ce::host::setting::kOsMajor, major);
  handheld_->Set(ce::host::setting::kOsMinor, minor);
}

void TestHandheld::SetAgentValue(const char16_t* name, ce::DWORD value) {
  if (handheld_->registry().SetValue(kAgentKey, name, ce::host::RegistryValue::Number(value))) {
    throw std::runtime_error("the registry cannot be written");
  }
}

std::string TestHandheld::FileContent(const std::string& name) const {
  return directory_.Read(std::filesystem::path("files") / name);
}

void HandheldTest::TearDown() {
  EXPECT_EQ(ce::host::LiveComObjects(), 0) << "COM objects outlive the test";
}

}  // namespace corvane::testing
