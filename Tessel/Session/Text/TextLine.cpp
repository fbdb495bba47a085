#include "Tessel/Session/Text/TextLine.h"

#include <algorithm>

namespace Tessel {

namespace {

char lower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::string_view withoutLineEnd(std::string_view raw)
{
    if (raw.ends_with('\n')) raw.remove_suffix(1);
    while (raw.ends_with('\r'))
        raw.remove_suffix(1);
    return raw;
}

/// Appends `raw` without its folds: a line end with the blank or tab that follows it.
void unfold(std::string& content, std::string_view raw)
{
    for (;;) {
        const auto newline = raw.find('\n');
        content.append(withoutLineEnd(raw.substr(0, newline)));
        if (newline == raw.npos || newline + 1 == raw.size()) return;
        raw.remove_prefix(newline + 2);
    }
}

/// The first `end` outside quotes; npos when there is none.
std::size_t endOutsideQuotes(std::string_view text, char end)
{
    bool isQuoted = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '"')
            isQuoted = !isQuoted;
        else if (!isQuoted && text[i] == end)
            return i;
    }
    return text.npos;
}

/// Where the value's colon stands; npos without one. A quote that is never closed hides nothing.
std::size_t colonOf(std::string_view content)
{
    const auto colon = endOutsideQuotes(content, ':');
    return colon == content.npos ? content.find(':') : colon;
}

/// Without quotes, and with the characters that RFC 6868 writes with a circumflex.
std::string plainParameter(std::string_view written)
{
    std::string plain;
    plain.reserve(written.size());
    for (std::size_t i = 0; i < written.size(); ++i) {
        const char next = i + 1 < written.size() ? written[i + 1] : '\0';
        if (written[i] == '"') continue;
        if (written[i] != '^' || (next != 'n' && next != '^' && next != '\'')) {
            plain += written[i];
            continue;
        }
        plain += next == 'n' ? '\n' : next == '^' ? '^' : '"';
        ++i;
    }
    return plain;
}

/// Calls `visit` with name and written values of each parameter until it returns true.
template <class Visit> void eachParameter(std::string_view content, Visit visit)
{
    const auto colon = colonOf(content);
    auto rest = content.substr(0, colon);
    const auto first = rest.find(';');
    if (first == rest.npos) return;
    rest.remove_prefix(first + 1);
    for (;;) {
        const auto end = endOutsideQuotes(rest, ';');
        const auto text = rest.substr(0, end);
        const auto equals = text.find('=');
        const auto values = equals == text.npos ? std::string_view() : text.substr(equals + 1);
        if (visit(text.substr(0, equals), values) || end == rest.npos) return;
        rest.remove_prefix(end + 1);
    }
}

} // namespace

bool isSameName(std::string_view a, std::string_view b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
        [](char x, char y) { return lower(x) == lower(y); });
}

std::string inCapitals(std::string text)
{
    for (char& c : text)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return text;
}

std::string_view TextLine::content(std::string& buffer) const
{
    if (!record_->isFolded) return withoutLineEnd(raw());
    buffer.clear();
    buffer.reserve(record_->size);
    unfold(buffer, raw());
    return buffer;
}

std::string TextLine::unfolded() const
{
    std::string buffer;
    return std::string(content(buffer));
}

bool TextLine::is(std::string_view name) const
{
    if (record_->nameSize != name.size()) return false;
    if (record_->isNameFolded) return isSameName(this->name(), name);
    // Most names differ in their first letter.
    const bool mayBe = name.empty() || ((text_[record_->begin] ^ name.front()) & ~0x20) == 0;
    return mayBe && isSameName(raw().substr(0, name.size()), name);
}

std::string TextLine::name() const
{
    if (!record_->isNameFolded) return std::string(raw().substr(0, record_->nameSize));
    return unfolded().substr(0, record_->nameSize);
}

std::string TextLine::value() const
{
    std::string buffer;
    return std::string(value(buffer));
}

std::string_view TextLine::value(std::string& buffer) const
{
    const auto line = content(buffer);
    const auto colon = colonOf(line);
    return colon == line.npos ? std::string_view() : line.substr(colon + 1);
}

TextParameters TextLine::parameters() const
{
    std::string buffer;
    TextParameters parameters;
    eachParameter(content(buffer), [&](std::string_view name, std::string_view values) {
        auto& parameter = parameters.emplace_back(TextParameter {std::string(name), {}});
        for (;;) {
            const auto comma = endOutsideQuotes(values, ',');
            parameter.values.push_back(plainParameter(values.substr(0, comma)));
            if (comma == values.npos) return false;
            values.remove_prefix(comma + 1);
        }
    });
    return parameters;
}

std::optional<std::string> TextLine::parameter(std::string_view name) const
{
    std::string buffer;
    std::optional<std::string> found;
    eachParameter(content(buffer), [&](std::string_view written, std::string_view values) {
        if (!isSameName(written, name)) return false;
        found = plainParameter(values.substr(0, endOutsideQuotes(values, ',')));
        return true;
    });
    return found;
}

} // namespace Tessel
