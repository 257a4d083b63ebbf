// The attributes that say what is to be done with a record.
#pragma once

#include "platform/xml_dom.h"

namespace corvane {

// "Oid" and "Delete" as decimal numbers, 0 for each that is absent. Fails only when the value of an
// "Oid" that is there cannot be had, or memory runs out.
ce::HRESULT ReadRecordTags(ce::IXMLDOMNode* record, ce::LONG* oid, ce::LONG* deleteFlag);

}  // namespace corvane
