// The makers behind CoCreateInstance. `*out` is null on failure.
#pragma once

#include "platform/com.h"

namespace ce::host {

HRESULT CreateDomDocument(const GUID& iid, void** out);
HRESULT CreateOutlookApp(const GUID& iid, void** out);

}  // namespace ce::host
