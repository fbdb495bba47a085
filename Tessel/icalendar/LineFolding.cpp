#include "Tessel/icalendar/LineFolding.h"

#include <algorithm>
#include <cstddef>

namespace Tessel {

static constexpr std::size_t foldedUnits = 75;

static bool isContinuationByte(char c)
{
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

// The UTF-16 units that a code point with this byte takes, told by its lead byte alone.
static std::size_t unitsOf(char c)
{
    if (isContinuationByte(c)) return 0;
    return static_cast<unsigned char>(c) >= 0xF0 ? 2 : 1;
}

static bool isASCII(std::string_view text)
{
    unsigned char bits = 0;
    for (const char c : text)
        bits |= static_cast<unsigned char>(c);
    return bits < 0x80;
}

static std::size_t unitCount(std::string_view text)
{
    std::size_t units = 0;
    for (const char c : text)
        units += unitsOf(c);
    return units;
}

namespace {

// Walks forward over UTF-8 text by UTF-16 units; stops between code points only.
class UnitCursor {
public:
    explicit UnitCursor(std::string_view text)
        : text_(text)
    {
    }

    // The byte position of the first code point that begins at `units` or later.
    std::size_t advanceTo(std::size_t units)
    {
        while (
            position_ != text_.size() && (units_ < units || isContinuationByte(text_[position_]))) {
            units_ += unitsOf(text_[position_++]);
        }
        return position_;
    }

private:
    std::string_view text_;
    std::size_t position_ = 0;
    std::size_t units_ = 0;
};

} // namespace

void appendFolded(std::string& text, std::string_view line)
{
    const bool ascii = isASCII(line);
    const auto units = ascii ? line.size() : unitCount(line);
    if (units <= foldedUnits) {
        text.append(line);
        return;
    }

    const auto folds = (units - 1) / foldedUnits;
    UnitCursor cursor(line);
    std::size_t begin = 0;
    for (std::size_t fold = 1; fold <= folds; ++fold) {
        const auto end = ascii ? fold * foldedUnits : cursor.advanceTo(fold * foldedUnits);
        text.append(line, begin, end - begin).append("\r\n ");
        begin = end;
    }
    const bool dropsLastPiece = units % foldedUnits == 0;
    if (!dropsLastPiece) text.append(line, begin);
}

void foldTail(std::string& text, std::size_t start)
{
    if (text.size() - start <= foldedUnits) return;
    const auto line = text.substr(start);
    text.resize(start);
    appendFolded(text, line);
}

} // namespace Tessel
