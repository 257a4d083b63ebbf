// The control as programs use it: a window that streams.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <string>

#include "handheld/ink/note_formats.h"
#include "platform/windows.h"
#include "tests/support/ink_note_bytes.h"
#include "tests/support/test_handheld.h"

namespace corvane {
namespace {

using namespace ce;

// What a stream is over, and how it behaves.
struct Source {
  std::string bytes = {};
  std::size_t piece = 4096;  // given at a time
  DWORD failure = 0;         // answered once the bytes have been given
  LONG claim = -1;           // told in place of the truth, unless -1
  std::size_t given = 0;
  int calls = 0;
};

DWORD Give(DWORD_PTR cookie, BYTE* buffer, LONG bytes, LONG* moved) {
  auto& source = *reinterpret_cast<Source*>(cookie);
  ++source.calls;
  const std::size_t count =
      std::min({source.piece, static_cast<std::size_t>(bytes), source.bytes.size() - source.given});
  std::copy_n(source.bytes.data() + source.given, count, buffer);
  source.given += count;
  *moved = source.claim == -1 ? static_cast<LONG>(count) : source.claim;
  return count == 0 ? source.failure : 0;
}

struct Sink {
  std::string bytes = {};
  std::size_t room = std::string::npos;
  DWORD failure = 0;
  int calls = 0;
};

DWORD Take(DWORD_PTR cookie, BYTE* buffer, LONG bytes, LONG* moved) {
  auto& sink = *reinterpret_cast<Sink*>(cookie);
  ++sink.calls;
  const std::size_t count =
      std::min(static_cast<std::size_t>(bytes), sink.room - sink.bytes.size());
  sink.bytes.append(reinterpret_cast<const char*>(buffer), count);
  *moved = static_cast<LONG>(count);
  return sink.failure;
}

class InkControlTest : public testing::HandheldTest {
 protected:
  void SetUp() override {
    module_ = LoadLibraryW(u"RichInk.dll");
    window_ =
        CreateWindowExW(0, u"RichInk", u"RichInk", WS_CHILD, CW_USEDEFAULT, CW_USEDEFAULT,
                        CW_USEDEFAULT, CW_USEDEFAULT, GetForegroundWindow(), 0, nullptr, nullptr);
    ASSERT_NE(window_, 0u);
  }
  void TearDown() override {
    EXPECT_TRUE(DestroyWindow(window_));
    EXPECT_TRUE(FreeLibrary(module_));
    HandheldTest::TearDown();
  }

  LRESULT In(DWORD format, Source& source) {
    EDITSTREAM stream{reinterpret_cast<DWORD_PTR>(&source), 0, Give};
    const LRESULT result =
        SendMessageW(window_, EM_STREAMIN, format, reinterpret_cast<LPARAM>(&stream));
    error_ = stream.dwError;
    return result;
  }
  LRESULT In(DWORD format, std::string bytes) {
    Source source{std::move(bytes)};
    return In(format, source);
  }
  LRESULT Out(DWORD format, Sink& sink) {
    EDITSTREAM stream{reinterpret_cast<DWORD_PTR>(&sink), 0, Take};
    const LRESULT result =
        SendMessageW(window_, EM_STREAMOUT, format, reinterpret_cast<LPARAM>(&stream));
    error_ = stream.dwError;
    return result;
  }
  std::string Out(DWORD format) {
    Sink sink;
    EXPECT_EQ(Out(format, sink), 0);
    return sink.bytes;
  }
  std::string Convert(DWORD from, std::string bytes, DWORD to) {
    EXPECT_EQ(In(from, std::move(bytes)), 0);
    return Out(to);
  }

