#include "Tessel/Session/Writes/RemoveEvent.h"

#include "Tessel/Session/Exchange/AnswerFailure.h"
#include "Tessel/Session/Text/SameMeaning.h"

namespace Tessel {

namespace {

void resolveRemoval(const ResourceAccess& access, const Resource& resource, Failure failure,
    bool mayTryAgain, const ResourceAccess::Done& done);

void tryRemoval(const ResourceAccess& access, const Resource& resource, bool mayTryAgain,
    const ResourceAccess::Done& done)
{
    access.remove(resource, [=](Outcome outcome) {
        if (outcome || outcome.failure().kind == FailureKind::missing) return done({});
        const auto& failure = outcome.failure();
        if (failure.isUncertain || failure.kind == FailureKind::changed)
            return resolveRemoval(access, resource, failure, mayTryAgain, done);
        done(failure);
    });
}

void resolveRemoval(const ResourceAccess& access, const Resource& resource, Failure failure,
    bool mayTryAgain, const ResourceAccess::Done& done)
{
    access.read(resource.href, [=](Result<std::optional<Resource>> found) mutable {
        if (!found) return done(failure);
        if (!found.value()) return done({});
        // It is there, as it was: a lost request did not arrive, or not yet; the tag guards it.
        const bool isLost = failure.isUncertain && failure.status == 0;
        if (found.value()->tag == resource.tag && isLost && mayTryAgain)
            return tryRemoval(access, resource, false, done);
        failure.isUncertain = failure.isUncertain && mayStillArrive(failure);
        if (found.value()->tag != resource.tag) {
            failure.kind = FailureKind::changed;
            failure.texts = std::make_shared<const BothTexts>(BothTexts {{}, found.value()->text});
        }
        done(failure);
    });
}

} // namespace

void removeEvent(const ResourceAccess& access, const Resource& resource, ResourceAccess::Done done)
{
    if (canGuard(resource.tag)) return tryRemoval(access, resource, true, done);
    // Nothing guards a removal without a tag but a look at what is there.
    access.read(resource.href, [=](Result<std::optional<Resource>> found) {
        if (!found) return done(found.failure());
        if (!found.value()) return done({});
        auto& theirs = *found.value();
        if (!canGuard(theirs.tag)) {
            return done(Failure {.kind = FailureKind::unsupported,
                .reason = access.what + ": the server gives no tag that would guard it."});
        }
        if (!isSameButStamps(theirs.text, resource.text)) {
            return done(Failure {.kind = FailureKind::changed,
                .reason = access.what + ": what the server holds is not what was to be removed.",
                .texts = std::make_shared<const BothTexts>(BothTexts {{}, theirs.text})});
        }
        tryRemoval(access, theirs, true, done);
    });
}

} // namespace Tessel
