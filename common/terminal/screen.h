// What a person's terminal has room for and can show.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace terminal {

inline constexpr std::size_t kUsualColumns = 80;

// Of the terminal behind the descriptor: COLUMNS, where that is set, or what the terminal says.
// kUsualColumns where it says nothing, and of what is no terminal.
std::size_t ColumnsOf(int descriptor);

// Whether the terminal, by its TERM, knows more than to write lines.
bool IsAble();

// Whether it is an able terminal, and of a person who has not asked for plain text by NO_COLOR.
bool ShowsEmphasis(int descriptor);

// In bold.
std::string Emphasised(std::string_view text);

}  // namespace terminal
