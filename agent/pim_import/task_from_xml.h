// Tasks from record elements.
#pragma once

#include "platform/pocket_outlook_calendar.h"
#include "platform/xml_dom.h"

namespace corvane {

class CorvaneStream;

// Applies one "TASK" record and writes its reply. A field that the record lacks is cleared; its
// reminder is counted back from the due date. Answers the result in the reply.
ce::HRESULT ParseXMLTask(ce::IXMLDOMNode* record, ce::IPOutlookApp* app, CorvaneStream* stream);

}  // namespace corvane
