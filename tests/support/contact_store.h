// The contacts of the current handheld, for a test to fill and to look at.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/com_ptr.h"
#include "platform/pocket_outlook.h"

namespace corvane::testing {

using TextGetter = ce::HRESULT (ce::IContact::*)(ce::BSTR*);
using TextSetter = ce::HRESULT (ce::IContact::*)(ce::BSTR);

std::u16string GetText(ce::IContact& contact, TextGetter get);
void SetText(ce::IContact& contact, TextSetter put, std::u16string_view text);

// Logged on as long as it lives. Fails the test when the store does not answer.
class ContactStore {
 public:
  ContactStore();
  ~ContactStore();
  ContactStore(const ContactStore&) = delete;
  ContactStore& operator=(const ContactStore&) = delete;

  ce::IPOutlookApp* app() const { return app_.get(); }
  // A contact that is not stored.
  ce::ComPtr<ce::IContact> New();
  // Stores a contact once `fill` has set what it wants.
  ce::LONG Add(const std::function<void(ce::IContact&)>& fill = {});
  // A contact with this first name.
  ce::LONG AddNamed(std::u16string_view firstName);
  void Change(ce::LONG oid, const std::function<void(ce::IContact&)>& change);
  void Delete(ce::LONG oid);
  // Null when there is none.
  ce::ComPtr<ce::IContact> Get(ce::LONG oid);
  std::u16string Text(ce::LONG oid, TextGetter get);
  std::vector<ce::LONG> Oids();

 private:
  ce::ComPtr<ce::IPOutlookItemCollection> Items();

  ce::ComPtr<ce::IPOutlookApp> app_;
};

}  // namespace corvane::testing
