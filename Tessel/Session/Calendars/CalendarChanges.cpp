#include "Tessel/Session/Calendars/CalendarChanges.h"

#include "Tessel/Platform/XML/GDataXMLDocument.h"
#include "Tessel/Platform/XML/GDataXMLElement.h"
#include "Tessel/Session/Calendars/CalendarValues.h"
#include "Tessel/Session/Exchange/AnswerFailure.h"
#include "Tessel/Session/Exchange/DavAnswer.h"
#include "Tessel/Session/Exchange/Href.h"

#include <random>

namespace Tessel {

namespace {

using namespace XMLNamespace;

std::string newName()
{
    constexpr char digits[] = "0123456789abcdef";
    std::random_device random;
    std::string name;
    for (int i = 0; i < 32; ++i)
        name += digits[random() % 16];
    return name;
}

constexpr std::string_view declaration = R"(<?xml version="1.0" encoding="utf-8"?>)";

struct NamedValue {
    std::string_view name;
    std::string_view uri;
    const std::string& value;
};

/// Those that are set, as WebDAV names them.
std::vector<NamedValue> namedValues(const CalendarProperties& properties)
{
    std::vector<NamedValue> values;
    const auto add = [&](const std::optional<std::string>& value, std::string_view name,
                         std::string_view uri) {
        if (value) values.push_back({name, uri, *value});
    };
    add(properties.displayName, "displayname", dav);
    add(properties.description, "calendar-description", caldav);
    add(properties.color, "calendar-color", appleICal);
    add(properties.order, "calendar-order", appleICal);
    add(properties.timeZone, "calendar-timezone", caldav);
    return values;
}

GDataXMLElement rootElement(std::string_view name, std::string_view uri)
{
    auto root = GDataXMLElement::elementWithName(name, uri);
    root.addNamespace("d", dav);
    root.addNamespace("c", caldav);
    root.addNamespace("i", appleICal);
    return root;
}

/// `name` with the properties in its set/prop, as text.
std::string document(
    std::string_view name, std::string_view uri, const CalendarProperties& properties, bool isNew)
{
    auto root = rootElement(name, uri);
    auto prop = root.addElement("set", dav).addElement("prop", dav);
    for (const auto& each : namedValues(properties))
        prop.addElement(each.name, each.uri, each.value);
    if (isNew) {
        auto set = prop.addElement("supported-calendar-component-set", caldav);
        const std::vector<std::string> events {"VEVENT"};
        for (const auto& component : properties.components.value_or(events))
            set.addElement("comp", caldav).setAttribute("name", component);
    }
    return std::string(declaration) + root.XMLString();
}

std::string question(const CalendarProperties& properties)
{
    auto root = rootElement("propfind", dav);
    auto prop = root.addElement("prop", dav);
    for (const auto& each : namedValues(properties))
        prop.addElement(each.name, each.uri);
    return std::string(declaration) + root.XMLString();
}

/// Whether the server shows each of the properties as it was to be set; a color may have got its
/// transparency there.
bool areSet(const CalendarProperties& properties, const DavAnswer& answer)
{
    if (answer.responses.size() != 1) return false;
    for (const auto& each : namedValues(properties)) {
        const auto there = answer.responses.front().text(each.name, each.uri);
        const bool isColor = each.name == "calendar-color";
        if (!there || (*there != each.value && !(isColor && *there == each.value + "FF")))
            return false;
    }
    return true;
}

/// Whether the new calendar was refused a property. RFC 4791, 5.3.1, has none made then; Xandikos
/// makes it all the same.
bool isMadeInPart(const Answer& answer)
{
    Error error;
    const auto document = GDataXMLDocument::parse(answer.body.view(), error);
    if (!document || document->rootElement().name() != "mkcalendar-response") return false;
    for (const auto& child : document->rootElement().children()) {
        const auto status = child.first("status", dav);
        if (status && statusOf(status->stringValue().value_or(std::string())) >= 300) return true;
    }
    return false;
}

/// Sets what the new calendar was to have.
void complete(const std::shared_ptr<Channel>& channel, const std::string& url,
    const CalendarProperties& properties, const std::shared_ptr<PendingCall<std::string>>& call)
{
    const auto place = placeOf(channel->origin(), url);
    const auto what
        = "The calendar was made at " + place + ", but does not have all that it was to have";
    channel->send({.method = "PROPPATCH",
                      .url = url,
                      .fields = {{"Content-Type", davType}},
                      .body = document("propertyupdate", dav, properties, false),
                      .what = what},
        call, [=](Result<Answer> result) {
            if (auto refusal = refusalIn(result, channel->origin(), what))
                return call->fail(std::move(*refusal));
            call->end(place);
        });
}

} // namespace

void createCalendar(const std::shared_ptr<Channel>& channel, const std::string& home,
    const CalendarProperties& properties, std::shared_ptr<PendingCall<std::string>> call)
{
    constexpr std::string_view what = "The calendar could not be created";
    const auto values = sendable(properties, true, what);
    if (!values) return call->fail(values.failure());
    const auto url = resolved(home.ends_with('/') ? home : home + "/", newName() + "/");
    const auto look = [channel, home, url, call](Failure failure) {
        channel->send({.method = "PROPFIND",
                          .url = url,
                          .fields = {{"Depth", "0"}},
                          .what = "The new calendar could not be looked for"},
            call, [=](Result<Answer> found) mutable {
                if (found && found.value().isSuccess())
                    return call->end(placeOf(channel->origin(), url));
                if (found) failure.isUncertain = mayStillArrive(failure);
                call->fail(std::move(failure));
            });
    };
    channel->send({.method = "MKCALENDAR",
                      .url = url,
                      .fields = {{"Content-Type", davType}},
                      .body = document("mkcalendar", caldav, values.value(), true),
                      .what = std::string(what)},
        call, [=](Result<Answer> result) {
            if (auto refusal = refusalIn(result, channel->origin(), what))
                return refusal->isUncertain ? look(*refusal) : call->fail(*refusal);
            if (isMadeInPart(result.value()) && !namedValues(values.value()).empty())
                return complete(channel, url, values.value(), call);
            call->end(placeOf(channel->origin(), url));
        });
}

void changeCalendar(const std::shared_ptr<Channel>& channel, const std::string& url,
    const CalendarProperties& properties, std::shared_ptr<PendingCall<void>> call)
{
    static constexpr std::string_view what = "The calendar could not be changed";
    const auto values = sendable(properties, false, what);
    if (!values) return call->fail(values.failure());
    const auto look = [channel, url, call, values](Failure failure) {
        channel->send({.method = "PROPFIND",
                          .url = url,
                          .fields = {{"Depth", "0"}, {"Content-Type", davType}},
                          .body = question(values.value()),
                          .what = "The changed calendar could not be looked at"},
            call, [=](Result<Answer> found) mutable {
                const auto read = found ? DavAnswer::read(found.value(), channel->origin(), what)
                                        : Result<DavAnswer>(found.failure());
                if (read && areSet(values.value(), read.value())) return call->end({});
                const bool isAnswered = failure.status != 0;
                if (read && isAnswered) failure.isUncertain = mayStillArrive(failure);
                call->fail(std::move(failure));
            });
    };
    channel->send({.method = "PROPPATCH",
                      .url = url,
                      .fields = {{"Content-Type", davType}},
                      .body = document("propertyupdate", dav, values.value(), false),
                      .what = std::string(what)},
        call, [=](Result<Answer> result) {
            if (auto refusal = refusalIn(result, channel->origin(), what))
                return refusal->isUncertain ? look(*refusal) : call->fail(*refusal);
            call->end({});
        });
}

void deleteCalendar(const std::shared_ptr<Channel>& channel, const std::string& url,
    std::shared_ptr<PendingCall<void>> call)
{
    constexpr std::string_view what = "The calendar could not be deleted";
    const auto look = [channel, url, call](Failure failure) {
        channel->send({.method = "PROPFIND",
                          .url = url,
                          .fields = {{"Depth", "0"}},
                          .what = "The deleted calendar could not be looked for"},
            call, [=](Result<Answer> found) mutable {
                if (found && kindOfStatus(found.value().status) == FailureKind::missing)
                    return call->end({});
                if (found)
                    failure.isUncertain = !found.value().isSuccess() || mayStillArrive(failure);
                call->fail(std::move(failure));
            });
    };
    channel->send({.method = "DELETE", .url = url, .what = std::string(what)}, call,
        [=](Result<Answer> result) {
            if (result && kindOfStatus(result.value().status) == FailureKind::missing)
                return call->end({});
            if (auto refusal = refusalIn(result, channel->origin(), what))
                return refusal->isUncertain ? look(*refusal) : call->fail(*refusal);
            call->end({});
        });
}

} // namespace Tessel
