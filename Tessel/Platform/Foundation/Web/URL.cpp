#include "Tessel/Platform/Foundation/Web/URL.h"

#include "Tessel/Platform/Foundation/Text/ASCII.h"

#include <algorithm>
#include <charconv>

namespace Tessel {

namespace {

constexpr AlphanumericsAnd heldAsTheyAre("!#$&'()*+,-./:;=?@[]_~");
constexpr AlphanumericsAnd schemeOctets("+-.");

bool isHex(char c)
{
    return isDigit(c) || (lower(c) >= 'a' && lower(c) <= 'f');
}

bool isPort(std::string_view text)
{
    unsigned port = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    return text.empty()
        || (error == std::errc() && end == text.data() + text.size() && port <= 65535);
}

bool isIPLiteral(std::string_view text)
{
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
        return isHex(c) || c == ':' || c == '.' || c == '%' || c == 'v' || c == '-' || isAlpha(c);
    }) && text.find(':') != std::string_view::npos;
}

bool isAuthority(std::string_view authority)
{
    if (const auto at = authority.rfind('@'); at != std::string_view::npos) {
        authority.remove_prefix(at + 1);
    }
    if (authority.starts_with('[')) {
        const auto end = authority.find(']');
        if (end == std::string_view::npos || !isIPLiteral(authority.substr(1, end - 1)))
            return false;
        authority.remove_prefix(end + 1);
        return authority.empty() || (authority[0] == ':' && isPort(authority.substr(1)));
    }
    const auto colon = authority.find(':');
    const auto host = authority.substr(0, colon);
    if (host.find_first_of("[]") != std::string_view::npos) return false;
    return colon == std::string_view::npos || isPort(authority.substr(colon + 1));
}

bool isScheme(std::string_view scheme)
{
    return !scheme.empty() && isAlpha(scheme[0]) && schemeOctets.containsAll(scheme);
}

bool isURL(std::string_view url)
{
    if (url.empty()) return false;
    const auto slashes = url.find("://");
    const auto pathStart = url.find_first_of("/?#");
    // A colon before the first slash ends a scheme; "host:80/path" reads as one too and is left
    // to the transport, which supports no such scheme.
    if (slashes == std::string_view::npos || pathStart <= slashes) {
        return !url.starts_with(':');
    }
    if (!isScheme(url.substr(0, slashes))) return false;
    const auto rest = url.substr(slashes + 3);
    return isAuthority(rest.substr(0, rest.find_first_of("/?#")));
}

} // namespace

std::optional<std::string> encodedURL(std::string_view text)
{
    constexpr char digits[] = "0123456789ABCDEF";
    if (heldAsTheyAre.containsAll(text))
        return isURL(text) ? std::optional<std::string>(text) : std::nullopt;

    std::string url;
    url.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        const bool encoded
            = c == '%' && i + 2 < text.size() && isHex(text[i + 1]) && isHex(text[i + 2]);
        if (encoded || heldAsTheyAre.contains(c)) {
            url += c;
        } else {
            const auto octet = static_cast<unsigned char>(c);
            url += {'%', digits[octet >> 4], digits[octet & 15]};
        }
    }
    if (!isURL(url)) return std::nullopt;
    return url;
}

std::string withoutUserInfo(std::string_view url)
{
    const auto slashes = url.find("//");
    const auto start = slashes == std::string_view::npos ? 0 : slashes + 2;
    const auto end = std::min(url.find_first_of("/?#", start), url.size());
    const auto at = url.substr(0, end).rfind('@');
    std::string text(url);
    if (at != std::string_view::npos && at >= start) text.erase(start, at + 1 - start);
    return text;
}

} // namespace Tessel
