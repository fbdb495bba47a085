#include "apps/tessel/output/ResultTable.h"

#include "apps/tessel/output/SafeText.h"
#include "apps/tessel/output/TextWidth.h"

#include <algorithm>

namespace Tessel::App {

namespace {

/// What is longer is shortened, so that one cell does not make every line as long; the last one,
/// which no other is aligned with, may be a place or a reason.
constexpr std::size_t widestColumn = 100;
constexpr std::size_t widestLast = 1'000;

} // namespace

ResultTable::ResultTable(const Output& output, Cells headings)
    : output_(output)
    , rows_ {std::move(headings)}
{
}

void ResultTable::add(Cells cells, const Json& object)
{
    if (output_.isJson()) return output_.object(object);
    for (auto& cell : cells)
        cell = shortened(shown(cell), &cell == &cells.back() ? widestLast : widestColumn);
    rows_.push_back(std::move(cells));
}

void ResultTable::print(const std::string& emptyLine) const
{
    if (rows_.size() == 1) {
        if (!emptyLine.empty()) output_.line(emptyLine);
        return;
    }
    std::vector<std::size_t> widths(rows_.front().size(), 0);
    for (const auto& row : rows_) {
        for (std::size_t i = 0; i + 1 < row.size(); ++i)
            widths[i] = std::max(widths[i], textWidth(row[i]));
    }
    for (const auto& row : rows_) {
        std::string line;
        for (std::size_t i = 0; i + 1 < row.size(); ++i)
            line += row[i] + std::string(widths[i] - textWidth(row[i]) + 2, ' ');
        line += row.back();
        line.erase(line.find_last_not_of(' ') + 1);
        &row == &rows_.front() ? output_.heading(line) : output_.line(line);
    }
}

} // namespace Tessel::App
