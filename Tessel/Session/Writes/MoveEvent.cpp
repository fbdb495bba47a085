#include "Tessel/Session/Writes/MoveEvent.h"

#include "Tessel/Session/Exchange/AnswerFailure.h"
#include "Tessel/Session/Exchange/Href.h"
#include "Tessel/Session/Writes/CreateEvent.h"
#include "Tessel/Session/Writes/RemoveEvent.h"

namespace Tessel {

namespace {

using Moved = std::function<void(Result<Resource>)>;

/// Two steps for what MOVE does in one. Should the second fail, the first is taken back.
void copyAndRemove(const ResourceAccess& access, const Resource& resource,
    const std::string& destination, const Moved& done)
{
    access.create(destination, resource.text, [=](Result<std::string> written) {
        if (!written) return done(written.failure());
        confirm(access, {destination, written.value(), resource.text}, [=](Result<Resource> copy) {
            removeEvent(access, resource, [=](Outcome removed) {
                if (removed) return done(copy);
                if (removed.failure().isUncertain) {
                    // It may be gone here: the copy is then all there is.
                    auto failure = removed.failure();
                    failure.reason += " It was copied to " + destination + ".";
                    return done(std::move(failure));
                }
                removeEvent(access, copy.value(), [=](Outcome) { done(removed.failure()); });
            });
        });
    });
}

/// What became of a MOVE whose answer was lost.
void resolveMove(const ResourceAccess& access, const Resource& resource,
    const std::string& destination, Failure failure, const Moved& done)
{
    access.read(destination, [=](Result<std::optional<Resource>> there) mutable {
        if (!there) return done(failure);
        if (!there.value()) {
            failure.isUncertain = mayStillArrive(failure);
            return done(failure);
        }
        access.read(resource.href, [=](Result<std::optional<Resource>> here) mutable {
            if (here && !here.value()) return done(std::move(*there.value()));
            // Something is at both places: what is there is not this one, or was copied only.
            if (here) failure.isUncertain = mayStillArrive(failure);
            done(failure);
        });
    });
}

} // namespace

std::string placeOfMoved(const std::string& place, const std::string& calendar)
{
    return (calendar.ends_with('/') ? calendar : calendar + "/")
        + place.substr(place.rfind('/') + 1);
}

void moveEvent(const ResourceAccess& access, const Resource& resource, const std::string& calendar,
    std::function<void(Result<Resource>)> done)
{
    if (resource.tag.empty() || resource.tag.starts_with("W/")) {
        // Nothing guards a move without a tag but a look at what is there.
        return access.read(resource.href, [=](Result<std::optional<Resource>> found) {
            if (!found) return done(found.failure());
            auto failure = Failure {.kind = FailureKind::missing,
                .reason = access.what + ": there is nothing at " + resource.href + "."};
            if (!found.value()) return done(std::move(failure));
            const auto& theirs = *found.value();
            if (!theirs.tag.empty() && !theirs.tag.starts_with("W/"))
                return moveEvent(access, theirs, calendar, done);
            failure.kind = FailureKind::unsupported;
            failure.reason = access.what + ": the server gives no tag that would guard it.";
            done(std::move(failure));
        });
    }
    const auto destination = placeOfMoved(resource.href, calendar);
    const bool isThere = normalPath(destination) == normalPath(resource.href);
    if (isThere && !access.obstacleAt(resource.href)) return done(resource);
    access.move(resource, destination, [=](Outcome outcome) {
        if (outcome) return confirm(access, {destination, {}, resource.text}, done);
        const auto& failure = outcome.failure();
        if (failure.isUncertain) return resolveMove(access, resource, destination, failure, done);
        if (failure.kind == FailureKind::unsupported)
            return copyAndRemove(access, resource, destination, done);
        done(failure);
    });
}

} // namespace Tessel
