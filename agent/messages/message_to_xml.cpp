#include "agent/messages/message_to_xml.h"

#include <algorithm>
#include <string_view>

#include "agent/log/log.h"
#include "agent/messages/mapi_memory.h"
#include "agent/messages/recipients_to_xml.h"
#include "agent/xml/document.h"
#include "agent/xml/values.h"
#include "platform/com_ptr.h"
#include "platform/status.h"

namespace corvane {

using namespace ce;

namespace {

constexpr std::u16string_view kMultimediaClass = u"IPM.MMS";
constexpr HRESULT kNoEntryId = 13;  // positive, so no failure

struct MessageRecord {
  IXMLDOMDocument* document;
  IXMLDOMElement* element;
  MessageText* text;
  bool received = true;
  const SPropValue* entryId = nullptr;
};

HRESULT AddTime(MessageRecord& record, const SPropValue& value) {
  static_cast<void>(AddFileTimeElement(record.document, record.element, u"Time", value.Value.ft));
  return S_OK;
}

HRESULT AddFlags(MessageRecord& record, const SPropValue& value) {
  record.received = (value.Value.l & MSGFLAG_FROMME) == 0;
  return AddLongElement(record.document, record.element, u"Flags", value.Value.l);
}

HRESULT AddEntryId(MessageRecord& record, const SPropValue& value) {
  record.entryId = &value;
  return AddEntryIdAttribute(record.document, record.element, value.Value.bin.cb,
                             value.Value.bin.lpb);
}

HRESULT TakeClass(MessageRecord&, const SPropValue& value) {
  LOG(u"Message Class %s", value.Value.lpszW);
  const std::u16string_view messageClass(value.Value.lpszW);
  return messageClass.starts_with(kMultimediaClass) ? E_ABORT : S_OK;
}

HRESULT TakeText(MessageRecord& record, const SPropValue& value) {
  LOG(u"Subject %s", value.Value.lpszW);
  MessageText& text = *record.text;
  const std::u16string_view subject(value.Value.lpszW);
  const std::size_t length = std::min(subject.size(), text.size() - 1);
  *std::copy_n(subject.begin(), length, text.begin()) = 0;
  LOG(u"Subject moved");
  return S_OK;
}

HRESULT TraceStatus(MessageRecord&, const SPropValue& value) {
  LOG(u"Message Status %ld", value.Value.l);
  return S_OK;
}

HRESULT Ignore(MessageRecord&, const SPropValue&) {
  return S_OK;
}

// What a contents row may hold.
struct RowProperty {
  DWORD tag;
  HRESULT (*add)(MessageRecord& record, const SPropValue& value);
};

constexpr RowProperty kRowProperties[] = {
    {PR_MESSAGE_DELIVERY_TIME, AddTime},
    {PR_MESSAGE_FLAGS, AddFlags},
    {PR_ENTRYID, AddEntryId},
    {PR_MESSAGE_CLASS_W, TakeClass},
    {PR_SUBJECT_W, TakeText},
    {PR_MSG_STATUS, TraceStatus},
    {PR_SENDER_NAME_W, Ignore},
    {0x00000004, Ignore},
    {0x00000007, Ignore},
    {0x0000000A, Ignore},
    {0x00090003, Ignore},
    {PR_MESSAGE_SIZE, Ignore},
    {PR_LAST_MODIFICATION_TIME, Ignore},
};

HRESULT AddRowProperties(MessageRecord& record, const SRow& row) {
  for (DWORD index = 0; index < row.cValues; ++index) {
    const SPropValue& value = row.lpProps[index];
    const auto* known = std::ranges::find(kRowProperties, value.ulPropTag, &RowProperty::tag);
    if (known == std::end(kRowProperties)) {
      LOG(u"Unknown Property 0x%08X (%ld)", value.ulPropTag, value.ulPropTag);
    } else {
      RETURN_IF_FAILED(known->add(record, value));
    }
  }
  return S_OK;
}

HRESULT AddSender(const MessageRecord& record, IMessage* message) {
  static constexpr DWORD kProperties[] = {PR_SENDER_EMAIL_ADDRESS_W};
  static constexpr SPropTagArray kTags{1, kProperties};
  LOG(u"Received Message");
  DWORD count = 0;
  PropertyValues values;
  RETURN_IF_FAILED(message->GetProps(&kTags, MAPI_UNICODE, &count, values.put()));
  const WCHAR* const sender = values.get() && count > 0 ? TextOf(values.get()[0]) : nullptr;
  const HRESULT status = AddStringElement(record.document, record.element, u"Sender", sender);
  LOG(u"Sender: %s", sender);
  return status;
}

HRESULT AddOpenedMessage(const MessageRecord& record, IMessage* message, const SRow& row) {
  if (record.received) RETURN_IF_FAILED(AddSender(record, message));
  RETURN_IF_FAILED(
      AddStringElement(record.document, record.element, u"NOTES", record.text->data()));
  return AddRecipientsToXML(record.document, record.element, message, row.cValues);
}

HRESULT OpenAndAddMessage(const MessageRecord& record, IMsgStore* store, const SRow& row) {
  if (!record.entryId) return kNoEntryId;
  const SBinary& entryId = record.entryId->Value.bin;
  ComPtr<IUnknown> entry;
  HRESULT status = store->OpenEntry(entryId.cb, entryId.lpb, nullptr, 0, nullptr, entry.put());
  LOG(u"OpenEntry returned %d", status);
  if (Failed(status) || !entry) return status;
  ComPtr<IMessage> message;
  RETURN_IF_FAILED(entry->QueryInterface(IMessage::kIid, message.put_void()));
  status = AddOpenedMessage(record, message.get(), row);
  message.reset();
  LOG(u"Done with Message");
  return status;
}

}  // namespace

HRESULT AddMessageToXML(IXMLDOMDocument* document, IXMLDOMNode* root, IMsgStore* store,
                        const WCHAR* path, const SRow& row, MessageText* text) {
  ComPtr<IXMLDOMElement> element;
  RETURN_IF_FAILED(CreateXMLElement(document, u"SMS", element.put()));
  RETURN_IF_FAILED(root->appendChild(element.get(), nullptr));
  RETURN_IF_FAILED(AddStringElement(document, element.get(), u"Folder", path));
  MessageRecord record{document, element.get(), text};
  HRESULT status = AddRowProperties(record, row);
  if (Succeeded(status)) status = OpenAndAddMessage(record, store, row);
  // A multimedia message does not end the folder.
  return status == E_ABORT ? S_OK : status;
}

HRESULT AddEntryIdAttribute(IXMLDOMDocument* document, IXMLDOMElement* element, DWORD count,
                            const BYTE* bytes) {
  constexpr DWORD kMostBytes = 64;
  constexpr WCHAR kDigits[] = u"0123456789ABCDEF";
  if (!bytes) return S_OK;
  std::array<WCHAR, 2 * kMostBytes + 1> text{};
  auto end = text.begin();
  for (DWORD index = 0; index < std::min(count, kMostBytes); ++index) {
    *end++ = kDigits[bytes[index] >> 4];
    *end++ = kDigits[bytes[index] & 0xF];
  }
  Bstr value(text.data());
  // Memory that ran out shows as a positive code, which does not stop.
  if (!value) RETURN_IF_FAILED(LastErrorStatus());
  return SetElementAttribute(document, element, u"Oid", value.address());
}

}  // namespace corvane
