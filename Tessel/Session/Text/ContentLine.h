#pragma once

#include "Tessel/Session/Text/TextLine.h"

namespace Tessel {

/// A whole content line (RFC 5545, 3.1): folded at 75 octets, never inside a character, and ended
/// with `lineEnd`. Parameter values are quoted where they must be and RFC 6868 encoded; `value` is
/// written as it is. Control characters, which no line may hold, are left out.
std::string contentLine(std::string_view name, const TextParameters& parameters,
    std::string_view value, std::string_view lineEnd = "\r\n");

/// A line that is whole but for its folds and its end.
std::string foldedLine(std::string_view line, std::string_view lineEnd);

/// A text value as it is written (RFC 5545, 3.3.11): backslash, semicolon, comma and line end
/// escaped, a line end of any kind as "\n". Other control characters but the tab are left out.
std::string escapedText(std::string_view plain);

/// The other way round; a backslash before any other character stands for that character.
std::string plainText(std::string_view escaped);

/// The texts of a list, such as that of CATEGORIES, each plain.
std::vector<std::string> plainTexts(std::string_view escaped);

} // namespace Tessel
