// Text messages and calls that come in, as the forms that people's programs take.
#pragma once

#include <functional>
#include <memory>
#include <string_view>

#include "desktop/wire/phone_records.h"
#include "desktop/wire/xml_records.h"

namespace desktop {

// Where the bytes of a form go, in order.
using ByteSink = std::function<void(std::string_view)>;

// Memory does not grow with the records. What the sink throws passes through.
class PhoneWriter {
 public:
  virtual ~PhoneWriter() = default;
  virtual void Begin() {}
  // The record must be of the writer's kind.
  virtual void Write(const Record& record) = 0;
  virtual void End() {}
};

// One object a line, as formats/message_json.h has them; a message with its identifier.
std::unique_ptr<PhoneWriter> MakePhoneJsonWriter(PhoneKind kind, ByteSink sink);
// One document whose root holds the records, each with the bytes that it came with.
std::unique_ptr<PhoneWriter> MakePhoneXmlWriter(ByteSink sink);
// The backup file of formats/sms_backup.h. It begins with how many it holds, so nothing goes to the
// sink before the end; until then they lie in a temporary file.
std::unique_ptr<PhoneWriter> MakePhoneBackupWriter(PhoneKind kind, ByteSink sink);

}  // namespace desktop
