#include "Tessel/Session/Writes/CreateEvent.h"

#include "Tessel/Session/Exchange/AnswerFailure.h"

#include "Tessel/Session/Exchange/Href.h"

namespace Tessel {

std::string placeOfEvent(const std::string& calendar, const EventText& event)
{
    return (calendar.ends_with('/') ? calendar : calendar + "/") + encodedSegment(event.uid())
        + ".ics";
}

Failure noCalendarGiven(const std::string& what)
{
    return {.kind = FailureKind::malformed, .reason = what + ": no calendar was given."};
}

void confirm(
    const ResourceAccess& access, Resource written, std::function<void(Result<Resource>)> done)
{
    if (!written.tag.empty()) return done(std::move(written));
    // Cyrus gives no tag for what it has changed while it stored it.
    access.read(written.href, [written, done](Result<std::optional<Resource>> found) {
        if (found && found.value()) return done(std::move(*found.value()));
        // It was written; without a tag, the next change looks first.
        done(written);
    });
}

void createEvent(const ResourceAccess& access, const std::string& calendar, const EventText& event,
    std::function<void(Result<Resource>)> done)
{
    createEventAt(access, placeOfEvent(calendar, event), event, std::move(done));
}

void createEventAt(const ResourceAccess& access, const std::string& place, const EventText& event,
    std::function<void(Result<Resource>)> done)
{
    access.create(place, event.text(), [=](Result<std::string> written) {
        if (written) return confirm(access, {place, written.value(), event.text()}, done);
        auto failure = written.failure();
        if (!failure.isUncertain) return done(std::move(failure));
        access.read(place, [=](Result<std::optional<Resource>> found) mutable {
            if (!found) return done(failure);
            failure.isUncertain = mayStillArrive(failure);
            if (!found.value()) return done(failure);
            const auto theirs = EventText::read(found.value()->text);
            if (theirs && theirs.value().uid() == event.uid())
                return done(std::move(*found.value()));
            done(failure);
        });
    });
}

} // namespace Tessel
