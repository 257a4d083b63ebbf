// The items of one kind's folder.
#pragma once

#include "agent/pim_export/record_kinds.h"
#include "agent/vocabulary/outlook_session.h"
#include "platform/com_ptr.h"

namespace corvane {

// An item that lacks its kind's interface.
inline constexpr ce::HRESULT kWrongItemKind = static_cast<ce::HRESULT>(0x80040008);

// One snapshot of a folder, over a session of its own.
class FolderItems {
 public:
  // Once. `kind` null: E_INVALIDARG.
  [[nodiscard]] ce::HRESULT Open(const RecordKind* kind);
  ce::INT count() const { return count_; }
  // 1-based. `item` receives the kind's interface.
  [[nodiscard]] ce::HRESULT Item(ce::INT index, ce::ComPtr<ce::IUnknown>* item) const;

 private:
  [[nodiscard]] ce::HRESULT OpenFolder(const RecordKind* kind);

  const RecordKind* kind_ = nullptr;
  OutlookSession session_;
  ce::ComPtr<ce::IPOutlookItemCollection2> items_;
  ce::INT count_ = 0;
};

}  // namespace corvane
