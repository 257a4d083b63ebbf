// Appointments from record elements.
#pragma once

#include "platform/pocket_outlook_calendar.h"
#include "platform/xml_dom.h"

namespace corvane {

class CorvaneStream;

// Applies one "CALENDAR" record and writes its reply. A field that the record lacks is cleared.
// Answers the result in the reply.
ce::HRESULT ParseXMLAppointment(ce::IXMLDOMNode* record, ce::IPOutlookApp* app,
                                CorvaneStream* stream);

// Sets the fields of an element and saves the item. A full record has more fields than a changed
// occurrence, among them the series, whose exceptions are stored one by one after the item: what
// fails there leaves the item saved. S_OK, or why the record fails, which can be a positive code.
ce::HRESULT ParseXMLAppointmentToRecord(ce::IXMLDOMNode* node, ce::IAppointment* appointment,
                                        bool fullRecord);

}  // namespace corvane
