#include "agent/xml/values.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstdint>
#include <string_view>

#include "agent/time/zone.h"
#include "agent/xml/document.h"
#include "platform/com_ptr.h"
#include "platform/status.h"
#include "platform/text.h"

namespace corvane {

using namespace ce;

namespace {

// Large enough for both date pictures.
using DateText = std::array<WCHAR, 24>;

// A time that has no text is left out: only a negative code stops an exporter.
HRESULT LeftOut() {
  const HRESULT status = LastErrorStatus();
  return Failed(status) ? status : S_OK;
}

HRESULT AddValueElement(IXMLDOMDocument* document, IXMLDOMNode* parent, const WCHAR* name,
                        const Bstr& text) {
  if (!document || !parent) return E_POINTER;
  ComPtr<IXMLDOMElement> element;
  RETURN_IF_FAILED(CreateXMLElement(document, name, element.put()));
  ComPtr<IXMLDOMText> node;
  RETURN_IF_FAILED(document->createTextNode(text.get(), node.put()));
  RETURN_IF_FAILED(parent->appendChild(element.get(), nullptr));
  return element->appendChild(node.get(), nullptr);
}

// All 64 bits count, so that no other date is taken for it.
bool IsNoDate(DATE date) {
  return std::bit_cast<std::uint64_t>(date) == std::bit_cast<std::uint64_t>(kNoDate);
}

}  // namespace

HRESULT AddStringElement(IXMLDOMDocument* document, IXMLDOMNode* parent, const WCHAR* name,
                         const WCHAR* text) {
  if (!text || !*text) return S_OK;
  const Bstr copy(text);
  if (!copy) return LastErrorStatus();
  return AddValueElement(document, parent, name, copy);
}

HRESULT AddBSTRElement(IXMLDOMDocument* document, IXMLDOMNode* parent, const WCHAR* name,
                       BSTR* text) {
  Bstr owned;
  owned.attach(*text);
  *text = nullptr;
  return owned.empty() ? S_OK : AddValueElement(document, parent, name, owned);
}

HRESULT AddAnsiStringElement(IXMLDOMDocument* document, IXMLDOMNode* parent, const WCHAR* name,
                             const char* text) {
  if (!text || !*text) return S_OK;
  const std::string_view narrow(text);
  Bstr wide;
  wide.attach(SysAllocStringLen(nullptr, static_cast<UINT>(narrow.size())));
  if (!wide) return LastErrorStatus();
  std::transform(narrow.begin(), narrow.end(), wide.get(), [](char byte) {
    return static_cast<WCHAR>(static_cast<std::int16_t>(static_cast<std::int8_t>(byte)));
  });
  return AddBSTRElement(document, parent, name, wide.address());
}

HRESULT AddBoolElement(IXMLDOMDocument* document, IXMLDOMNode* parent, const WCHAR* name,
                       LONG flag) {
  return AddStringElement(document, parent, name, flag ? u"TRUE" : u"FALSE");
}

HRESULT AddLongElement(IXMLDOMDocument* document, IXMLDOMNode* parent, const WCHAR* name,
                       LONG value) {
  return AddStringElement(document, parent, name, LongText(value).data());
}

HRESULT AddDateElement(IXMLDOMDocument* document, IXMLDOMNode* parent, const WCHAR* name,
                       DATE date) {
  if (IsNoDate(date)) return S_OK;
  SYSTEMTIME time{};
  if (!VariantTimeToSystemTime(date, &time)) return E_UNEXPECTED;
  DateText text{};
  if (!GetDateFormatW(0, 0, &time, u"yyyyMMdd'T000000'", text.data(),
                      static_cast<INT>(text.size()))) {
    return LeftOut();
  }
  return AddStringElement(document, parent, name, text.data());
}

HRESULT AddSystemTimeElement(IXMLDOMDocument* document, IXMLDOMNode* parent, const WCHAR* name,
                             const SYSTEMTIME& time) {
  DateText text{};
  constexpr INT kRoom = static_cast<INT>(std::tuple_size_v<DateText>);
  const INT written = GetDateFormatW(0, 0, &time, u"yyyyMMdd'T'", text.data(), kRoom);
  if (written <= 0) return LeftOut();
  // Over the terminator. Half a time is as good as none.
  const INT end = written - 1;
  if (!GetTimeFormatW(0, 0, &time, u"HHmmss", text.data() + end, kRoom - end)) {
    return LeftOut();
  }
  return AddStringElement(document, parent, name, text.data());
}

HRESULT AddDateTimeElement(IXMLDOMDocument* document, IXMLDOMNode* parent, const WCHAR* name,
                           DATE local) {
  if (IsNoDate(local)) return S_OK;
  SYSTEMTIME time{};
  if (!VariantTimeToSystemTime(local, &time)) return E_UNEXPECTED;
  return AddSystemTimeElement(document, parent, name, LocalTimeToUtc(time));
}

HRESULT AddFileTimeElement(IXMLDOMDocument* document, IXMLDOMNode* parent, const WCHAR* name,
                           const FILETIME& ticks) {
  SYSTEMTIME time{};
  if (!FileTimeToSystemTime(&ticks, &time)) return LeftOut();
  return AddSystemTimeElement(document, parent, name, time);
}

std::array<WCHAR, 32> LongText(LONG value) {
  char digits[32] = {};
  std::to_chars(std::begin(digits), std::end(digits) - 1, value);
  std::array<WCHAR, 32> text{};
  std::copy(std::begin(digits), std::end(digits), text.begin());
  return text;
}

}  // namespace corvane
