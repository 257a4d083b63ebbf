#include "handheld/tool/session.h"

#include "common/text/unicode.h"
#include "handheld/store/store_check.h"
#include "handheld/tool/status_error.h"

namespace tool {
namespace {

std::unique_ptr<ce::host::Handheld> OpenHandheld(const std::filesystem::path& directory,
                                                 Use use) try {
  constexpr char kProgram[] = "corvane-device";
  return use == Use::kLook ? ce::host::Handheld::OpenToLook(directory, kProgram)
                           : ce::host::Handheld::Open(directory, kProgram);
} catch (const ce::host::HandheldInUse& error) {
  throw ce::host::HandheldError(std::string(error.what()) +
                                ": change it with corvane-desktop, or end that program first");
}

template <typename Box>
Box& Opened(ce::host::Handheld& handheld, std::unique_ptr<Box>& box) {
  if (!box) {
    std::string problem;
    if (ce::Failed(Box::Open(handheld, box, problem)))
      throw ce::host::HandheldError(problem.empty() ? "the store cannot be opened" : problem);
  }
  return *box;
}

}  // namespace

Session::Session(const std::filesystem::path& directory, Use use)
    : handheld_(OpenHandheld(directory, use)) {
  ce::host::Handheld::MakeCurrent(handheld_.get());
}

Session::~Session() {
  if (outlook_) outlook_->Logoff();
  outlook_.reset();
  ce::host::Handheld::MakeCurrent(nullptr);
}

ce::ComPtr<ce::IPOutlookApp> Session::Outlook() {
  if (outlook_) return outlook_;
  ce::ComPtr<ce::IPOutlookApp> outlook;
  Check(ce::CoCreateInstance(ce::CLSID_Application, nullptr, ce::CLSCTX_INPROC_SERVER,
                             ce::IPOutlookApp::kIid, outlook.put_void()),
        "Pocket Outlook");
  if (ce::Failed(outlook->Logon(0))) {
    const std::string problem = ce::host::DescribeStoreProblem(*handheld_);
    throw ce::host::HandheldError(problem.empty() ? "the store cannot be opened" : problem);
  }
  outlook_ = outlook;
  return outlook_;
}

ce::ComPtr<ce::IPOutlookItemCollection> Session::Items(ce::INT folder) {
  ce::ComPtr<ce::IFolder> opened;
  ce::ComPtr<ce::IPOutlookItemCollection> items;
  Check(Outlook()->GetDefaultFolder(folder, opened.put()), "the folder");
  Check(opened->get_Items(items.put()), "the folder");
  return items;
}

ce::host::MessageStores& Session::Messages() {
  return Opened(*handheld_, messages_);
}

ce::host::CallLog& Session::Calls() {
  return Opened(*handheld_, calls_);
}

calendar::Zone Session::Zone() const {
  const std::string name = text::ToUtf8Lossy(handheld_->Text(ce::host::setting::kZone, u"UTC"));
  if (auto zone = calendar::Zone::Find(name)) return *std::move(zone);
  throw ce::host::HandheldError("the handheld's zone \"" + name + "\" is not in the zone database");
}

}  // namespace tool
