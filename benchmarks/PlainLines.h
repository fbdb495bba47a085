#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Tessel::Benchmarks {

/// One line as the plainest reader keeps it.
struct PlainLine {
    std::string name;
    std::vector<std::pair<std::string, std::string>> parameters;
    std::string value;
};

/// Unfolds text and splits each line into strings, without any tree: the floor for a parser.
std::vector<PlainLine> unfoldAndSplit(std::string_view text);

/// Appends each line to one text and folds it every 75 bytes: the floor for a writer.
std::string appendAndFold(const std::vector<PlainLine>& lines);

} // namespace Tessel::Benchmarks
