#pragma once

#include <string>
#include <string_view>

namespace Tessel {

/// Appends a line folded by the rule of `CGICalendarProperty::foldPropertyLine`.
void appendFolded(std::string& text, std::string_view line);

/// Folds in place the line that begins at `start` and ends `text`.
void foldTail(std::string& text, std::size_t start);

} // namespace Tessel
