#include "tests/Tessel/CaldavLibrary/Parsers/ModelDump.h"

#include <array>
#include <ctime>
#include <sstream>

namespace Tessel::Test {

namespace {

template <class Value> std::string text(const Value& value)
{
    std::ostringstream stream;
    stream << value;
    return stream.str();
}

std::string text(const Date& date)
{
    if (Date().timeIntervalSince1970() - date.timeIntervalSince1970() < 60) return "now";
    const std::time_t seconds = date.millisecondsSince1970() / 1000;
    std::tm fields {};
    gmtime_r(&seconds, &fields);
    std::array<char, 32> buffer {};
    std::strftime(buffer.data(), buffer.size(), "%Y-%m-%d %H:%M:%S", &fields);
    return buffer.data();
}

std::string text(const Date& date, const std::optional<TimeZone>& zone)
{
    return text(date) + (zone ? " in " + zone->identifier() : "");
}

std::string text(MRVInviteStatus status)
{
    constexpr std::array names {"accepted", "declined", "noResponse", "deleted"};
    return names.at(rawValue(status));
}

std::string text(MRVSharedCalendarAccess access)
{
    return access == MRVSharedCalendarAccess::readOnly ? "readOnly" : "readWrite";
}

std::string text(const MRVAlarm& alarm)
{
    constexpr std::array actions {"display", "email", "audio"};
    std::string result = actions.at(rawValue(alarm.action));
    if (alarm.relativeTriggerTime) result += " after " + text(*alarm.relativeTriggerTime) + " s";
    if (alarm.absoluteTriggerTime) result += " at " + text(*alarm.absoluteTriggerTime);
    return result + (alarm.desc.empty() ? "" : ": " + alarm.desc);
}

std::string text(const MRVAttendee& attendee)
{
    const auto part = [](const char* name, const std::optional<std::string>& value) {
        return value ? std::string(" ") + name + "=" + *value : "";
    };
    return attendee.href + (attendee.isOrganizer ? " organizes" : "") + part("cn", attendee.cn)
        + part("email", attendee.email) + part("role", attendee.role) + part("type", attendee.type)
        + part("status", attendee.participationStatus) + part("schedule", attendee.scheduleStatus);
}

template <class Value> std::string line(const char* name, const Value& value)
{
    return std::string("  ") + name + " = " + text(value) + "\n";
}

template <class Value> std::string line(const char* name, const std::optional<Value>& value)
{
    return value ? line(name, *value) : "";
}

template <class Item>
std::string lines(const char* name, const std::optional<std::vector<std::shared_ptr<Item>>>& list)
{
    std::string result;
    for (const auto& item : list.value())
        result += line(name, *item);
    return result;
}

template <class Options> std::optional<int> bits(const std::optional<Options>& options)
{
    if (!options) return std::nullopt;
    return options->rawValue();
}

} // namespace

std::string dump(const MRVCalendar& calendar)
{
    std::string result = calendar.href + "\n" + line("calID", calendar.calID)
        + line("displayName", calendar.displayName) + line("cTag", calendar.cTag)
        + line("syncToken", calendar.syncToken) + line("owner", calendar.owner)
        + line("timeZone", calendar.timeZone.identifier())
        + line("supportedComponents", bits(calendar.supportedComponents))
        + line("privileges", bits(calendar.privileges))
        + line("sharingModes", bits(calendar.sharingModes)) + line("desc", calendar.desc)
        + line("order", calendar.order) + line("color", calendar.color)
        + line("organizerName", calendar.organizerName)
        + line("organizerEmail", calendar.organizerEmail)
        + line("prePublishURL", calendar.prePublishURL);
    if (calendar.includeInBusyTime) result += "  includeInBusyTime\n";
    if (calendar.isShared) result += "  isShared\n";
    if (!calendar.sharees) return result;
    for (const auto& sharee : *calendar.sharees) {
        result += line(
            "sharee", sharee->email + " " + text(sharee->access) + " " + text(sharee->status));
    }
    return result;
}

std::string dump(const MRVEvent& event)
{
    return event.uid + "\n" + line("href", event.href) + line("eTag", event.eTag)
        + line("scheduleTag", event.scheduleTag) + line("summary", event.summary)
        + line("desc", event.desc) + line("status", event.status)
        + line("created", event.createdDate) + line("lastModified", event.lastModifiedDate)
        + line("start", text(event.startDate, event.startTimeZone))
        + line("end", text(event.endDate, event.endTimeZone))
        + line("allDay", event.allDay ? "yes" : "no") + line("recurRule", event.recurRule)
        + line("recurrenceId", event.recurrenceId) + lines("attendee", event.attendees)
        + lines("alarm", event.alarms);
}

std::string dump(const MRVNotification& notification)
{
    return notification.href + "\n" + line("isReply", notification.isReply ? "yes" : "no")
        + line("identifier", notification.identifier) + line("hostURL", notification.hostURL)
        + line("summary", notification.summary) + line("date", notification.date)
        + line("shareeEmail", notification.shareeEmail) + line("uid", notification.uid)
        + line("organizerCN", notification.organizerCN)
        + line("organizerEmail", notification.organizerEmail) + line("status", notification.status)
        + line("access", notification.access);
}

std::string dump(const MRVEventDescriptor& descriptor)
{
    return descriptor.href + " " + descriptor.eTag + "\n";
}

std::string dump(const MRVNotificationInfo& info)
{
    const bool isReply = info.notificationType == MRVNotificationType::reply;
    return info.href + (isReply ? " reply" : " notification") + "\n";
}

} // namespace Tessel::Test
