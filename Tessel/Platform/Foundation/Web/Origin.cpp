#include "Tessel/Platform/Foundation/Web/Origin.h"

#include "Tessel/Platform/Foundation/Text/ASCII.h"
#include "Tessel/Platform/Foundation/Web/URL.h"

#include <arpa/inet.h>

#include <algorithm>
#include <charconv>

namespace Tessel {

namespace {

constexpr AlphanumericsAnd nameOctets("-._~%");
constexpr AlphanumericsAnd authorityOctets("-._~%!$&'()*+,;=:[]@");

/// Cuts "http://" or "https://" off the URL; empty when it has neither.
std::string_view cutScheme(std::string_view& url)
{
    for (const std::string_view scheme : {"https://", "http://"}) {
        const auto start = url.substr(0, scheme.size());
        if (!std::equal(start.begin(), start.end(), scheme.begin(), scheme.end(),
                [](char a, char b) { return lower(a) == b; }))
            continue;
        url.remove_prefix(scheme.size());
        return scheme;
    }
    return {};
}

/// Appends an address such as "::1" or "fe80::1%25eth0"; false when it is none.
bool appendAddress(std::string& text, std::string_view literal)
{
    const auto zone = std::min(literal.find('%'), literal.size());
    in6_addr address {};
    if (inet_pton(AF_INET6, std::string(literal.substr(0, zone)).c_str(), &address) != 1)
        return false;
    char written[INET6_ADDRSTRLEN];
    text.append("[").append(inet_ntop(AF_INET6, &address, written, sizeof written));
    text.append(literal.substr(zone)).append("]");
    return true;
}

bool appendName(std::string& text, std::string_view host)
{
    if (host.ends_with('.')) host.remove_suffix(1);
    if (host.empty() || host.ends_with('.') || !nameOctets.containsAll(host)) return false;
    std::transform(host.begin(), host.end(), std::back_inserter(text), lower);
    return true;
}

/// The port after a host, such as ":443"; an empty one is the scheme's.
std::optional<unsigned> portOf(std::string_view text, unsigned standard)
{
    if (text.empty() || text == ":") return standard;
    unsigned port = 0;
    const auto* const last = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data() + 1, last, port);
    if (text[0] != ':' || error != std::errc() || end != last || port == 0 || port > 65535)
        return std::nullopt;
    return port;
}

} // namespace

std::optional<Origin> Origin::of(std::string_view url)
{
    const auto scheme = cutScheme(url);
    if (scheme.empty()) return std::nullopt;
    auto authority = url.substr(0, url.find_first_of("/?#"));
    if (!authorityOctets.containsAll(authority)) return std::nullopt;
    if (const auto at = authority.find('@'); at != std::string_view::npos) {
        authority.remove_prefix(at + 1);
        if (authority.find('@') != std::string_view::npos) return std::nullopt;
    }

    std::string text;
    text.reserve(scheme.size() + authority.size() + std::string_view(":65535").size());
    text = scheme;
    const bool isAddress = authority.starts_with('[');
    const auto hostEnd = std::min(authority.find(isAddress ? ']' : ':'), authority.size());
    const bool isHost = isAddress ? appendAddress(text, authority.substr(1, hostEnd - 1))
                                  : appendName(text, authority.substr(0, hostEnd));
    if (!isHost) return std::nullopt;
    authority.remove_prefix(std::min(hostEnd + (isAddress ? 1 : 0), authority.size()));

    const auto port = portOf(authority, scheme == "https://" ? 443 : 80);
    if (!port) return std::nullopt;
    text.append(":").append(std::to_string(*port));
    return Origin(std::move(text));
}

std::optional<Origin> Origin::ofServer(std::string_view text)
{
    const bool isURL = text.find("://") != std::string_view::npos;
    const auto url = encodedURL(isURL ? std::string(text) : "https://" + std::string(text));
    return url ? of(*url) : std::nullopt;
}

} // namespace Tessel
