// The document that every reply with records is: made empty, given elements, sent in one piece.
//
// Shape: the declaration (a processing instruction "XML"), then one element "root" that the records
// are appended to. COM must be initialised on the calling thread. A `document` or `parent` that is
// null makes an operation fail with E_POINTER. Statuses: failure is the sign alone.
#pragma once

#include "platform/xml_dom.h"

namespace corvane {

class CorvaneStream;
class MemoryStream;

// The caller owns one reference to each. Both are null when the document cannot be made. Memory
// that runs out for the declaration's text answers the last error: positive, with both null.
ce::HRESULT CreateXMLObjects(ce::IXMLDOMDocument** document, ce::IXMLDOMElement** root);

// Keeps a document to the bytes it is given: switches off every safety option that it knows, its
// validation, what lies outside of it and text of white space alone. Before it is loaded or filled.
ce::HRESULT ConfineDocument(ce::IXMLDOMDocument* document);

// An element that is not yet attached; the caller owns the reference.
ce::HRESULT CreateXMLElement(ce::IXMLDOMDocument* document, const ce::WCHAR* name,
                             ce::IXMLDOMElement** element);

// Appends an element without text.
ce::HRESULT AddEmptyElement(ce::IXMLDOMDocument* document, ce::IXMLDOMNode* parent,
                            const ce::WCHAR* name);

// Sets an attribute. A null or empty value sets nothing. `*value` is freed and nulled on every
// path.
ce::HRESULT SetElementAttribute(ce::IXMLDOMDocument* document, ce::IXMLDOMElement* element,
                                const ce::WCHAR* name, ce::BSTR* value);

// Sets "Oid" in signed decimal.
ce::HRESULT SetOid(ce::IXMLDOMDocument* document, ce::IXMLDOMElement* element, ce::LONG oid);

// As UTF-8, behind what `text` holds already.
ce::HRESULT SaveDocument(ce::IXMLDOMDocument* document, MemoryStream* text);

// Writes a 4-byte little-endian byte count and the document as UTF-8. Nothing is written, and the
// answer is 0, when either is null. A connection that breaks shows as the positive code of the last
// write.
ce::HRESULT StreamXMLToDesktop(ce::IXMLDOMDocument* document, CorvaneStream* stream);

}  // namespace corvane
