#include <string>

#include "common/formats/backup/sms_backup.h"
#include "common/formats/backup/sms_backup_element.h"

namespace formats {
namespace {

constexpr std::string_view kDeclaration =
    "<?xml version='1.0' encoding='UTF-8' standalone='yes' ?>\n";

// Line breaks and tabs as references, which alone keep them in an attribute.
void WriteEscaped(std::ostream& out, std::string_view text) {
  for (const char c : text) {
    switch (c) {
      case '&':
        out << "&amp;";
        break;
      case '<':
        out << "&lt;";
        break;
      case '>':
        out << "&gt;";
        break;
      case '"':
        out << "&quot;";
        break;
      case '\t':
        out << "&#9;";
        break;
      case '\n':
        out << "&#10;";
        break;
      case '\r':
        out << "&#13;";
        break;
      default:
        out << c;
    }
  }
}

void WriteTag(std::ostream& out, std::string_view name, const BackupAttributes& attributes,
              std::string_view end) {
  out << '<' << name;
  for (const auto& [key, value] : attributes.list) {
    out << ' ' << key << "=\"";
    WriteEscaped(out, value);
    out << '"';
  }
  out << end << '\n';
}

void WriteList(std::ostream& out, std::string_view list, std::string_view name,
               const std::vector<BackupAttributes>& elements) {
  out << "    <" << list << ">\n";
  for (const BackupAttributes& attributes : elements) {
    out << "      ";
    WriteTag(out, name, attributes, " />");
  }
  out << "    </" << list << ">\n";
}

}  // namespace

MessageBackupWriter::MessageBackupWriter(std::ostream& out, std::size_t count) : out_(out) {
  out_ << kDeclaration << "<smses count=\"" << std::to_string(count) << "\">\n";
}

void MessageBackupWriter::Write(const TextMessage& message) {
  const BackupElement element = ToElement(message);
  out_ << "  ";
  if (message.messageClass == MessageClass::kSms) {
    WriteTag(out_, "sms", element.attributes, " />");
    return;
  }
  WriteTag(out_, "mms", element.attributes, ">");
  WriteList(out_, "parts", "part", element.parts);
  WriteList(out_, "addrs", "addr", element.addresses);
  out_ << "  </mms>\n";
}

void MessageBackupWriter::Finish() {
  out_ << "</smses>\n";
}

CallBackupWriter::CallBackupWriter(std::ostream& out, std::size_t count) : out_(out) {
  out_ << kDeclaration << "<calls count=\"" << std::to_string(count) << "\">\n";
}

void CallBackupWriter::Write(const Call& call) {
  out_ << "  ";
  WriteTag(out_, "call", ToElement(call).attributes, " />");
}

void CallBackupWriter::Finish() {
  out_ << "</calls>\n";
}

}  // namespace formats
