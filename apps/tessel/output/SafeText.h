#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace Tessel::App {

/// What a text begins with.
struct Character {
    std::size_t size = 1;
    std::uint32_t codePoint = 0; ///< the byte itself where it is no UTF-8
    bool isValid = true;
};
/// Of a text that is not empty.
Character firstCharacter(std::string_view text);

/// The text of others as a terminal may get it on one line: line ends are blanks, controls (C0,
/// DEL, C1), bidirectional controls and separators of lines and paragraphs are shown as "\u{9b}",
/// bytes that are no UTF-8 as "\x{9b}".
std::string shown(std::string_view text);
/// The same line by line: line ends stay.
std::string shownLines(std::string_view text);
/// At most so many characters of it, with an ellipsis where it is longer.
std::string shortened(std::string text, std::size_t most);
/// JSON text in which the same characters are escaped as JSON does it.
std::string escapedJson(std::string_view json);

} // namespace Tessel::App
