// Records in documents on the wire, and a download's end.
#pragma once

#include "platform/com_ptr.h"
#include "platform/status.h"
#include "platform/xml_dom.h"

namespace corvane {

class CorvaneStream;

// The document that a download is filling at the moment.
class RecordDocument {
 public:
  // Begins a document unless one is open.
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

// Whether what a download sends still reaches somebody: its desktop, or a reader of the log. A
// failure to send does not end a walk, whose further steps would be in the log; but without one
// nobody could ever tell that they were taken.
bool IsHeard(const CorvaneStream* stream);

// How many records travel in the first document of a download, and in each behind it.
struct DocumentSizes {
  ce::DWORD first;
  ce::DWORD others;
};

// Calls `addNext(document, &more)`, which adds a record to the document that it opens, until it
// fails, sets `more` to false or nobody hears of it any more; sends each document that is full, and
// what is left at the end. A failure leaves the unfinished document unsent. The status of the last
// step: that of the last document, positive when the connection was lost.
template <typename AddNext>
[[nodiscard]] ce::HRESULT SendRecords(CorvaneStream* stream, DocumentSizes sizes, AddNext addNext) {
  RecordDocument document;
  ce::HRESULT sent = ce::S_OK;
  for (ce::DWORD left = sizes.first;; --left) {
    if (left == 0) {
      sent = document.Send(stream);
      RETURN_IF_FAILED(sent);
      left = sizes.others;
    }
    if (!IsHeard(stream)) return sent;
    bool more = true;
    RETURN_IF_FAILED(addNext(document, &more));
    if (!more) return document.isOpen() ? document.Send(stream) : sent;
  }
}

// The end of every download: a zero where a further document's length would stand, the status, and
// the connection is closed. Answers the status. `stream` may be null.
ce::HRESULT EndDownload(CorvaneStream* stream, ce::HRESULT status);

}  // namespace corvane
