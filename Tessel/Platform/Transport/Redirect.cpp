#include "Tessel/Platform/Transport/Redirect.h"

#include "Tessel/Platform/Foundation/Web/Origin.h"
#include "Tessel/Platform/Foundation/Web/URL.h"
#include "Tessel/Platform/Transport/MNetworkError.h"

#include <curl/curl.h>

#include <memory>

namespace Tessel {

namespace {

using URLHandle = std::unique_ptr<CURLU, decltype(&curl_url_cleanup)>;

URLHandle parsed(const std::string& url)
{
    URLHandle handle(curl_url(), curl_url_cleanup);
    if (!handle || curl_url_set(handle.get(), CURLUPART_URL, url.c_str(), 0))
        return {nullptr, curl_url_cleanup};
    return handle;
}

std::string part(const URLHandle& url, CURLUPart which)
{
    char* text = nullptr;
    if (curl_url_get(url.get(), which, &text, CURLU_DEFAULT_PORT)) return {};
    const std::unique_ptr<char, decltype(&curl_free)> owner(text, curl_free);
    return text;
}

bool sameOrigin(const std::string& a, const std::string& b)
{
    const auto origin = Origin::of(a);
    return origin && origin == Origin::of(b);
}

bool isRedirect(int status)
{
    return status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
}

Error unsafe(std::string description)
{
    return makeNetworkError(MNetworkErrorCode::unsafeRedirect, std::move(description));
}

} // namespace

URLRequest withURL(const URLRequest& request, std::string_view url)
{
    URLRequest result(url);
    result.method = request.method;
    result.headers = request.headers;
    result.body = request.body;
    result.timeoutInterval = request.timeoutInterval;
    result.cachePolicy = request.cachePolicy;
    return result;
}

std::variant<std::monostate, URLRequest, Error> redirected(
    const URLRequest& request, const HTTPURLResponse& answer)
{
    const auto location = answer.headers.value("Location");
    if (!isRedirect(answer.statusCode) || !location || location->empty()) return {};

    const auto reference = encodedURL(*location);
    const auto source = parsed(request.url());
    const auto target = parsed(request.url());
    if (!reference || !source || !target
        || curl_url_set(target.get(), CURLUPART_URL, reference->c_str(), 0)
        || curl_url_set(target.get(), CURLUPART_FRAGMENT, nullptr, 0)) {
        return unsafe("The server redirects to an address that is none.");
    }
    char* text = nullptr;
    if (curl_url_get(target.get(), CURLUPART_URL, &text, 0)) {
        return unsafe("The server redirects to an address that is none.");
    }
    const std::unique_ptr<char, decltype(&curl_free)> owner(text, curl_free);
    const auto url = encodedURL(text);
    if (!url) return unsafe("The server redirects to an address that is none.");

    const auto scheme = part(target, CURLUPART_SCHEME);
    if (scheme != "https" && scheme != "http") {
        return unsafe("The server redirects to something else than HTTP.");
    }
    if (scheme == "http" && part(source, CURLUPART_SCHEME) == "https") {
        return unsafe("The server redirects from https to http.");
    }
    auto next = withURL(request, *url);
    if (!sameOrigin(request.url(), *url)) {
        next.headers.remove("Authorization");
        next.headers.remove("Cookie");
    }
    return next;
}

URLRequest asRetrieval(const URLRequest& request)
{
    auto retrieval = request;
    if (retrieval.method != "HEAD") retrieval.method = "GET";
    retrieval.body = {};
    retrieval.headers.remove("Content-Type");
    retrieval.headers.remove("Content-Encoding");
    retrieval.headers.remove("Content-Length");
    return retrieval;
}

} // namespace Tessel
