#include "Tessel/Session/Writes/MoveEvent.h"

#include "Tessel/Session/Exchange/AnswerFailure.h"
#include "Tessel/Session/Exchange/Href.h"
#include "Tessel/Session/Writes/CreateEvent.h"
#include "Tessel/Session/Writes/RemoveEvent.h"

namespace Tessel {

namespace {

using Moved = std::function<void(Result<Resource>)>;

/// The place as a server has it that takes an encoded destination for the name itself, as Radicale
/// does.
std::string encodedOnceMore(const std::string& place)
{
    const auto name = place.rfind('/') + 1;
    auto spelled = place.substr(0, name);
    for (const char c : place.substr(name))
        spelled.append(c == '%' ? "%25" : std::string(1, c));
    return spelled;
}

/// After a MOVE that the server says it has done.
void confirmMove(const ResourceAccess& access, const Resource& resource,
    const std::string& destination, const Moved& done)
{
    readMoved(access, destination, [=](Result<std::optional<Resource>> found) {
        // Without a tag, the next change looks first.
        if (!found) return done(Resource {destination, {}, resource.text});
        if (found.value()) return done(std::move(*found.value()));
        done(Failure {.kind = FailureKind::refused,
            .reason = access.what + ": the server says that it moved it, but there is nothing at "
                + destination + ".",
            .method = "MOVE",
            .url = resource.href,
            .isUncertain = true});
    });
}

/// Two steps for what MOVE does in one. Should the second fail, the first is taken back.
void copyAndRemove(const ResourceAccess& access, const Resource& resource,
    const std::string& destination, const Moved& done)
{
    access.create(destination, resource.text, [=](Result<std::string> written) {
        if (!written) return done(written.failure());
        const Resource sent {destination, written.value(), resource.text};
        confirm(access, sent, {}, [=](Result<Resource> copy) {
            if (!copy) return done(copy.failure());
            removeEvent(access, resource, [=](Outcome removed) {
                if (removed) return done(copy);
                const auto wasCopied = " It was copied to " + destination + ".";
                if (removed.failure().isUncertain) {
                    // It may be gone here: the copy is then all there is.
                    auto failure = removed.failure();
                    failure.reason += wasCopied;
                    return done(std::move(failure));
                }
                removeEvent(access, copy.value(), [=](Outcome takenBack) {
                    auto failure = removed.failure();
                    failure.isUncertain = !takenBack;
                    if (!takenBack) failure.reason += wasCopied;
                    done(std::move(failure));
                });
            });
        });
    });
}

/// What became of a MOVE whose answer was lost.
void resolveMove(const ResourceAccess& access, const Resource& resource,
    const std::string& destination, Failure failure, const Moved& done)
{
    readMoved(access, destination, [=](Result<std::optional<Resource>> there) mutable {
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

void readMoved(
    const ResourceAccess& access, const std::string& destination, const ResourceAccess::Read& next)
{
    access.read(destination, [=](Result<std::optional<Resource>> found) {
        const auto spelled = encodedOnceMore(destination);
        if (!found || found.value() || spelled == destination) return next(std::move(found));
        access.read(spelled, next);
    });
}

std::string placeOfMoved(const std::string& place, const std::string& calendar)
{
    return (calendar.ends_with('/') ? calendar : calendar + "/")
        + place.substr(place.rfind('/') + 1);
}

void moveEvent(const ResourceAccess& access, const Resource& resource, const std::string& calendar,
    std::function<void(Result<Resource>)> done)
{
    if (!canGuard(resource.tag)) {
        // Nothing guards a move without a tag but a look at what is there.
        return access.read(resource.href, [=](Result<std::optional<Resource>> found) {
            if (!found) return done(found.failure());
            auto failure = Failure {.kind = FailureKind::missing,
                .reason = access.what + ": there is nothing at " + resource.href + "."};
            if (!found.value()) return done(std::move(failure));
            const auto& theirs = *found.value();
            if (canGuard(theirs.tag)) return moveEvent(access, theirs, calendar, done);
            failure.kind = FailureKind::unsupported;
            failure.reason = access.what + ": the server gives no tag that would guard it.";
            done(std::move(failure));
        });
    }
    const auto destination = placeOfMoved(resource.href, calendar);
    const bool isThere = normalPath(destination) == normalPath(resource.href);
    if (isThere && !access.obstacleAt(resource.href)) return done(resource);
    access.move(resource, destination, [=](Outcome outcome) {
        if (outcome) return confirmMove(access, resource, destination, done);
        const auto& failure = outcome.failure();
        if (failure.isUncertain) return resolveMove(access, resource, destination, failure, done);
        if (failure.kind == FailureKind::unsupported)
            return copyAndRemove(access, resource, destination, done);
        done(failure);
    });
}

} // namespace Tessel
