#include "Tessel/CaldavLibrary/Extensions/MemberURL.h"
#include "Tessel/Platform/Foundation/Web/Origin.h"
#include "Tessel/Platform/Foundation/Web/URL.h"
#include "fuzz/FuzzTarget.h"

#include <curl/curl.h>

#include <algorithm>
#include <memory>

namespace Tessel::Fuzz {

namespace {

int hexDigit(char c)
{
    const auto at = std::string_view("0123456789ABCDEFabcdef").find(c);
    if (at == std::string_view::npos) return -1;
    return int(at < 16 ? at : at - 6);
}

std::string decoded(std::string_view url)
{
    std::string text;
    for (std::size_t i = 0; i < url.size(); ++i) {
        const bool isEncoded = url[i] == '%' && i + 2 < url.size() && hexDigit(url[i + 1]) >= 0
            && hexDigit(url[i + 2]) >= 0;
        text += isEncoded ? char(hexDigit(url[i + 1]) * 16 + hexDigit(url[i + 2])) : url[i];
        if (isEncoded) i += 2;
    }
    return text;
}

std::string_view authorityOf(std::string_view url)
{
    const auto slashes = url.find("//");
    const auto rest = url.substr(slashes == url.npos ? 0 : slashes + 2);
    return rest.substr(0, rest.find_first_of("/?#"));
}

std::string part(CURLU* url, CURLUPart which)
{
    char* text = nullptr;
    if (curl_url_get(url, which, &text, CURLU_DEFAULT_PORT)) return {};
    const std::unique_ptr<char, decltype(&curl_free)> owner(text, curl_free);
    return text;
}

/// An origin is one itself, and where libcurl connects to. Addresses, which libcurl writes anew,
/// and names with an escape, which it takes out, are left aside.
void requireOrigin(const std::string& url)
{
    const auto origin = Origin::of(url);
    if (!origin) return;
    require(Origin::of(origin->text()) == origin, "an origin has another: " + origin->text());

    const std::unique_ptr<CURLU, decltype(&curl_url_cleanup)> handle(curl_url(), curl_url_cleanup);
    if (curl_url_set(handle.get(), CURLUPART_URL, url.c_str(), 0)) return;
    auto host = part(handle.get(), CURLUPART_HOST);
    if (host.ends_with('.')) host.pop_back();
    std::transform(host.begin(), host.end(), host.begin(),
        [](char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; });
    const auto last = host.substr(host.rfind('.') + 1);
    const bool isName = last[0] >= 'a' && last[0] <= 'z' && url.find('%') == url.npos;
    require(!isName
            || part(handle.get(), CURLUPART_SCHEME) + "://" + host + ":"
                    + part(handle.get(), CURLUPART_PORT)
                == origin->text(),
        "libcurl connects elsewhere than to " + origin->text());
}

/// Encoding says the same in the characters of a URL, and changes nothing the second time. An
/// origin is where the transport connects to, a log never shows the password, and a member stands
/// directly in its collection.
const Target url("url", [](std::string_view input) {
    if (const auto encoded = encodedURL(input)) {
        require(std::all_of(encoded->begin(), encoded->end(),
                    [](char c) { return c > ' ' && c < 0x7F && c != '"' && c != '<' && c != '>'; }),
            "a URL holds what it cannot: " + *encoded);
        require(encodedURL(*encoded) == encoded, "encoding again changes " + *encoded);
        require(decoded(*encoded) == decoded(input), "encoding changes what is said");
        requireOrigin(*encoded);
    }
    const auto logged = withoutUserInfo(input);
    require(authorityOf(logged).find('@') == std::string_view::npos, "a user is logged: " + logged);

    const auto half = input.size() / 2;
    const auto collection = input.substr(0, half);
    const auto member = memberURL(collection, input.substr(half));
    const auto start = collection.size() + (collection.ends_with('/') ? 0 : 1);
    require(member.starts_with(collection) && member.find('/', start) == member.npos,
        "a member of another collection: " + member);
});

} // namespace

} // namespace Tessel::Fuzz
