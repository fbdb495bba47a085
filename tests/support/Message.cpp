#include "tests/support/Message.h"

#include <algorithm>
#include <sstream>

namespace Tessel::Test {

namespace {

HTTPHeaders parseFields(std::istream& lines)
{
    HTTPHeaders headers;
    std::string line;
    while (std::getline(lines, line) && line != "\r") {
        const auto colon = line.find(':');
        const auto start = std::min(line.find_first_not_of(' ', colon + 1), line.size());
        headers.add(line.substr(0, colon), line.substr(start, line.find('\r') - start));
    }
    return headers;
}

std::string bodyOf(const std::string& bytes)
{
    return bytes.substr(std::min(bytes.find("\r\n\r\n") + 4, bytes.size()));
}

} // namespace

URLRequest parseRequest(std::string_view scheme, const std::string& bytes)
{
    std::istringstream lines(bytes);
    std::string method;
    std::string path;
    std::string rest;
    lines >> method >> path;
    std::getline(lines, rest);
    auto headers = parseFields(lines);
    // A proxy is asked for a whole URL.
    const bool isWhole = path.starts_with("http://");
    const auto base = std::string(scheme) + "://" + headers.value("Host").value_or("unknown");
    URLRequest request(isWhole ? path : base + path);
    request.method = method;
    request.headers = std::move(headers);
    request.body = bodyOf(bytes);
    return request;
}

std::pair<std::shared_ptr<const HTTPURLResponse>, Data> parseAnswer(
    const std::string& url, const std::string& bytes)
{
    std::istringstream lines(bytes);
    std::string version;
    int status = 0;
    std::string reason;
    lines >> version >> status;
    std::getline(lines, reason);
    return {
        std::make_shared<const HTTPURLResponse>(url, status, parseFields(lines)), bodyOf(bytes)};
}

std::pair<std::string, std::string> splitURL(const std::string& url)
{
    const auto slashes = url.find("://");
    if (slashes == std::string::npos) return {"", url};
    const auto path = std::min(url.find_first_of("/?#", slashes + 3), url.size());
    return {url.substr(0, path), path < url.size() ? url.substr(path) : "/"};
}

} // namespace Tessel::Test
