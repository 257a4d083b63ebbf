#include "agent/messages/named_rows.h"

namespace corvane {

using namespace ce;

HRESULT ReadNamedRow(IMAPITable* table, SingleRow* row, NamedRow* named, bool* more) {
  static constexpr DWORD kColumns[] = {PR_DISPLAY_NAME_W, PR_ENTRYID};
  static constexpr SPropTagArray kTags{2, kColumns};
  *more = false;
  // Before every row: a table need not remember its columns.
  RETURN_IF_FAILED(table->SetColumns(&kTags, 0));
  RETURN_IF_FAILED(table->QueryRows(1, 0, row->put()));
  const SRow* const found = row->get();
  if (!found || found->cValues < kTags.cValues) return S_OK;
  *named = {TextOf(found->lpProps[0]), BytesOf(found->lpProps[1])};
  *more = true;
  return S_OK;
}

}  // namespace corvane
