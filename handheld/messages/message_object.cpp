#include <utility>

#include "handheld/base/com_object.h"
#include "handheld/base/guarded.h"
#include "handheld/messages/objects.h"
#include "handheld/messages/table.h"

namespace ce::host {
namespace {

constexpr DWORD kTags[] = {PR_ENTRYID,
                           PR_MESSAGE_CLASS_W,
                           PR_MESSAGE_DELIVERY_TIME,
                           PR_MESSAGE_FLAGS,
                           PR_MSG_STATUS,
                           PR_SUBJECT_W,
                           PR_SENDER_NAME_W,
                           PR_SENDER_EMAIL_ADDRESS_W,
                           PR_MESSAGE_SIZE,
                           PR_LAST_MODIFICATION_TIME};
constexpr PropertyQuery kProperties{
    "SELECT id, entry_id, message_class, delivery_time, flags, status, subject, sender_name,"
    " sender_address, size, last_modification_time FROM messages WHERE id = ?1",
    kTags};

class Message final : public UnknownObject<IMessage, IMAPIProp> {
 public:
  Message(MessageSessionPtr session, std::int64_t id) : session_(std::move(session)), id_(id) {}

  HRESULT GetProps(const SPropTagArray* tags, DWORD, DWORD* count, SPropValue** values) override {
    return GetObjectProps("IMessage::GetProps", *session_, kProperties, id_, tags, count, values);
  }

  HRESULT GetRecipientTable(DWORD, IMAPITable** table) override {
    if (!table) return E_POINTER;
    *table = nullptr;
    return Guarded("IMessage::GetRecipientTable", [&] {
      Store* store = nullptr;
      if (const HRESULT status = session_->Reading(store); Failed(status)) return status;
      std::int64_t count = 0;
      const HRESULT status = CountRows(*store, kRecipientTable, id_, count);
      if (Failed(status)) return status;
      if (count == 0) return MAPI_E_NO_RECIPIENTS;
      *table = MakeTable(session_, kRecipientTable, id_);
      return S_OK;
    });
  }

 private:
  ~Message() override = default;

  const MessageSessionPtr session_;
  const std::int64_t id_;
};

}  // namespace

IMessage* MakeMessageObject(const MessageSessionPtr& session, std::int64_t message) {
  return new Message(session, message);
}

}  // namespace ce::host
