#include "Tessel/Session/Text/TextTree.h"

#include "Tessel/Platform/Foundation/Base/Limits.h"

#include <cstring>
#include <limits>

namespace Tessel {

namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

bool isBlank(char c)
{
    return c == ' ' || c == '\t';
}

std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

/// Reads the lines of a text one by one and matches BEGIN with END.
class TextReader {
public:
    explicit TextReader(TextIndex& index)
        : index_(index)
    {
    }

    /// Empty when the text was read, else why not.
    std::string read()
    {
        const std::string_view text = index_.text;
        if (text.size() > Limits::textBytes) return "The calendar text is too large.";
        constexpr std::size_t usualLine = 32;
        index_.lines.reserve(std::min(text.size() / usualLine + 8, Limits::textLines));
        index_.components.reserve(8);
        std::size_t position = text.starts_with(byteOrderMark) ? byteOrderMark.size() : 0;
        while (position < text.size()) {
            if (index_.lines.size() == Limits::textLines)
                return "The calendar text has too many lines.";
            position = readLine(position);
            if (!fault_.empty()) return fault_;
        }
        if (open_ != TextIndex::none) return at(index_.components[open_].first, "is never ended");
        if (index_.components.empty()) return "The text holds no calendar: it has no BEGIN.";
        return {};
    }

private:
    /// Where the line after the one at `begin` stands.
    std::size_t readLine(std::size_t begin)
    {
        const auto& text = index_.text;
        TextLine::Record line {
            static_cast<std::uint32_t>(begin), 0, TextIndex::none, 0, false, false, false, false};
        auto end = begin;
        for (;;) {
            const void* const newline = std::memchr(text.data() + end, '\n', text.size() - end);
            end = newline ? std::size_t(static_cast<const char*>(newline) - text.data()) + 1
                          : text.size();
            if (end == text.size() || !isBlank(text[end])) break;
            line.isFolded = true;
        }
        line.size = static_cast<std::uint32_t>(end - begin);
        readName(line);
        index_.lines.push_back(line);
        if (line.nameSize == 5 || line.nameSize == 3) readBoundary();
        return end;
    }

    void readName(TextLine::Record& line) const
    {
        const auto raw = TextLine(index_.text.data(), line).raw();
        // Names are short: looking at each character beats a search.
        std::size_t size = 0;
        while (size < raw.size() && raw[size] != ':' && raw[size] != ';' && raw[size] != '\n')
            ++size;
        if (size < raw.size() && raw[size] != '\n') {
            setNameSize(line, size);
        } else if (line.isFolded) {
            line.isNameFolded = true;
            const auto content = TextLine(index_.text.data(), line).unfolded();
            const auto end = content.find_first_of(":;");
            if (end != content.npos) setNameSize(line, end);
        }
    }

    static void setNameSize(TextLine::Record& line, std::size_t size)
    {
        // No name is that long: such a line has none.
        if (size <= std::numeric_limits<std::uint16_t>::max())
            line.nameSize = static_cast<std::uint16_t>(size);
    }

    /// Where the latest line is a BEGIN or END.
    void readBoundary()
    {
        const auto number = static_cast<std::uint32_t>(index_.lines.size() - 1);
        auto& record = index_.lines[number];
        const TextLine line(index_.text.data(), record);
        if (line.is("BEGIN")) {
            if (depth_ == Limits::textDepth) return fail(number, "is nested too deep");
            ++depth_;
            record.isBegin = true;
            record.component = static_cast<std::uint32_t>(index_.components.size());
            index_.components.push_back({number, number, record.component + 1, open_});
            open_ = record.component;
        } else if (line.is("END")) {
            if (open_ == TextIndex::none) return fail(number, "has no BEGIN");
            if (!TextComponent(index_, open_).is(trimmed(line.value())))
                return fail(number, "does not end what was begun last");
            --depth_;
            record.isEnd = true;
            record.component = open_;
            auto& component = index_.components[open_];
            component.last = number;
            component.next = static_cast<std::uint32_t>(index_.components.size());
            open_ = component.parent;
        }
    }

    void fail(std::uint32_t line, std::string_view what) { fault_ = at(line, what); }

    std::string at(std::uint32_t line, std::string_view what) const
    {
        constexpr std::size_t shown = 60;
        return "The calendar text cannot be read: line " + std::to_string(line + 1) + ", \""
            + index_.line(line).unfolded().substr(0, shown) + "\", " + std::string(what) + ".";
    }

    TextIndex& index_;
    std::uint32_t open_ = TextIndex::none;
    std::size_t depth_ = 0;
    std::string fault_;
};

} // namespace

bool TextComponent::is(std::string_view name) const
{
    std::string buffer;
    return isSameName(trimmed(begin().value(buffer)), name);
}

std::string TextComponent::name() const
{
    return std::string(trimmed(begin().value()));
}

std::string_view TextComponent::raw() const
{
    const auto& first = index_->lines[place().first];
    const auto& last = index_->lines[place().last];
    return std::string_view(index_->text).substr(first.begin, last.begin + last.size - first.begin);
}

TextComponent::Range<TextLine> TextComponent::lines() const
{
    return {*index_, place().first + 1, place().last};
}

TextComponent::Range<TextComponent> TextComponent::components() const
{
    return {*index_, number_ + 1, place().next};
}

std::optional<TextLine> TextComponent::line(std::string_view name) const
{
    for (const auto line : lines())
        if (line.is(name)) return line;
    return std::nullopt;
}

Result<TextTree> TextTree::read(std::string text)
{
    auto index = std::make_shared<TextIndex>();
    index->text = std::move(text);
    if (auto fault = TextReader(*index).read(); !fault.empty())
        return Failure {.kind = FailureKind::malformed, .reason = std::move(fault)};
    return TextTree(std::move(index));
}

TextComponent::Range<TextComponent> TextTree::components() const
{
    return {*index_, 0, static_cast<std::uint32_t>(index_->components.size())};
}

std::string_view TextTree::lineEnd() const
{
    const auto newline = index_->text.find('\n');
    if (newline == std::string::npos) return "\r\n";
    const bool hasReturn = newline > 0 && index_->text[newline - 1] == '\r';
    return hasReturn ? "\r\n" : "\n";
}

} // namespace Tessel