  HMODULE module_ = nullptr;
  HWND window_ = 0;
  DWORD error_ = 0;
};

constexpr DWORD kFormats[] = {SF_TEXT, SF_RTF, SF_TEXT_UNICODE, SF_INK_NOTE};

std::string Unicode(std::u16string_view text) {
  return host::WriteUnicodeText(text).value();
}

TEST_F(InkControlTest, ConvertsBetweenAllFormats) {
  const std::u16string text = u"Milk\r\n\tcaf\u00E9\r\n\r\n{end}\r\n";
  const std::string unicode = Unicode(text);
  for (const DWORD from : kFormats) {
    for (const DWORD to : kFormats) {
      const std::string first = Convert(SF_TEXT_UNICODE, unicode, from);
      const std::string second = Convert(from, first, to);
      EXPECT_EQ(Convert(to, second, SF_TEXT_UNICODE), unicode) << from << " to " << to;
    }
  }
}

TEST_F(InkControlTest, GivesADevicesNoteAsText) {
  EXPECT_EQ(Convert(SF_INK_NOTE, testing::InkNote({"Milk", "Bread"}), SF_TEXT), "Milk\r\nBread");
}

TEST_F(InkControlTest, AddsNoLineForARichTextsLastParagraph) {
  const std::string note = Convert(SF_RTF, "{\\rtf1 one\\par two\\par}", SF_INK_NOTE);
  EXPECT_EQ(Convert(SF_INK_NOTE, note, SF_TEXT_UNICODE), Unicode(u"one\r\ntwo"));
}

TEST_F(InkControlTest, IsAModuleThatAHandheldMayLack) {
  handheld_->Set(u"RichInk", DWORD{0});
  EXPECT_EQ(LoadLibraryW(u"richink.DLL"), nullptr);
  EXPECT_EQ(LoadLibraryW(u"mobilelink.cpl"), nullptr) << "every handheld lacks it";
}

TEST_F(InkControlTest, IsEmptyAtFirst) {
  EXPECT_EQ(Out(SF_TEXT), "");
  EXPECT_EQ(Out(SF_TEXT_UNICODE), "");
}

TEST_F(InkControlTest, TakesNothingAsAnEmptyNoteInEveryFormat) {
  for (const DWORD format : kFormats) {
    EXPECT_EQ(Convert(SF_TEXT, "old", SF_TEXT), "old");
    EXPECT_EQ(Convert(format, "", SF_TEXT), "") << format;
  }
}

TEST_F(InkControlTest, ReadsInPiecesOfAnySize) {
  for (const std::size_t piece : {1u, 3u, 4095u, 4096u}) {
    Source source{std::string(10000, 'x'), piece};
    EXPECT_EQ(In(SF_TEXT, source), 0);
    EXPECT_EQ(Out(SF_TEXT).size(), 10000u) << piece;
  }
}

TEST_F(InkControlTest, WritesInPieces) {
  In(SF_TEXT, std::string(10000, 'x'));
  Sink sink;
  EXPECT_EQ(Out(SF_TEXT, sink), 0);
  EXPECT_EQ(sink.calls, 3);
}

TEST_F(InkControlTest, RefusesAFormatThatItDoesNotKnow) {
  EXPECT_EQ(In(SF_TEXT, "kept"), 0);
  for (const DWORD format : {0u, 16u, 0x8001u}) {
    Source source{"lost"};
    EXPECT_EQ(In(format, source), E_FAIL);
    EXPECT_EQ(source.calls, 0) << "nothing is read";
    Sink sink;
    EXPECT_EQ(Out(format, sink), E_FAIL);
    EXPECT_EQ(sink.calls, 0);
  }
  EXPECT_EQ(Out(SF_TEXT), "kept");
}

TEST_F(InkControlTest, KeepsItsContentWhenTheNewIsDamaged) {
  EXPECT_EQ(In(SF_TEXT, "kept"), 0);
  EXPECT_EQ(In(SF_RTF, "no rich text"), E_FAIL);
  EXPECT_EQ(In(SF_INK_NOTE, "no note"), E_FAIL);
  EXPECT_EQ(In(SF_TEXT_UNICODE, "odd"), E_FAIL);
  EXPECT_EQ(Out(SF_TEXT), "kept");
}

TEST_F(InkControlTest, FailsWithTheCallbackAndTellsItsCode) {
  EXPECT_EQ(In(SF_TEXT, "kept"), 0);
  Source source{"new", 4096, 77};
  EXPECT_EQ(In(SF_TEXT, source), E_FAIL);
  EXPECT_EQ(error_, 77u);
  Sink sink{.failure = 78};
  EXPECT_EQ(Out(SF_TEXT, sink), E_FAIL);
  EXPECT_EQ(error_, 78u);
  EXPECT_EQ(Out(SF_TEXT), "kept");
}

TEST_F(InkControlTest, RefusesACallbackThatClaimsMoreThanItWasAskedFor) {
  for (const LONG claim : {4097, -2}) {
    Source source{"new", 4096, 0, claim};
    EXPECT_EQ(In(SF_TEXT, source), E_FAIL) << claim;
  }
}

TEST_F(InkControlTest, StopsWritingWhereLessIsTaken) {
  In(SF_TEXT, std::string(10000, 'x'));
  Sink sink{.room = 5000};
  EXPECT_EQ(Out(SF_TEXT, sink), 0);
  EXPECT_EQ(sink.bytes.size(), 5000u);
  EXPECT_EQ(sink.calls, 2);
}

TEST_F(InkControlTest, RefusesMoreThanANoteMayHave) {
  EXPECT_EQ(In(SF_TEXT, std::string(host::kMaxNoteBytes, 'x')), 0);
  EXPECT_EQ(Out(SF_TEXT).size(), host::kMaxNoteBytes);
  Sink sink;
  EXPECT_EQ(Out(SF_TEXT_UNICODE, sink), E_FAIL) << "twice as much";
  EXPECT_EQ(sink.bytes, "");
  EXPECT_EQ(In(SF_TEXT, std::string(host::kMaxNoteBytes + 1, 'x')), E_FAIL);
}

TEST_F(InkControlTest, RefusesAStreamWithoutACallback) {
  EDITSTREAM stream;
  EXPECT_EQ(SendMessageW(window_, EM_STREAMIN, SF_TEXT, reinterpret_cast<LPARAM>(&stream)), E_FAIL);
  EXPECT_EQ(SendMessageW(window_, EM_STREAMOUT, SF_TEXT, 0), E_FAIL);
}

TEST_F(InkControlTest, MeansNothingByOtherMessages) {
  EXPECT_EQ(SendMessageW(window_, 0x000F, 0, 0), 0);
}

// Text of any script: units of their own, pairs, line breaks.
rc::Gen<std::u16string> AnyText() {
  const auto unit =
      rc::gen::map(rc::gen::weightedOneOf<int>({{4, rc::gen::inRange(0x20, 0x7F)},
                                                {4, rc::gen::inRange(0x80, 0x4000)},
                                                {4, rc::gen::inRange(0x4000, 0x10000)},
                                                {1, rc::gen::inRange(0, 0x20)}}),
                   [](int value) { return std::u16string(1, static_cast<char16_t>(value)); });
  const auto piece = rc::gen::weightedOneOf<std::u16string>(
      {{8, unit},
       {2, rc::gen::element<std::u16string>(u"\r\n", u"\U0001F600", u"\\", u"{", u"}", u"\t")}});
  return rc::gen::map(rc::gen::container<std::vector<std::u16string>>(piece),
                      [](const auto& pieces) {
                        std::u16string text;
                        for (const std::u16string& part : pieces) text += part;
                        return text;
                      });
}

// Without lone breaks, which rich text has one word for.
std::u16string ForRichText(std::u16string text) {
  std::erase_if(text, [](char16_t unit) { return unit == u'\r' || unit == u'\n'; });
  return text;
}

RC_GTEST_PROP(InkNoteText, ComesOutAsItWentIn, ()) {
  const std::u16string text = *AnyText();
  const auto* ink = host::FindNoteFormat(SF_INK_NOTE);
  RC_ASSERT(ink->read(*ink->write(text)) == text);
}

RC_GTEST_PROP(RichTextText, ComesOutAsItWentIn, ()) {
  const std::u16string text = ForRichText(*AnyText()) + u"\r\n" + ForRichText(*AnyText());
  const auto* rich = host::FindNoteFormat(SF_RTF);
  RC_ASSERT(rich->read(*rich->write(text)) == text);
}

}  // namespace
}  // namespace corvane
