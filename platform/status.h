// Early return on failure. Failure is the sign alone: positive Win32 codes pass.
#pragma once

#include "platform/types.h"

#define RETURN_IF_FAILED(expression)                                                   \
  do {                                                                                 \
    if (const ce::HRESULT status_ = (expression); ce::Failed(status_)) return status_; \
  } while (false)
