#include "Tessel/Session/Writes/ResourceAccess.h"

#include "Tessel/Session/Exchange/AnswerFailure.h"
#include "Tessel/Session/Exchange/DavAnswer.h"
#include "Tessel/Session/Store/CalendarText.h"

namespace Tessel {

namespace {

constexpr const char* calendarType = "text/calendar; charset=utf-8";

/// A tag that can guard the next write: a weak one cannot (RFC 9110, 13.1.1).
std::string usableTag(const Answer& answer)
{
    const auto tag = answer.headers.value("ETag").value_or(std::string());
    return tag.starts_with("W/") ? std::string() : tag;
}

} // namespace

void ResourceAccess::send(Request request, std::function<void(Result<Answer>)> next) const
{
    request.what = what;
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
            next(
                std::optional(Resource {place, answer.headers.value("ETag").value_or(std::string()),
                    std::string(answer.body.view())}));
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
    send({.method = "MOVE",
             .url = resource.href,
             .fields = {{"Destination", channel->absolute(destination)}, {"Overwrite", "F"},
                 {"If-Match", resource.tag}}},
        [next = std::move(next)](
            Result<Answer> result) { next(result ? Outcome() : Outcome(result.failure())); });
}

} // namespace Tessel
