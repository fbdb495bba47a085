#include "Tessel/Session/Writes/MoveEvent.h"

#include "Tessel/Session/Writes/CreateEvent.h"
#include "Tessel/Session/Writes/RemoveEvent.h"

namespace Tessel {

namespace {

using Moved = std::function<void(Result<Resource>)>;

std::string destinationOf(const Resource& resource, const std::string& calendar)
{
    const auto name = resource.href.substr(resource.href.rfind('/') + 1);
    return (calendar.ends_with('/') ? calendar : calendar + "/") + name;
}

/// Two steps for what MOVE does in one. Should the second fail, the first is taken back.
void copyAndRemove(const ResourceAccess& access, const Resource& resource,
    const std::string& destination, const Moved& done)
{
    access.create(destination, resource.text, [=](Result<std::string> written) {
        if (!written) return done(written.failure());
        confirm(access, {destination, written.value(), resource.text}, [=](Result<Resource> copy) {
            removeEvent(access, resource, [=](Outcome removed) {
                if (removed) return done(copy);
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
            failure.isUncertain = false;
            return done(failure);
        }
        access.read(resource.href, [=](Result<std::optional<Resource>> here) mutable {
            if (here && !here.value()) return done(std::move(*there.value()));
            // Something is at both places: what is there is not this one, or was copied only.
            if (here) failure.isUncertain = false;
            done(failure);
        });
    });
}

} // namespace

void moveEvent(const ResourceAccess& access, const Resource& resource, const std::string& calendar,
    std::function<void(Result<Resource>)> done)
{
    const auto destination = destinationOf(resource, calendar);
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
