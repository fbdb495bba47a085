#include "tests/support/FakeCalendarServer.h"

#include "Tessel/Platform/Foundation/Web/HTTPURLResponse.h"
#include "Tessel/Platform/Transport/MNetworkError.h"
#include "Tessel/Platform/Transport/SentTask.h"

#include <algorithm>
#include <cctype>
#include <regex>

namespace Tessel::Test {

namespace {

const std::string home = "/home/";

std::string escaped(const std::string& text, bool escapesCarriageReturns)
{
    std::string result;
    for (const char c : text) {
        if (c == '<') {
            result += "&lt;";
        } else if (c == '&') {
            result += "&amp;";
        } else if (c == '\r' && escapesCarriageReturns) {
            result += "&#13;";
        } else {
            result += c;
        }
    }
    return result;
}

std::string multistatus(const std::string& responses)
{
    return "<d:multistatus xmlns:d=\"DAV:\" xmlns:c=\"urn:ietf:params:xml:ns:caldav\" "
           "xmlns:cs=\"http://calendarserver.org/ns/\">"
        + responses + "</d:multistatus>";
}

std::string response(const std::string& path, const std::string& props)
{
    return "<d:response><d:href>" + path + "</d:href><d:propstat><d:prop>" + props
        + "</d:prop><d:status>HTTP/1.1 200 OK</d:status></d:propstat></d:response>";
}

std::string status(const std::string& path, const std::string& line)
{
    return "<d:response><d:href>" + path + "</d:href><d:status>HTTP/1.1 " + line
        + "</d:status></d:response>";
}

/// The texts of all elements of the name.
std::vector<std::string> texts(const std::string& body, const std::string& name)
{
    std::vector<std::string> found;
    const auto open = std::string(1, '<').append(name).append(1, '>');
    for (auto at = body.find(open); at != std::string::npos; at = body.find(open, at + 1)) {
        const auto start = at + open.size();
        found.push_back(body.substr(start, body.find('<', start) - start));
    }
    return found;
}

bool isHex(char c)
{
    return std::isxdigit(static_cast<unsigned char>(c)) != 0;
}

/// A path in the one spelling in which the server has it.
std::string decoded(const std::string& path)
{
    std::string result;
    for (std::size_t i = 0; i < path.size(); ++i) {
        const bool isEncoded
            = path[i] == '%' && i + 2 < path.size() && isHex(path[i + 1]) && isHex(path[i + 2]);
        result += isEncoded ? static_cast<char>(std::stoi(path.substr(i + 1, 2), nullptr, 16))
                            : path[i];
        if (isEncoded) i += 2;
    }
    return result;
}

std::string pathOf(const std::string& url)
{
    return decoded(url.substr(std::string(FakeCalendarServer::address).size()));
}

} // namespace

int FakeCalendarServer::send(MTask task)
{
    SentTask sent {.task = std::move(task), .number = 1};
    while (true) {
        auto reply = replyTo(sent.task.request);
        if (reply.status == 0) {
            const auto code = reply.isUnreachable ? MNetworkErrorCode::cannotConnect
                                                  : MNetworkErrorCode::connectionLost;
            sent.fail(makeNetworkError(code, "the connection is gone"));
            return 1;
        }
        const auto response = std::make_shared<HTTPURLResponse>(
            sent.task.request.url(), reply.status, reply.headers);
        if (!sent.settle(response, Data(std::move(reply.body)))) return 1;
    }
}

FakeCalendarServer::Reply FakeCalendarServer::replyTo(const URLRequest& request)
{
    Fault fault;
    {
        const std::lock_guard lock(mutex_);
        ++asked_[request.method];
        fault = fault_;
    }
    const auto apply = [&] {
        const std::lock_guard lock(mutex_);
        return answer(request);
    };
    auto instead = fault ? fault(request, apply) : std::nullopt;
    return instead ? std::move(*instead) : apply();
}

void FakeCalendarServer::setFault(Fault fault)
{
    const std::lock_guard lock(mutex_);
    fault_ = std::move(fault);
}

void FakeCalendarServer::addCalendar(const std::string& path)
{
    const std::lock_guard lock(mutex_);
    calendars_.insert(path);
}

void FakeCalendarServer::put(const std::string& path, const std::string& text)
{
    const std::lock_guard lock(mutex_);
    resources_[path] = {text, ++version_};
    removed_.erase(path);
}

void FakeCalendarServer::remove(const std::string& path)
{
    const std::lock_guard lock(mutex_);
    resources_.erase(path);
    removed_[path] = ++version_;
}

std::optional<std::string> FakeCalendarServer::text(const std::string& path) const
{
    const std::lock_guard lock(mutex_);
    const auto found = resources_.find(path);
    return found == resources_.end() ? std::nullopt : std::optional(found->second.text);
}

std::size_t FakeCalendarServer::resourceCount() const
{
    const std::lock_guard lock(mutex_);
    return resources_.size();
}

std::size_t FakeCalendarServer::asked(const std::string& method) const
{
    const std::lock_guard lock(mutex_);
    const auto found = asked_.find(method);
    return found == asked_.end() ? 0 : found->second;
}

void FakeCalendarServer::expireTokens()
{
    const std::lock_guard lock(mutex_);
    oldestToken_ = ++version_;
}

std::string FakeCalendarServer::tag(const std::string& path) const
{
    return std::string(1, '"').append(std::to_string(resources_.at(path).version)).append(1, '"');
}

bool FakeCalendarServer::guards(const URLRequest& request, const std::string& path) const
{
    const bool exists = resources_.contains(path);
    if (request.headers.value("If-None-Match") == "*" && exists) return false;
    const auto match = request.headers.value("If-Match");
    return !match || (exists && tag(path) == *match);
}

FakeCalendarServer::Reply FakeCalendarServer::answer(const URLRequest& request)
{
    const auto path = pathOf(request.url());
    const auto& method = request.method;
    const std::string body(request.body.view());
    if (method == "PROPFIND")
        return list(path, request.headers.value("Depth").value_or("infinity"));
    if (method == "REPORT") return report(path, body);
    if (method == "OPTIONS") {
        Reply reply {.status = 200};
        reply.headers.set("DAV", "1, calendar-access");
        return reply;
    }
    if (method == "GET") {
        if (!resources_.contains(path)) return {.status = 404};
        Reply reply {.status = 200, .body = resources_.at(path).text};
        reply.headers.set("ETag", tag(path));
        return reply;
    }
    if (method == "MKCALENDAR") {
        if (!calendars_.insert(path).second) return {.status = 405};
        return {.status = 201};
    }
    if (method == "PROPPATCH") {
        const std::string body(request.body.view());
        std::smatch name;
        if (std::regex_search(body, name, std::regex("<d:displayname>([^<]*)<")))
            names_[path] = name[1];
        return {.status = 207, .body = multistatus(response(path, ""))};
    }
    if (method == "MOVE") return moveTo(request, path);
    return write(request, path);
}

FakeCalendarServer::Reply FakeCalendarServer::write(
    const URLRequest& request, const std::string& path)
{
    if (calendars_.contains(path) && request.method == "DELETE") {
        calendars_.erase(path);
        std::erase_if(resources_, [&](const auto& each) { return each.first.starts_with(path); });
        return {.status = 204};
    }
    const bool exists = resources_.contains(path);
    if (request.method == "DELETE" && !exists) return {.status = 404};
    if (!guards(request, path)) return {.status = 412};
    if (request.method == "DELETE") {
        resources_.erase(path);
        removed_[path] = ++version_;
        return {.status = 204};
    }
    const std::string text(request.body.view());
    resources_[path] = {rewrite ? rewrite(text) : text, ++version_};
    removed_.erase(path);
    Reply reply {.status = exists ? 204 : 201};
    reply.headers.set("ETag", tag(path));
    return reply;
}

FakeCalendarServer::Reply FakeCalendarServer::moveTo(
    const URLRequest& request, const std::string& path)
{
    const auto to = pathOf(request.headers.value("Destination").value_or(address + path));
    if (!resources_.contains(path)) return {.status = 404};
    if (!guards(request, path) || resources_.contains(to)) return {.status = 412};
    resources_[to] = {resources_.at(path).text, ++version_};
    resources_.erase(path);
    removed_[path] = version_;
    return {.status = 201};
}

int FakeCalendarServer::versionOf(const std::string& calendar) const
{
    int version = oldestToken_;
    for (const auto& [path, stored] : resources_)
        if (path.starts_with(calendar)) version = std::max(version, stored.version);
    for (const auto& [path, when] : removed_)
        if (path.starts_with(calendar)) version = std::max(version, when);
    return version;
}

std::string FakeCalendarServer::describe(const std::string& path) const
{
    if (path == home) {
        return response(path,
            "<d:resourcetype><d:collection/></d:resourcetype><c:calendar-home-set><d:href>" + home
                + "</d:href></c:calendar-home-set>");
    }
    const auto version = std::to_string(versionOf(path));
    auto props = "<d:resourcetype><d:collection/><c:calendar/></d:resourcetype><d:displayname>"
        + (names_.contains(path) ? names_.at(path) : path) + "</d:displayname><cs:getctag>"
        + version + "</cs:getctag>";
    if (hasSyncTokens) props += "<d:sync-token>urn:t:" + version + "</d:sync-token>";
    return response(path, props);
}

FakeCalendarServer::Reply FakeCalendarServer::list(
    const std::string& path, const std::string& depth) const
{
    if (path == "/" || path.starts_with("/.well-known")) {
        return {.status = 207, .body = multistatus(describe(home))};
    }
    if (path != home && !calendars_.contains(path)) {
        return {.status = 404};
    }
    auto responses = describe(path);
    if (depth == "1" && path == home) {
        for (const auto& calendar : calendars_)
            responses += describe(calendar);
    } else if (depth == "1") {
        for (const auto& [resource, stored] : resources_) {
            if (resource.starts_with(path))
                responses += response(
                    resource, "<d:getetag>" + tag(resource) + "</d:getetag><d:resourcetype/>");
        }
    }
    return {.status = 207, .body = multistatus(responses)};
}

FakeCalendarServer::Reply FakeCalendarServer::report(
    const std::string& path, const std::string& body) const
{
    if (body.find("sync-collection") != std::string::npos) {
        const auto tokens = texts(body, "d:sync-token");
        const auto token = tokens.empty() ? std::string() : tokens.front();
        if (token.empty()) return changes(path, 0);
        const bool isOurs = token.starts_with("urn:t:") && token.size() > 6;
        return changes(path, isOurs ? std::stoi(token.substr(6)) : -1);
    }
    std::string responses;
    for (const auto& asked : texts(body, "d:href")) {
        const auto href = decoded(asked);
        const auto found = resources_.find(href);
        responses += found == resources_.end()
            ? status(href, "404 Not Found")
            : response(href,
                "<d:getetag>" + tag(href) + "</d:getetag><c:calendar-data>"
                    + escaped(found->second.text, escapesCarriageReturns) + "</c:calendar-data>");
    }
    return {.status = 207, .body = multistatus(responses)};
}

FakeCalendarServer::Reply FakeCalendarServer::changes(const std::string& path, int since) const
{
    if (since < oldestToken_) {
        return {.status = 403, .body = "<d:error xmlns:d=\"DAV:\"><d:valid-sync-token/></d:error>"};
    }
    std::map<int, std::string> found;
    for (const auto& [resource, stored] : resources_) {
        if (resource.starts_with(path) && stored.version > since)
            found[stored.version]
                = response(resource, "<d:getetag>" + tag(resource) + "</d:getetag>");
    }
    for (const auto& [resource, version] : removed_) {
        if (resource.starts_with(path) && version > since)
            found[version] = status(resource, "404 Not Found");
    }
    std::string responses;
    int last = std::max(since, versionOf(path));
    std::size_t count = 0;
    for (const auto& [version, text] : found) {
        if (count++ == page) {
            responses += status(path, "507 Insufficient Storage");
            break;
        }
        responses += text;
        last = version;
    }
    return {.status = 207,
        .body = multistatus(
            responses + "<d:sync-token>urn:t:" + std::to_string(last) + "</d:sync-token>")};
}

} // namespace Tessel::Test
