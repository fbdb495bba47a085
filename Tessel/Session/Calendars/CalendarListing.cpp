#include "Tessel/Session/Calendars/CalendarListing.h"

#include "Tessel/Session/Exchange/AnswerFailure.h"
#include "Tessel/Session/Exchange/Href.h"

#include <algorithm>
#include <set>

namespace Tessel {

namespace {

using namespace XMLNamespace;
constexpr std::string_view what = "The calendars could not be listed";

constexpr const char* body = R"(<?xml version="1.0" encoding="utf-8"?>
<d:propfind xmlns:d="DAV:" xmlns:c="urn:ietf:params:xml:ns:caldav" xmlns:cs="http://calendarserver.org/ns/" xmlns:i="http://apple.com/ns/ical/">
<d:prop><d:resourcetype/><d:displayname/><d:current-user-privilege-set/><d:sync-token/>
<c:calendar-description/><c:calendar-timezone/><c:supported-calendar-component-set/>
<cs:getctag/><i:calendar-color/><i:calendar-order/></d:prop></d:propfind>)";

struct Missing {
    std::string_view name;
    std::string_view uri;
    const char* meaning;
};

/// What servers leave out, and what that means for a host. DAViCal and a stock sabre/dav have no
/// calendar-timezone until somebody sets it, Xandikos and Radicale no color or order.
constexpr Missing mayBeMissing[] = {
    {"displayname", dav, "displayname: the calendar has no name of its own"},
    {"current-user-privilege-set", dav,
        "current-user-privilege-set: whether it may be written shows when it is tried"},
    {"sync-token", dav, "sync-token: a sync compares the tags of all its resources"},
    {"getctag", calendarServer, "getctag: each sync asks for its resources"},
    {"calendar-timezone", caldav, "calendar-timezone: floating times are the user's own"},
    {"supported-calendar-component-set", caldav,
        "supported-calendar-component-set: it may hold tasks and notes too"},
};

bool isWritable(const DavResponse& response)
{
    const auto set = response.property("current-user-privilege-set", dav);
    if (!set) return true;
    for (const auto& privilege : set->elementsForLocalName("privilege", dav)) {
        for (const auto* name : {"all", "write", "write-content", "bind"}) {
            if (privilege.first(name, dav)) return true;
        }
    }
    return false;
}

std::optional<std::string> ifFilled(std::optional<std::string> text)
{
    if (text && text->empty()) return std::nullopt;
    return text;
}

/// The homes that are still to be listed, one after another.
struct Listing : std::enable_shared_from_this<Listing> {
    std::shared_ptr<Channel> channel;
    std::vector<std::string> homes;
    std::shared_ptr<CallState> call;
    std::function<void(Result<CalendarList>)> done;
    std::size_t next = 0;
    CalendarList calendars = {};
    std::set<std::string> seen = {};

    /// A home that does not describe itself, or a member of which is said nothing, is no whole
    /// list: what is missing would look deleted.
    std::optional<Failure> check(const Answer& answer, const DavAnswer& read) const
    {
        const auto home = normalPath(answer.url);
        bool hasHome = false;
        for (const auto& response : read.responses) {
            const auto path = normalPath(response.url);
            hasHome |= path == home || path + "/" == home || path == home + "/";
            if (response.property("resourcetype", dav)) continue;
            // Gone while the list was made.
            if (response.status == 404 || response.status == 410) continue;
            const auto status = response.refusal();
            return failureOf(answer, status ? status : answer.status,
                "it says nothing of " + response.href, what);
        }
        if (hasHome) return std::nullopt;
        auto failure = failureOf(answer, "");
        failure.kind = FailureKind::malformed;
        failure.reason = std::string(what) + ": the server's list is not whole.";
        return failure;
    }

    void take(const DavAnswer& read, bool isHere)
    {
        for (const auto& response : read.responses) {
            if (response.place.starts_with('/') != isHere) continue;
            auto calendar = readCalendar(response);
            if (calendar && seen.insert(normalPath(response.url)).second)
                calendars.push_back(std::move(*calendar));
        }
    }

    void step()
    {
        if (next == homes.size()) return done(std::move(calendars));
        channel->send({.method = "PROPFIND",
                          .url = homes[next++],
                          .fields = {{"Depth", "1"}, {"Content-Type", davType}},
                          .body = body,
                          .what = std::string(what)},
            call, [self = shared_from_this()](Result<Answer> result) {
                if (!result) return self->done(result.failure());
                const auto read = DavAnswer::read(result.value(), self->channel->origin(), what);
                if (!read) return self->done(read.failure());
                if (auto failure = self->check(result.value(), read.value()))
                    return self->done(std::move(*failure));
                // One of the same path elsewhere hides none of the account's own.
                for (const bool isHere : {true, false})
                    self->take(read.value(), isHere);
                self->step();
            });
    }
};

} // namespace

std::optional<StoredCalendar> readCalendar(const DavResponse& response)
{
    if (!response.isCalendar() || response.href.empty()) return std::nullopt;

    StoredCalendar calendar {.href = response.place};
    calendar.displayName = response.text("displayname", dav).value_or(std::string());
    calendar.description = ifFilled(response.text("calendar-description", caldav));
    calendar.color = ifFilled(response.text("calendar-color", appleICal));
    calendar.order = ifFilled(response.text("calendar-order", appleICal));
    calendar.timeZone = ifFilled(response.text("calendar-timezone", caldav));
    calendar.isWritable = isWritable(response);
    if (const auto set = response.property("supported-calendar-component-set", caldav)) {
        for (const auto& component : set->elementsForLocalName("comp", caldav)) {
            if (auto name = component.attribute("name"))
                calendar.components.push_back(std::move(*name));
        }
    }
    calendar.mark.cTag = response.token("getctag", calendarServer);
    calendar.mark.syncToken = response.token("sync-token", dav);
    for (const auto& each : mayBeMissing) {
        if (!ifFilled(response.text(each.name, each.uri))
            && !(response.property(each.name, each.uri)
                && !response.property(each.name, each.uri)->children().empty()))
            calendar.missing.emplace_back(each.meaning);
    }
    return calendar;
}

void listCalendars(const std::shared_ptr<Channel>& channel, const std::vector<std::string>& homes,
    const std::shared_ptr<CallState>& call, std::function<void(Result<CalendarList>)> done)
{
    const auto listing = std::make_shared<Listing>();
    listing->channel = channel;
    listing->homes = homes;
    listing->call = call;
    listing->done = std::move(done);
    listing->step();
}

} // namespace Tessel
