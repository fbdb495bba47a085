#include "Tessel/Platform/Transport/Redirect.h"
#include "fuzz/FuzzTarget.h"

#include <algorithm>

namespace Tessel::Fuzz {

namespace {

constexpr std::string_view sources[] = {
    "https://cal.example.com/dav/home/",
    "https://cal.example.com:8443/dav/home/?a#b",
    "http://127.0.0.1:5232/alice/",
    "http://[::1]/alice",
};

/// Scheme and authority as the URL spells them.
std::string_view spelledOrigin(std::string_view url)
{
    return url.substr(0, url.find_first_of("/?#\\", url.find("://") + 3));
}

/// Scheme, host and port, taken apart by hand.
std::string originOf(std::string_view url)
{
    const auto spelled = spelledOrigin(url);
    const auto start = spelled.find("://") + 3;
    const auto user = spelled.rfind('@');
    std::string origin(spelled.substr(0, start));
    origin += spelled.substr(user == spelled.npos ? start : user + 1);
    std::transform(origin.begin(), origin.end(), origin.begin(),
        [](char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; });
    std::string_view rest = origin;
    const auto dropEnd = [&](std::string_view end) {
        if (rest.ends_with(end)) rest.remove_suffix(end.size());
    };
    dropEnd(origin.starts_with("https") ? ":443" : ":80");
    dropEnd(":");
    // The dot that ends a name in full.
    dropEnd(".");
    const auto dot = rest.find(".:", start);
    if (dot == rest.npos) return std::string(rest);
    return std::string(rest.substr(0, dot)).append(rest.substr(dot + 1));
}

URLRequest requestTo(std::string_view url)
{
    URLRequest request(url);
    request.method = "PROPFIND";
    request.headers.set("authorization", "Basic dTpw");
    request.headers.set("Cookie", "a=b");
    request.headers.set("Depth", "0");
    request.body = Data(std::string("<propfind/>"));
    return request;
}

/// A redirect is followed over HTTP only, never from https to http, as the same request, and with
/// its credentials only at the same origin. The first byte chooses where it comes from, the second
/// the status.
const Target redirect("redirect", [](std::string_view input) {
    if (input.size() < 2) return;
    constexpr int statuses[] = {200, 300, 301, 302, 303, 304, 307, 308};
    const auto request = requestTo(sources[input[0] & 3]);
    HTTPHeaders headers;
    headers.set("Location", input.substr(2));
    const HTTPURLResponse answer(request.url(), statuses[input[1] & 7], headers);

    std::variant<std::monostate, URLRequest, Error> result;
    endsOrStopsFor({}, [&] { result = redirected(request, answer); });
    const auto* const next = std::get_if<URLRequest>(&result);
    if (!next) return;

    const auto from = originOf(request.url()), to = originOf(next->url());
    require(to.starts_with("https://") || (to.starts_with("http://") && from.starts_with("http:")),
        "a redirect leads to " + next->url());
    require(next->url().find('#') == std::string::npos, "a fragment is sent");
    const bool hasCredentials
        = next->headers.value("Authorization") || next->headers.value("Cookie");
    require(!hasCredentials || from == to, "credentials go from " + from + " to " + to);
    require(hasCredentials || spelledOrigin(request.url()) != spelledOrigin(next->url()),
        "credentials are lost at " + to);
    require(next->method == request.method && next->body == request.body
            && next->headers.value("Depth") == "0",
        "a redirect changes the request");

    const auto retrieval = asRetrieval(*next);
    require(retrieval.method == "GET" && retrieval.body.isEmpty(), "a retrieval has a body");
});

} // namespace

} // namespace Tessel::Fuzz
