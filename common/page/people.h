// People as a page shows them.
#pragma once

#include "common/formats/items/contact.h"
#include "common/page/json.h"

namespace page {

Json PersonOf(const formats::Contact& contact);

}  // namespace page
