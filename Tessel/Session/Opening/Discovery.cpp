#include "Tessel/Session/Opening/Discovery.h"

#include "Tessel/Session/Exchange/AnswerFailure.h"
#include "Tessel/Session/Exchange/Href.h"

#include <algorithm>
#include <functional>
#include <sstream>

namespace Tessel {

namespace {

using namespace XMLNamespace;
constexpr std::string_view what = "The account could not be found";

constexpr const char* body = R"(<?xml version="1.0" encoding="utf-8"?>
<d:propfind xmlns:d="DAV:" xmlns:c="urn:ietf:params:xml:ns:caldav" xmlns:cs="http://calendarserver.org/ns/">
<d:prop><d:current-user-principal/><d:resourcetype/><c:calendar-home-set/><c:calendar-user-address-set/>
<c:schedule-outbox-URL/><cs:notification-URL/></d:prop></d:propfind>)";

std::vector<std::string> hrefs(const GDataXMLElement& element)
{
    std::vector<std::string> found;
    for (const auto& href : element.elementsForLocalName("href", dav)) {
        if (auto text = href.stringValue().value_or(std::string()); !text.empty())
            found.push_back(std::move(text));
    }
    return found;
}

std::vector<std::string> words(const std::string& list)
{
    std::vector<std::string> found;
    std::istringstream stream(list);
    for (std::string word; std::getline(stream, word, ',');) {
        word.erase(0, word.find_first_not_of(' '));
        word.erase(word.find_last_not_of(' ') + 1);
        if (!word.empty()) found.push_back(std::move(word));
    }
    return found;
}

} // namespace

bool AccountPlace::offers(const std::string& feature) const
{
    return std::find(features.begin(), features.end(), feature) != features.end();
}

Discovery::Discovery(std::shared_ptr<Channel> channel, std::vector<std::string> starts, Found call)
    : channel_(std::move(channel))
    , starts_(starts.begin(), starts.end())
    , call_(std::move(call))
{
}

std::vector<std::string> Discovery::starts(const ServerAddress& address)
{
    std::vector<std::string> starts;
    if (!address.path.empty()) starts.push_back(address.base + address.path);
    starts.push_back(address.base + "/.well-known/caldav");
    starts.push_back(address.base + "/");
    return starts;
}

void Discovery::start()
{
    channel_->step(call_, [self = shared_from_this()] { self->tryNext(); });
}

void Discovery::tryNext()
{
    if (starts_.empty()) return giveUp();
    const auto url = starts_.front();
    starts_.pop_front();
    place_ = {};
    collection_.clear();
    ask(url, &Discovery::readStart);
}

void Discovery::ask(
    const std::string& url, void (Discovery::*next)(const std::string&, Result<Answer>))
{
    // The same place again, by a principal that names itself or a redirect in a circle, brings
    // nothing new.
    if (!asked_.insert(url).second) return tryNext();
    channel_->send({.method = "PROPFIND",
                       .url = url,
                       .fields = {{"Depth", "0"}, {"Content-Type", davType}},
                       .body = body,
                       .what = std::string(what)},
        call_, [self = shared_from_this(), url, next](Result<Answer> result) {
            (self.get()->*next)(url, std::move(result));
        });
}

void Discovery::readStart(const std::string& url, Result<Answer> result)
{
    if (!result) return isFinal(result.failure()) ? giveUp() : tryNext();
    auto read = DavAnswer::read(result.value(), channel_->origin(), what);
    if (!read) return isFinal(read.failure()) ? giveUp() : tryNext();
    for (const auto& response : read.value().responses) {
        note(response);
        // Some servers show the members of a collection although only it was asked for.
        const bool isAsked = normalPath(response.url) == normalPath(result.value().url);
        if (response.isCollection() && isAsked) collection_ = response.url;
        // A server that lets nobody log in here says so with 200 and <unauthenticated/>.
        if (const auto user = response.property("current-user-principal", dav);
            user && user->first("unauthenticated", dav)) {
            auto failure = failureOf(result.value(), 401, "", what);
            failure.reason = std::string(what).append(
                ": the server takes the user for nobody. Check the user name and the password.");
            if (isFinal(failure)) return giveUp();
        }
    }
    if (!place_.homes.empty()) return askWhatIsOffered();
    if (!place_.principal.empty()) {
        if (normalPath(place_.principal) != normalPath(url))
            return ask(place_.principal, &Discovery::readPrincipal);
    }
    lookForCalendarsAt({collection_.empty() ? url : collection_});
}

void Discovery::readPrincipal(const std::string& url, Result<Answer> result)
{
    if (!result) return isFinal(result.failure()) ? giveUp() : tryNext();
    auto read = DavAnswer::read(result.value(), channel_->origin(), what);
    if (!read) return isFinal(read.failure()) ? giveUp() : tryNext();
    for (const auto& response : read.value().responses)
        note(response);
    if (!place_.homes.empty()) return askWhatIsOffered();
    // A principal without a home of its own: the calendars may lie where the host pointed, or below
    // the principal.
    lookForCalendarsAt(collection_.empty() ? std::deque {url} : std::deque {collection_, url});
}

