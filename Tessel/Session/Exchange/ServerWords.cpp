#include "Tessel/Session/Exchange/ServerWords.h"

#include "Tessel/Platform/XML/GDataXMLDocument.h"

#include <algorithm>
#include <charconv>
#include <ctime>
#include <iomanip>
#include <locale>
#include <sstream>

namespace Tessel {

namespace {

/// What is read of a body to find its words.
constexpr std::size_t mostBytes = 64 * 1024;

bool startsCharacter(char c)
{
    return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
}

/// A page without its tags. Scripts and styles do not concern a person.
std::string withoutTags(std::string_view page)
{
    std::string text;
    while (!page.empty()) {
        const auto tag = page.find('<');
        text.append(page.substr(0, tag)).push_back(' ');
        if (tag == page.npos) break;
        page.remove_prefix(tag);
        auto end = page.find('>');
        for (const std::string_view element : {"script", "style"}) {
            if (!page.substr(1).starts_with(element)) continue;
            const auto closing = page.find("</" + std::string(element));
            end = closing == page.npos ? page.npos : page.find('>', closing);
        }
        if (end == page.npos) break;
        page.remove_prefix(end + 1);
    }
    return text;
}

} // namespace

std::string onOneLine(std::string_view text, std::size_t mostCharacters)
{
    std::string line;
    std::size_t characters = 0;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        const bool isBlank = byte <= ' ' || byte == 0x7F;
        if (isBlank && (line.empty() || line.back() == ' ')) continue;
        if (startsCharacter(c) && ++characters > mostCharacters) break;
        line.push_back(isBlank ? ' ' : c);
    }
    while (line.ends_with(' '))
        line.pop_back();
    return line;
}

ServerWords ServerWords::of(const Answer& answer)
{
    const auto body = answer.body.view();
    const auto start = body.find_first_not_of(" \t\r\n\xEF\xBB\xBF");
    if (start == body.npos) return {};
    if (body[start] != '<') return {"", onOneLine(body.substr(0, mostBytes))};

    Error error;
    const auto document = body.size() <= mostBytes ? GDataXMLDocument::parse(body, error) : nullptr;
    if (!document) return {"", onOneLine(withoutTags(body.substr(0, mostBytes)))};

    ServerWords words;
    const auto& root = document->rootElement();
    if (root.URI() == "DAV:" && root.name() == "error") {
        for (const auto& child : root.children()) {
            // sabre/dav tells its own exception first, in its own namespace.
            const bool isCondition
                = child.URI() == "DAV:" || child.URI().starts_with("urn:ietf:params:xml:ns:");
            if (words.condition.empty() && isCondition) words.condition = child.name();
        }
    }
    words.text = onOneLine(withoutTags(body));
    return words;
}

std::optional<std::chrono::seconds> retryAfter(const HTTPHeaders& headers)
{
    constexpr std::chrono::seconds day {86'400};
    const auto value = headers.value("Retry-After");
    if (!value) return std::nullopt;
    const auto end = value->data() + value->size();
    unsigned long seconds = 0;
    if (const auto read = std::from_chars(value->data(), end, seconds);
        read.ec == std::errc() && read.ptr == end)
        return std::min(day, std::chrono::seconds(std::min(seconds, 86'400ul)));

    std::tm moment {};
    std::istringstream stream(*value);
    stream.imbue(std::locale::classic());
    stream >> std::get_time(&moment, "%a, %d %b %Y %H:%M:%S GMT");
    if (stream.fail()) return std::nullopt;
    const auto pause = std::chrono::seconds(timegm(&moment) - std::time(nullptr));
    return std::clamp(pause, std::chrono::seconds(0), day);
}

} // namespace Tessel
