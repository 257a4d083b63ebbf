// The document that a download is filling at the moment, and the download's end.
#pragma once

#include "platform/com_ptr.h"
#include "platform/xml_dom.h"

namespace corvane {

class CorvaneStream;

class RecordDocument {
 public:
  // Begins a document; one must not be open.
  [[nodiscard]] ce::HRESULT Open();
  bool isOpen() const { return static_cast<bool>(root_); }
  ce::IXMLDOMDocument* document() const { return document_.get(); }
  ce::IXMLDOMElement* root() const { return root_.get(); }
  // Sends and closes the open document; nothing when none is open.
  [[nodiscard]] ce::HRESULT Send(CorvaneStream* stream);

 private:
  ce::ComPtr<ce::IXMLDOMDocument> document_;
  ce::ComPtr<ce::IXMLDOMElement> root_;
};

// The end of every download: a zero where a further document's length would stand, the status, and
// the connection is closed. Answers the status. `stream` may be null.
ce::HRESULT EndDownload(CorvaneStream* stream, ce::HRESULT status);

}  // namespace corvane
