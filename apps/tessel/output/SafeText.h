#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Tessel::App {

/// The text of others as a terminal may get it: controls (C0, DEL, C1), bidirectional controls and
/// separators of lines and paragraphs are shown as "\u{9b}", bytes that are no UTF-8 as "\x{9b}".
std::string shown(std::string_view text);
/// The same line by line: line ends stay.
std::string shownLines(std::string_view text);
/// At most so many characters of it, with an ellipsis where it is longer.
std::string shortened(std::string text, std::size_t most);
/// JSON text in which the same characters are escaped as JSON does it.
std::string escapedJson(std::string_view json);

} // namespace Tessel::App
