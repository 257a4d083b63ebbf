#include "maintenance/session.h"

#include "maintenance/status_error.h"
#include "platform/host/outlook/store_check.h"

namespace maintenance {

Session::Session(const std::filesystem::path& directory)
    : handheld_(ce::host::Handheld::Open(directory, "corvane-device")) {
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

ce::ComPtr<ce::IPOutlookItemCollection> Session::Contacts() {
  ce::ComPtr<ce::IFolder> folder;
  ce::ComPtr<ce::IPOutlookItemCollection> items;
  Check(Outlook()->GetDefaultFolder(ce::olFolderContacts, folder.put()), "the contacts folder");
  Check(folder->get_Items(items.put()), "the contacts");
  return items;
}

}  // namespace maintenance
