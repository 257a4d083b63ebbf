// Early return of a record's readers. A record fails with every code but S_OK, the positive ones
// included: a date that was sent and does not exist must not get lost behind a success.
#pragma once

#include "platform/types.h"

#define RETURN_UNLESS_OK(expression)                                                   \
  do {                                                                                 \
    if (const ce::HRESULT status_ = (expression); status_ != ce::S_OK) return status_; \
  } while (false)
