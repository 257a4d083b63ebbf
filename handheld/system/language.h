// The languages that a handheld can speak: LANGIDs, their tags and their 8-bit code pages.
#pragma once

#include <optional>
#include <span>
#include <string_view>

#include "platform/types.h"

namespace ce::host {

struct Language {
  LANGID id;
  std::string_view tag;  // "de-DE"
  UINT codePage;         // of 8-bit text; 0: the language has none, UTF-8 stands in
};

inline constexpr LANGID kLangEnglishUs = 0x0409;

// Every language that is known by name, in the order of their tags.
std::span<const Language> Languages();

// Null for a language that the table lacks.
const Language* FindLanguage(LANGID id);
// A tag in any case, with '-' or '_', with or without a region ("de", "pt_BR"): a region that the
// table lacks gives the language's first entry. Null for an unknown language.
const Language* FindLanguage(std::string_view tag);

// The code page of a handheld in this language; an unknown region follows its language, an unknown
// language is western (1252).
UINT CodePageOf(LANGID id);

// The page that CP_ACP stands for on the current handheld; 1252 without one.
UINT SystemCodePage();

// What the host's user speaks, from LC_ALL, LC_MESSAGES or LANG; US English when they do not say.
LANGID HostLanguage();

}  // namespace ce::host
