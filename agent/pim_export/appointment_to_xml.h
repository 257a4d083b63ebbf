// One appointment as a record element.
#pragma once

#include "platform/pocket_outlook_calendar.h"
#include "platform/xml_dom.h"

namespace corvane {

// Appends a record "CALENDAR" with a child for every field that has a value, and sets its attribute
// "Oid" last. An appointment whose fields cannot be written appends nothing.
ce::HRESULT AddAppointmentToXML(ce::IXMLDOMDocument* document, ce::IXMLDOMNode* parent,
                                ce::IAppointment* appointment);

// Makes an element of this name with the appointment's fields: all of a record (`full`), or those
// that a changed occurrence of a series has of its own. The caller appends it and owns the
// reference, also that to an unfinished element after a failure (null when there is none).
ce::HRESULT AddAppointmentFieldsToXML(ce::IXMLDOMDocument* document, ce::IAppointment* appointment,
                                      const ce::WCHAR* name, ce::IXMLDOMElement** element,
                                      bool full);

}  // namespace corvane
