#include "tests/wine/answers/machine.h"

#include <array>

#ifdef _WIN32
#include <cwchar>
#else
#include "agent/core/memory_stream.h"
#include "agent/pim_import/scan.h"
#endif

namespace answers {

#ifdef _WIN32

// The system's C library; what comes with the compiler reads in its own way.
int Scan(const Wide& text, std::span<const ScanPart> parts, std::span<LONG, 6> numbers) {
  using Swscanf = int(__cdecl*)(const wchar_t*, const wchar_t*, ...);
  static const auto scan = reinterpret_cast<Swscanf>(
      reinterpret_cast<void*>(GetProcAddress(LoadLibraryA("msvcrt.dll"), "swscanf")));
  Wide pattern;
  for (const ScanPart& part : parts) {
    if (part.literal) pattern += static_cast<wchar_t>(part.literal);
    pattern += L"%0" + std::to_wstring(part.width) + L"d";
  }
  return scan(text.c_str(), pattern.c_str(), &numbers[0], &numbers[1], &numbers[2], &numbers[3],
              &numbers[4], &numbers[5]);
}

LONG ToLong(const Wide& text) {
  return std::wcstol(text.c_str(), nullptr, 10);
}

IXMLDOMDocument* MakeDocument() {
  constexpr GUID kDocument{
      0x2933BF90, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};
  void* document = nullptr;
  CoCreateInstance(kDocument, nullptr, CLSCTX_INPROC_SERVER, IID_IXMLDOMDocument, &document);
  return static_cast<IXMLDOMDocument*>(document);
}

std::string Saved(IXMLDOMDocument& document) {
  IStream* stream = nullptr;
  if (CreateStreamOnHGlobal(nullptr, TRUE, &stream) < 0) return "failed";
  VARIANT target{};
  target.vt = VT_UNKNOWN;
  target.punkVal = stream;
  std::string saved = "failed";
  if (document.save(target) >= 0) {
    saved.clear();
    stream->Seek({}, STREAM_SEEK_SET, nullptr);
    std::array<char, 4096> piece;
    ULONG read = 0;
    while (stream->Read(piece.data(), sizeof piece, &read) >= 0 && read > 0) {
      saved.append(piece.data(), read);
    }
  }
  stream->Release();
  return saved;
}

#else

int Scan(const Wide& text, std::span<const ScanPart> parts, std::span<LONG, 6> numbers) {
  std::array<corvane::ScanField, 6> fields{};
  for (std::size_t i = 0; i < parts.size(); ++i) {
    fields[i] = {static_cast<WCHAR>(parts[i].literal), parts[i].width};
  }
  return corvane::ScanNumbers(text, std::span(fields).first(parts.size()), numbers);
}

LONG ToLong(const Wide& text) {
  return corvane::TextToLong(text);
}

IXMLDOMDocument* MakeDocument() {
  void* document = nullptr;
  CoCreateInstance(CLSID_DOMDocument, nullptr, CLSCTX_INPROC_SERVER, IXMLDOMDocument::kIid,
                   &document);
  return static_cast<IXMLDOMDocument*>(document);
}

std::string Saved(IXMLDOMDocument& document) {
  corvane::MemoryStream stream;
  VARIANT target;
  target.vt = VT_UNKNOWN;
  target.punkVal = &stream;
  if (document.save(target) < 0) return "failed";
  return {reinterpret_cast<const char*>(stream.Buffer()), stream.Size()};
}

#endif

}  // namespace answers
