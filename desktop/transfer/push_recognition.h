// Looks for records among what the handheld has, though no mapping knows them.
#pragma once

#include <map>
#include <span>
#include <string>

#include "common/phone/phone_numbers.h"
#include "desktop/transfer/mapping.h"
#include "desktop/transfer/push_records.h"
#include "desktop/wire/connection.h"

namespace desktop {

struct Recognised {
  Oid oid = 0;
  std::string state;  // of the item
  // Of what was sent to make the item: the record's own when both are the same. Empty for the same
  // person or appointment with other content.
  std::string hash;
};
using RecognisedItems = std::map<const PushRecord*, Recognised>;

// Of the records that the mapping does not know, those that items which it does not know either
// are: with the same state, expected, or by FindJoins sure. Each item is one record. Downloads all
// of the kinds that such records have; connects to nobody when there are none. Throws Error when
// the handheld does not come to a good end.
RecognisedItems Recognise(const ConnectionOptions& connection, const Mapping& mapping,
                          std::span<const PushRecord> records, const phone::PhoneNumbers& numbers);

}  // namespace desktop
