#include "Tessel/Session/Writes/ResourceAccess.h"

#include "Tessel/Platform/Foundation/Web/URL.h"
#include "Tessel/Session/Exchange/AnswerFailure.h"
#include "Tessel/Session/Exchange/DavAnswer.h"
#include "Tessel/Session/Exchange/Href.h"
#include "Tessel/Session/Text/EventText.h"

#include <algorithm>

namespace Tessel {

namespace {

constexpr const char* calendarType = "text/calendar; charset=utf-8";

/// A tag that can guard the next write, if the answer has one.
std::string usableTag(const Answer& answer)
{
    const auto tag = answer.headers.value("ETag").value_or(std::string());
    return canGuard(tag) ? tag : std::string();
}

/// Whether there are several events with UIDs of their own, as in the text of a calendar.
bool holdsSeveralEvents(const std::string& text)
{
    const auto tree = TextTree::read(text);
    if (!tree) return false;
    std::string first;
    for (const auto calendar : tree.value().components()) {
        for (const auto component : calendar.components()) {
            if (!component.is("VEVENT")) continue;
            const auto uid = EventPart(component).uid();
            if (first.empty()) first = uid;
            if (!uid.empty() && uid != first) return true;
        }
    }
    return false;
}

} // namespace

bool canGuard(std::string_view tag)
{
    return !tag.empty() && tag != "*" && !tag.starts_with("W/");
}

std::optional<Failure> ResourceAccess::obstacleAt(const std::string& place) const
{
    auto path = place.empty() ? "/" : normalPath(place);
    path.erase(std::min(path.find_first_of("?#"), path.size()));
    // Dots as a name mean a collection too (RFC 3986, 5.2.4).
    const auto name = path.substr(path.rfind('/') + 1);
    if (!name.empty() && name != "." && name != "..") return std::nullopt;
    return Failure {.kind = FailureKind::malformed,
        .reason = what + ": "
            + (place.empty() ? "no place was given." : place + " is the place of a collection.")};
}

void ResourceAccess::send(Request request, std::function<void(Result<Answer>)> next) const
{
    request.what = what;
    if (auto failure = obstacleAt(request.url)) {
        failure->method = request.method;
        failure->url = withoutUserInfo(request.url);
        return channel->step(
            call, [next = std::move(next), failure = std::move(*failure)] { next(failure); });
    }
    channel->send(std::move(request), call,
        [channel = channel, what = what, next = std::move(next)](Result<Answer> result) {
            if (result) {
                if (auto refused = refusalIn(result.value(), channel->origin(), what))
                    return next(std::move(*refused));
            }
            next(std::move(result));
        });
}

void ResourceAccess::read(const std::string& place, Read next) const
{
    // A server that compresses the answer would give it a tag of its own, which guards nothing.
    send({.method = "GET",
             .url = place,
             .fields = {{"Accept", "text/calendar"}, {"Accept-Encoding", "identity"}}},
        [place, what = what, next = std::move(next)](Result<Answer> result) {
            if (!result) {
                const auto& failure = result.failure();
                if (failure.kind == FailureKind::missing && failure.status != 0)
                    return next(std::optional<Resource>());
                return next(failure);
            }
            const auto& answer = result.value();
            Resource found {place, answer.headers.value("ETag").value_or(std::string()),
                std::string(answer.body.view())};
            if (holdsSeveralEvents(found.text)) {
                return next(Failure {.kind = FailureKind::malformed,
                    .reason = what + ": what is at " + place
                        + " is not one event but several, as in a calendar.",
                    .method = answer.method,
                    .url = withoutUserInfo(answer.url),
                    .status = answer.status});
            }
            next(std::optional(std::move(found)));
        });
}

void ResourceAccess::create(const std::string& place, const std::string& text, Written next) const
{
    send({.method = "PUT",
             .url = place,
             .fields = {{"If-None-Match", "*"}, {"Content-Type", calendarType}},
             .body = text},
        [next = std::move(next)](Result<Answer> result) {
            if (!result) return next(result.failure());
            next(usableTag(result.value()));
        });
}

void ResourceAccess::replace(const Resource& resource, const std::string& text, Written next) const
{
    send({.method = "PUT",
             .url = resource.href,
             .fields = {{"If-Match", resource.tag}, {"Content-Type", calendarType}},
             .body = text},
        [next = std::move(next)](Result<Answer> result) {
            if (!result) return next(result.failure());
            next(usableTag(result.value()));
        });
}

void ResourceAccess::remove(const Resource& resource, Done next) const
{
    send({.method = "DELETE", .url = resource.href, .fields = {{"If-Match", resource.tag}}},
        [next = std::move(next)](
            Result<Answer> result) { next(result ? Outcome() : Outcome(result.failure())); });
}

void ResourceAccess::move(const Resource& resource, const std::string& destination, Done next) const
{
    const auto to = encodedURL(channel->absolute(destination));
    if (!to) {
        const Failure failure {.kind = FailureKind::malformed,
            .reason = what + ": " + destination + " is no place.",
            .method = "MOVE",
            .url = withoutUserInfo(resource.href)};
        return channel->step(call, [next = std::move(next), failure] { next(failure); });
    }
    send({.method = "MOVE",
             .url = resource.href,
             .fields = {{"Destination", *to}, {"Overwrite", "F"}, {"If-Match", resource.tag}}},
        [next = std::move(next)](
            Result<Answer> result) { next(result ? Outcome() : Outcome(result.failure())); });
}

} // namespace Tessel