void Discovery::note(const DavResponse& response)
{
    const auto all = [&](std::string_view name, std::string_view uri) {
        std::vector<std::string> urls;
        if (const auto property = response.property(name, uri)) {
            for (const auto& href : hrefs(*property))
                urls.push_back(resolved(response.url, href));
        }
        return urls;
    };
    const auto one = [&](std::string_view name, std::string_view uri) {
        const auto urls = all(name, uri);
        return urls.empty() ? std::optional<std::string>() : std::optional(urls.front());
    };
    if (auto user = one("current-user-principal", dav)) place_.principal = std::move(*user);
    if (auto homes = all("calendar-home-set", caldav); !homes.empty())
        place_.homes = std::move(homes);
    if (auto url = one("notification-URL", calendarServer)) place_.notifications = std::move(url);
    if (auto url = one("schedule-outbox-URL", caldav)) place_.outbox = std::move(url);
    if (const auto set = response.property("calendar-user-address-set", caldav))
        place_.addresses = hrefs(*set);
}

void Discovery::lookForCalendarsAt(std::deque<std::string> urls)
{
    const auto url = urls.front();
    urls.pop_front();
    channel_->send({.method = "PROPFIND",
                       .url = url,
                       .fields = {{"Depth", "1"}, {"Content-Type", davType}},
                       .body = body,
                       .what = std::string(what)},
        call_, [self = shared_from_this(), url, urls = std::move(urls)](Result<Answer> result) {
            if (const auto obstacle = self->readCollection(url, result)) {
                if (self->isFinal(*obstacle)) return self->giveUp();
                return urls.empty() ? self->tryNext() : self->lookForCalendarsAt(urls);
            }
            self->place_.homes = {url};
            self->askWhatIsOffered();
        });
}

std::optional<Failure> Discovery::readCollection(
    const std::string& url, const Result<Answer>& result) const
{
    if (!result) return result.failure();
    const auto read = DavAnswer::read(result.value(), channel_->origin(), what);
    if (!read) return read.failure();
    const auto& responses = read.value().responses;
    if (std::any_of(responses.begin(), responses.end(), std::mem_fn(&DavResponse::isCalendar)))
        return std::nullopt;
    return Failure {.kind = FailureKind::unsupported,
        .reason = std::string(what) + ": there are no calendars at " + url + ".",
        .method = "PROPFIND",
        .url = url,
        .status = result.value().status};
}

void Discovery::askWhatIsOffered()
{
    channel_->send({.method = "OPTIONS", .url = place_.homes.front(), .what = std::string(what)},
        call_, [self = shared_from_this()](Result<Answer> result) {
            // What is not said is not offered; the calendars are there all the same.
            if (result) {
                self->place_.features
                    = words(result.value().headers.value("DAV").value_or(std::string()));
            }
            self->call_->end(std::move(self->place_));
        });
}

bool Discovery::isFinal(const Failure& failure)
{
    failures_.push_back(failure);
    if (failure.status == 401) return true;
    switch (failure.kind) {
    case FailureKind::unauthorized:
    case FailureKind::unreachable:
    case FailureKind::untrusted:
    case FailureKind::timedOut:
        return true;
    default:
        return false;
    }
}

void Discovery::giveUp()
{
    if (failures_.empty()) {
        return call_->fail({.kind = FailureKind::unsupported, .reason = std::string(what) + "."});
    }
    auto failure = failures_.back();
    if (failures_.size() == 1 || failure.status == 401 || failure.kind == FailureKind::unauthorized
        || failure.kind == FailureKind::untrusted || failure.kind == FailureKind::unreachable)
        return call_->fail(std::move(failure));

    // A server that is busy or broken may speak CalDAV when it is not.
    const auto passing = std::find_if(failures_.begin(), failures_.end(), [](const auto& each) {
        return each.kind == FailureKind::busy || each.kind == FailureKind::serverFault
            || each.kind == FailureKind::timedOut;
    });
    if (passing != failures_.end()) return call_->fail(*passing);

    // Where the way leads to another server, that is what a person decides about.
    const auto elsewhere = std::find_if(failures_.begin(), failures_.end(),
        [&](const auto& each) { return !each.url.empty() && !channel_->mayAsk(each.url); });
    if (elsewhere != failures_.end()) {
        elsewhere->kind = FailureKind::notSent;
        return call_->fail(*elsewhere);
    }

    failure.kind = FailureKind::unsupported;
    failure.reason = std::string(what).append(
        ": the server does not seem to speak CalDAV for this user. Tried:");
    const auto prefix = std::string(what) + ": ";
    for (const auto& each : failures_) {
        const auto start = each.reason.starts_with(prefix) ? prefix.size() : 0;
        const auto status = std::to_string(each.status);
        const bool isTold
            = each.status == 0 || each.reason.find(status, start) != std::string::npos;
        failure.reason += "\n  " + each.method + " " + each.url + ": "
            + (isTold ? "" : status + ", but ") + each.reason.substr(start);
    }
    call_->fail(std::move(failure));
}

} // namespace Tessel
