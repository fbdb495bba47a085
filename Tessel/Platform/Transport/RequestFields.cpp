#include "Tessel/Platform/Transport/RequestFields.h"

#include "Tessel/Platform/Foundation/Text/ASCII.h"
#include "Tessel/Platform/Transport/MNetworkError.h"
#include "Tessel/Platform/Transport/Redirect.h"

#include <curl/curl.h>

#include <string>
#include <string_view>

namespace Tessel {

namespace {

constexpr AlphanumericsAnd tokenOctets("!#$%&'*+-.^_`|~");
constexpr AlphanumericsAnd unreservedOctets("-._~");

bool isToken(std::string_view text)
{
    return !text.empty() && tokenOctets.containsAll(text);
}

bool breaksLine(std::string_view value)
{
    return value.find_first_of(std::string_view("\r\n\0", 3)) != std::string_view::npos;
}

std::string percentEncoded(std::string_view text)
{
    constexpr char digits[] = "0123456789ABCDEF";
    std::string encoded;
    for (const char c : text) {
        if (unreservedOctets.contains(c)) {
            encoded += c;
        } else {
            const auto octet = static_cast<unsigned char>(c);
            encoded += {'%', digits[octet >> 4], digits[octet & 15]};
        }
    }
    return encoded;
}

std::string withQuery(std::string_view url, const std::map<std::string, std::string>& items)
{
    std::string result(url.substr(0, url.find('#')));
    char separator = result.find('?') == std::string::npos ? '?' : '&';
    for (const auto& [name, value] : items) {
        result.append(1, separator)
            .append(percentEncoded(name))
            .append("=")
            .append(percentEncoded(value));
        separator = '&';
    }
    return result;
}

/// Whether `url` is one of `scheme` with a host. libcurl would skip a third slash and take the
/// first part of the path for the host.
bool names(const std::string& url, std::string_view scheme)
{
    return curl_strnequal(url.c_str(), scheme.data(), scheme.size()) && url[scheme.size()] != '/';
}

Error invalid(std::string description)
{
    return makeNetworkError(MNetworkErrorCode::invalidRequest, std::move(description));
}

} // namespace

void mergeIntoRequest(MTask& task)
{
    if (!task.params.empty()) {
        task.request = withURL(task.request, withQuery(task.request.url(), task.params));
    }
    for (const auto& [name, value] : task.headerParams)
        task.request.headers.set(name, value);
    if (task.authorization) task.request.headers.set("Authorization", *task.authorization);
}

std::optional<Error> refusal(const URLRequest& request)
{
    if (!names(request.url(), "http://") && !names(request.url(), "https://")) {
        return invalid("The address is not one of HTTP.");
    }
    if (!isToken(request.method)) return invalid("The request's method is none.");
    for (const auto& [name, value] : request.headers.fields()) {
        if (!isToken(name)) return invalid("The name of a header field is none.");
        if (breaksLine(value)) return invalid("The header field " + name + " holds a line end.");
    }
    return std::nullopt;
}

} // namespace Tessel
