#include "Tessel/Session/Exchange/Href.h"

#include <algorithm>

namespace Tessel {

namespace {

bool isUnreserved(unsigned char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-'
        || c == '.' || c == '_' || c == '~';
}

/// Besides, what servers write plain or encoded as they like: Radicale and sabre/dav differ in "@".
bool isPlain(unsigned char c)
{
    return isUnreserved(c)
        || std::string_view("@:!$&'()*+,;=").find(char(c)) != std::string_view::npos;
}

int hexDigit(char c)
{
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

void appendEncoded(std::string& text, unsigned char byte)
{
    constexpr char digits[] = "0123456789ABCDEF";
    text += '%';
    text += digits[byte >> 4];
    text += digits[byte & 15];
}

/// Where the path of an absolute URL begins.
std::size_t pathOf(std::string_view url)
{
    const auto scheme = url.find("://");
    if (scheme == url.npos) return 0;
    const auto path = url.find_first_of("/?#", scheme + 3);
    return path == url.npos ? url.size() : path;
}

bool hasScheme(std::string_view text)
{
    const auto colon = text.find("://");
    return colon != text.npos && text.find('/') > colon;
}

} // namespace

std::string resolved(std::string_view base, std::string_view href)
{
    if (hasScheme(href)) return std::string(href);
    const auto path = pathOf(base);
    if (href.starts_with("//")) return std::string(base.substr(0, base.find(':') + 1)).append(href);
    if (href.starts_with('/')) return std::string(base.substr(0, path)).append(href);
    const auto query = base.find_first_of("?#", path);
    const auto folder = base.substr(0, query).rfind('/');
    if (folder == base.npos || folder < path) return std::string(base).append("/").append(href);
    return std::string(base.substr(0, folder + 1)).append(href);
}

std::string baseOf(const Origin& origin)
{
    std::string_view text = origin.text();
    const std::string_view port = text.starts_with("https:") ? ":443" : ":80";
    if (text.ends_with(port)) text.remove_suffix(port.size());
    return std::string(text);
}

std::string placeOf(const Origin& account, std::string_view url)
{
    if (Origin::of(url) != account) return std::string(url);
    const auto path = url.substr(pathOf(url));
    return std::string(path.starts_with('/') ? path : "/");
}

std::string normalPath(std::string_view url)
{
    if (hasScheme(url)) url.remove_prefix(pathOf(url));
    const auto isOther = [](unsigned char c) { return c == '%' || c <= ' ' || c >= 0x7F; };
    const auto asItIs = std::size_t(std::find_if(url.begin(), url.end(), isOther) - url.begin());
    std::string path;
    path.reserve(url.size() + 1);
    path.append(url, 0, asItIs);
    for (auto i = asItIs; i < url.size(); ++i) {
        const auto byte = static_cast<unsigned char>(url[i]);
        const int high = i + 2 < url.size() ? hexDigit(url[i + 1]) : -1;
        const int low = i + 2 < url.size() ? hexDigit(url[i + 2]) : -1;
        if (byte == '%' && high >= 0 && low >= 0) {
            const auto decoded = static_cast<unsigned char>(high * 16 + low);
            if (isPlain(decoded)) {
                path += static_cast<char>(decoded);
            } else {
                appendEncoded(path, decoded);
            }
            i += 2;
        } else if (byte <= ' ' || byte >= 0x7F) {
            appendEncoded(path, byte);
        } else {
            path += url[i];
        }
    }
    return path.empty() ? "/" : path;
}

std::vector<std::string> spellingsOf(const std::string& calendar, const std::string& place)
{
    const auto folder = calendar.ends_with('/') ? calendar : calendar + "/";
    const auto plain = normalPath(place.substr(place.rfind('/') + 1));
    std::string encoded;
    for (const char c : plain) {
        if (c == '%')
            encoded += c;
        else
            encoded += encodedSegment({&c, 1});
    }
    std::vector<std::string> spellings {place};
    for (const auto& name : {plain, encoded}) {
        auto spelling = folder + name;
        if (spelling != place && spelling != spellings.back())
            spellings.push_back(std::move(spelling));
    }
    return spellings;
}

std::string encodedSegment(std::string_view text)
{
    std::string segment;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (isUnreserved(byte)) {
            segment += c;
        } else {
            appendEncoded(segment, byte);
        }
    }
    return segment;
}

} // namespace Tessel
