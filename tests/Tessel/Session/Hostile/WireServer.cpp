#include "tests/Tessel/Session/Hostile/WireServer.h"

#include "Tessel/Platform/Foundation/Web/HTTPURLResponse.h"
#include "tests/support/Message.h"

#include <limits>
#include <optional>
#include <thread>
#include <utility>

namespace Tessel::Test {

namespace {

std::string bytesOf(const std::string& head, const std::string& body)
{
    return "HTTP/1.1 " + head + "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n"
        + body;
}

std::string multistatus(const std::string& place, const std::string& properties)
{
    return bytesOf("207 Multi-Status\r\n",
        R"(<d:multistatus xmlns:d="DAV:" xmlns:cs="http://calendarserver.org/ns/"><d:response><d:href>)"
            + place + "</d:href><d:propstat><d:prop>" + properties
            + "</d:prop><d:status>HTTP/1.1 200 OK</d:status></d:propstat></d:response></"
              "d:multistatus>");
}

/// The texts of the elements of the name.
std::vector<std::string> texts(std::string_view body, const std::string& name)
{
    std::vector<std::string> found;
    const auto open = "<" + name + ">";
    for (auto at = body.find(open); at != body.npos; at = body.find(open, at + 1)) {
        const auto start = at + open.size();
        found.emplace_back(body.substr(start, body.find('<', start) - start));
    }
    return found;
}

void replaceAll(std::string& text, std::string_view mark, std::string_view with)
{
    for (auto at = text.find(mark); at != text.npos; at = text.find(mark, at + with.size()))
        text.replace(at, mark.size(), with);
}

} // namespace

WireServer::WireServer()
    : WireServer({.answer = {}, .from = std::numeric_limits<std::size_t>::max()}, {})
{
}

WireServer::WireServer(Fault fault, std::string elsewhere)
    : fault_(std::move(fault))
    , elsewhere_(std::move(elsewhere))
    , server_([this](const URLRequest& request) { return answer(request); })
{
}

ScriptedAnswer WireServer::answer(const URLRequest& request)
{
    const auto [base, path] = splitURL(request.url());
    bool meetsFault = false;
    {
        const std::lock_guard lock(mutex_);
        const auto number = requests_.size();
        meetsFault = number == fault_.from || (fault_.lasts && number > fault_.from);
        requests_.push_back({request.method, path, meetsFault});
    }
    if (!meetsFault) return {.bytes = carryOut(request, base, path)};
    std::this_thread::sleep_for(fault_.pause);
    if (fault_.isCarriedOut) carryOut(request, base, path);
    auto answer = fault_.answer;
    replaceAll(answer.bytes, "{{base}}", base);
    replaceAll(answer.bytes, "{{elsewhere}}", elsewhere_);
    return answer;
}

std::optional<std::string> WireServer::answerOfSharing(
    const URLRequest& request, const std::string& path)
{
    const std::lock_guard lock(mutex_);
    const auto body = request.body.view();
    const auto has = [&](std::string_view text) { return body.find(text) != body.npos; };
    const auto done = bytesOf("204 No Content\r\n", "");
    if (has("allowed-sharing-modes")) {
        std::string invite;
        for (const auto& address : sharees_)
            invite += "<cs:user><d:href>" + address
                + "</d:href><cs:access><cs:read/></cs:access><cs:invite-accepted/></cs:user>";
        return multistatus(path,
            "<cs:allowed-sharing-modes><cs:can-be-shared/></cs:allowed-sharing-modes><cs:invite>"
                + invite + "</cs:invite>");
    }
    if (has("shared-url")) {
        return multistatus("/home/shared/",
            hasSharedCalendar_ ? "<cs:shared-url><d:href>/bob/c/</d:href></cs:shared-url>" : "");
    }
    if (request.method == "POST") {
        hasSharedCalendar_ = hasSharedCalendar_ || has("invite-accepted");
        for (const auto& address : texts(body, "d:href")) {
            if (has("<cs:set>")) sharees_.insert(address);
            if (has("<cs:remove>")) sharees_.erase(address);
        }
        return done;
    }
    if (path == "/notes/") return multistatus("/notes/1.xml", "<d:resourcetype/>");
    if (path != "/notes/1.xml") return std::nullopt;
    if (!hasInvitation_) return bytesOf("404 Not Found\r\n", "");
    hasInvitation_ = request.method != "DELETE";
    if (!hasInvitation_) return done;
    return bytesOf("200 OK\r\n",
        R"(<cs:notification xmlns:d="DAV:" xmlns:cs="http://calendarserver.org/ns/">
<cs:dtstamp>20240101T000000Z</cs:dtstamp><cs:invite-notification><cs:uid>1</cs:uid>
<d:href>mailto:alice@example.com</d:href><cs:access><cs:read/></cs:access>
<cs:hosturl><d:href>/bob/c/</d:href></cs:hosturl></cs:invite-notification></cs:notification>)");
}

std::string WireServer::carryOut(
    URLRequest request, const std::string& base, const std::string& path)
{
    if (auto bytes = answerOfSharing(request, path)) return std::move(*bytes);
    URLRequest asked(FakeCalendarServer::address + path);
    asked.method = request.method;
    for (const auto& [name, value] : request.headers.fields()) {
        auto text = value;
        replaceAll(text, base, FakeCalendarServer::address);
        asked.headers.set(name, text);
    }
    asked.body = std::move(request.body);
    std::string bytes;
    calendars_->send({.request = std::move(asked),
        .completionHandler
        = [&](const Data& data, const std::shared_ptr<const URLResponse>& response, auto...) {
              const auto& http = dynamic_cast<const HTTPURLResponse&>(*response);
              auto head = std::to_string(http.statusCode) + " As It Is\r\n";
              for (const auto& [name, value] : http.headers.fields())
                  head.append(name).append(": ").append(value).append("\r\n");
              bytes = bytesOf(head, std::string(data.view()));
          }});
    return bytes;
}

std::vector<WireServer::Request> WireServer::requests() const
{
    const std::lock_guard lock(mutex_);
    return requests_;
}

bool WireServer::isSharedWith(const std::string& address) const
{
    const std::lock_guard lock(mutex_);
    return sharees_.contains(address);
}

bool WireServer::hasInvitation() const
{
    const std::lock_guard lock(mutex_);
    return hasInvitation_;
}

bool WireServer::hasSharedCalendar() const
{
    const std::lock_guard lock(mutex_);
    return hasSharedCalendar_;
}

} // namespace Tessel::Test
