#include "Tessel/Session/Text/EditCheck.h"

#include "Tessel/Platform/Foundation/Text/UTF8.h"
#include "Tessel/Session/Text/EventRule.h"

#include <algorithm>

namespace Tessel {

using namespace std::chrono;

namespace {

bool isToken(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9')
            || c == '-';
    });
}

/// Whether an address, a URL or a TZID can stand in a line as it is.
bool isPlain(std::string_view text)
{
    return !text.empty() && std::none_of(text.begin(), text.end(), [](char c) {
        return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
    });
}

bool isAddress(std::string_view address)
{
    return isPlain(address) && address.find_first_of(" \t\"<>") == address.npos;
}

/// Collects the first fault.
class Check {
public:
    explicit Check(TextZones& zones)
        : zones_(zones)
    {
    }

    std::optional<Failure> fault;

    void text(std::string_view what, std::string_view value)
    {
        require(isValidUTF8(value), "The " + std::string(what) + " is not UTF-8.");
    }

    void moment(const EventMoment& moment)
    {
        constexpr local_days first = local_days(year(0) / 1 / 1);
        constexpr local_days end = local_days(year(10'000) / 1 / 1);
        require(
            moment.local >= first && moment.local < end, "A time is beyond the years 0 to 9999.");
        require(!moment.isDay() || moment.local == floor<days>(moment.local),
            "A day has a time beside it.");
        if (moment.kind != EventMoment::Kind::zoned) return;
        require(isPlain(moment.zone) && isValidUTF8(moment.zone)
                && (zones_.definition(moment.zone) || zones_.zone(moment.zone)
                    || zones_.used().contains(moment.zone)),
            "There is no time zone \"" + moment.zone + "\": take a name like \"Europe/Berlin\".");
    }

    void attendee(const EventAttendee& attendee)
    {
        require(isAddress(attendee.address),
            "\"" + attendee.address + "\" is no address of an attendee.");
        text("address", attendee.address);
        text("name of an attendee", attendee.name);
        require(isToken(attendee.status) && isToken(attendee.role) && isToken(attendee.type),
            "Status, role and type of an attendee are words like \"ACCEPTED\".");
    }

    void alarm(const EventAlarm& alarm)
    {
        constexpr auto most = days(366 * 1000);
        text("text of an alarm", alarm.text);
        require(!alarm.action.empty() && isToken(alarm.action),
            "The action of an alarm is a word like \"DISPLAY\".");
        require(
            alarm.before <= most && alarm.before >= -most, "An alarm is a thousand years away.");
        require(!isSameName(alarm.action, "EMAIL") || !alarm.recipients.empty(),
            "An alarm by e-mail needs recipients.");
        for (const auto& recipient : alarm.recipients)
            require(isAddress(recipient), "\"" + recipient + "\" is no address for an alarm.");
        if (alarm.at) moment(EventMoment::utc(*alarm.at));
    }

    void require(bool holds, const std::string& reason)
    {
        if (!holds && !fault) fault = malformedEdit(reason);
    }

private:
    TextZones& zones_;
};

} // namespace

Failure malformedEdit(std::string reason)
{
    return {.kind = FailureKind::malformed, .reason = std::move(reason)};
}

std::optional<Failure> faultOf(const EventEdit& edit, TextZones& zones)
{
    Check check(zones);
    check.require(edit.instance || (!edit.andFollowing && !edit.isRemoval),
        "An edit of some instances must say which. To remove a whole event, remove its resource.");
    if (edit.instance) check.moment(*edit.instance);
    const auto text = [&](std::string_view what, const Change<std::string>& change) {
        if (change.set()) check.text(what, *change.set());
    };
    text("summary", edit.summary);
    text("description", edit.description);
    text("location", edit.location);
    text("URL", edit.url);
    if (edit.url.set()) check.require(isPlain(*edit.url.set()), "A URL holds a control character.");
    if (edit.status.set())
        check.require(!edit.status.set()->empty() && isToken(*edit.status.set()),
            "A status is a word like \"CONFIRMED\".");
    if (edit.categories.set())
        for (const auto& category : *edit.categories.set())
            check.text("category", category);
    check.require(!edit.start.isCleared(), "An event must have a start.");
    eachMoment(edit, [&](const EventMoment& moment) { check.moment(moment); });
    if (edit.rule.set())
        check.require(EventRule::read(*edit.rule.set()).has_value(),
            "\"" + *edit.rule.set() + "\" is no recurrence rule.");
    const bool isOfOneInstance = edit.instance && !edit.andFollowing;
    check.require(
        !isOfOneInstance || (edit.rule.isLeft() && edit.dates.isLeft() && edit.exceptions.isLeft()),
        "One instance of a series cannot have a recurrence.");
    if (edit.organizer.set()) check.attendee(*edit.organizer.set());
    for (const auto& attendee : edit.attendees)
        check.attendee(attendee);
    for (const auto* alarms : {edit.alarms.set(), &edit.addedAlarms})
        if (alarms)
            for (const auto& alarm : *alarms)
                check.alarm(alarm);
    return check.fault;
}

} // namespace Tessel
