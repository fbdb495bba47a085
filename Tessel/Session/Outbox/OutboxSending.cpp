#include "Tessel/Session/Outbox/OutboxSending.h"

#include "Tessel/Session/Outbox/OutboxChange.h"
#include "Tessel/Session/Text/SameMeaning.h"
#include "Tessel/Session/Writes/ChangeEvent.h"
#include "Tessel/Session/Writes/CreateEvent.h"
#include "Tessel/Session/Writes/MoveEvent.h"
#include "Tessel/Session/Writes/RemoveEvent.h"

namespace Tessel {

namespace {

const char* whatOf(ChangeKind kind)
{
    switch (kind) {
    case ChangeKind::create:
        return "The event could not be created";
    case ChangeKind::edit:
        return "The event could not be changed";
    case ChangeKind::move:
        return "The event could not be moved";
    case ChangeKind::remove:
        return "The event could not be removed";
    }
    return "";
}

} // namespace

OutboxSending::OutboxSending(std::shared_ptr<Channel> channel, std::shared_ptr<CallState> call,
    PendingChange change, Standing standing, Ends ends)
    : change_(std::move(change))
    , standing_(standing)
    , ends_(std::move(ends))
    , access_ {std::move(channel), std::move(call), whatOf(change_.kind)}
{
}

void OutboxSending::start() const
{
    switch (change_.kind) {
    case ChangeKind::create:
        return create();
    case ChangeKind::edit:
        return edit();
    case ChangeKind::move:
        return standing_.isLeftBehind ? lookForMove() : move(base(), true);
    case ChangeKind::remove:
        return remove();
    }
}

ResourceAccess::Read OutboxSending::orFail(Found next) const
{
    return [self = *this, next = std::move(next)](Result<std::optional<Resource>> found) {
        if (found) return next(std::move(found).value());
        auto failure = found.failure();
        failure.isUncertain = self.standing_.isLeftBehind;
        self.fail(std::move(failure));
    };
}

void OutboxSending::look(const std::string& place, Found next) const
{
    access_.read(place, orFail(std::move(next)));
}

void OutboxSending::park(
    FailureKind kind, const std::string& reason, const std::string& theirs) const
{
    fail({.kind = kind,
        .reason = access_.what + ": " + reason,
        .texts = std::make_shared<const BothTexts>(BothTexts {textAfter(change_), theirs})});
}

void OutboxSending::parkRemoved() const
{
    park(FailureKind::missing, "it was removed on the server meanwhile.", std::string());
}

void OutboxSending::create() const
{
    const auto event = EventText::read(change_.content);
    if (!event) return fail(event.failure());
    createEventAt(access_, change_.href, event.value(), [self = *this](Result<Resource> created) {
        if (created) return self.settle(created.value(), HeldThere::ours);
        const auto& failure = created.failure();
        if (failure.isUncertain || failure.status == 0) return self.fail(failure);
        const bool isTaken
            = failure.kind == FailureKind::changed || failure.kind == FailureKind::conflict;
        if (isTaken || self.standing_.isLeftBehind) return self.readCreated(failure);
        self.fail(failure);
    });
}

/// Something is there: this event, of an attempt whose end nobody saw, or another one.
void OutboxSending::readCreated(const Failure& failure) const
{
    look(change_.href, [self = *this, failure](std::optional<Resource> found) {
        if (!found) return self.fail(failure);
        const auto theirs = EventText::read(found->text);
        const bool isOurs = theirs && theirs.value().uid() == self.change_.uid
            && (self.standing_.isLeftBehind || meanTheSame(found->text, self.change_.content));
        if (isOurs) return self.settle(*found);
        self.park(FailureKind::changed, "another one is at its place.", found->text);
    });
}

void OutboxSending::edit() const
{
    if (isWholeText(change_)) return replaceWhole();
    const auto edit = EventEdit::read(change_.content);
    if (!edit) return fail(edit.failure());
    if (standing_.isLeftBehind) return lookForEdit(edit.value());
    makeEdit(edit.value());
}

void OutboxSending::lookForEdit(const EventEdit& edit) const
{
    look(change_.href, [self = *this, edit](std::optional<Resource> found) {
        if (!found) {
            return self.parkRemoved();
        }
        // An edit that makes no difference any more was made.
        const auto theirs = EventText::read(found->text);
        if (theirs && found->text != self.change_.baseText) {
            const auto again = theirs.value().apply(edit);
            const bool isMade = meanTheSame(found->text, textAfter(self.change_))
                || (again && again.value().event.text() == found->text && !again.value().following);
            // An instance that is gone was taken away.
            const bool isGone
                = !again && edit.isRemoval && again.failure().kind == FailureKind::missing;
            if (isMade || isGone) return self.settle(*found);
        }
        self.makeEdit(edit);
    });
}

void OutboxSending::makeEdit(const EventEdit& edit) const
{
    const auto end = [self = *this](auto changed, bool isMerged) {
        if (!changed) return self.fail(changed.failure());
        self.settle(changed.value().resource, isMerged ? HeldThere::whatever : HeldThere::ours);
    };
    std::make_shared<ChangeEvent>(
        access_, base(), edit, end, standing_.isDivision ? &mergeDivision : &mergeEdit)
        ->start();
}

/// The host has seen what is there and wants its own text all the same.
void OutboxSending::replaceWhole() const
{
    look(change_.href, [self = *this](std::optional<Resource> found) {
        const auto& change = self.change_;
        if (!found) {
            return self.parkRemoved();
        }
        if (meanTheSame(found->text, change.content)) return self.settle(*found);
        if (found->text != change.baseText || found->tag.empty())
            return self.park(FailureKind::changed, "it was changed again.", found->text);
        self.access_.replace(*found, change.content, [self, found](Result<std::string> written) {
            if (!written) return self.fail(written.failure());
            confirm(self.access_, {self.change_.href, written.value(), self.change_.content},
                found->tag, [self](Result<Resource> resource) {
                    if (!resource) return self.fail(resource.failure());
                    self.settle(resource.value(), HeldThere::ours);
                });
        });
    });
}

/// The text makes no difference to a move: what others have changed meanwhile is moved too.
void OutboxSending::move(const Resource& current, bool mayTryAgain) const
{
    moveEvent(access_, current, change_.destination,
        [self = *this, current, mayTryAgain](Result<Resource> moved) {
            if (moved) return self.settle(moved.value());
            const auto failure = moved.failure();
            if (failure.kind == FailureKind::missing) return self.parkRemoved();
            if (failure.isUncertain || failure.kind != FailureKind::changed || !mayTryAgain)
                return self.fail(failure);
            self.look(self.change_.href, [self, current, failure](std::optional<Resource> found) {
                if (!found || found->tag == current.tag) return self.fail(failure);
                self.move(*found, false);
            });
        });
}

void OutboxSending::lookForMove() const
{
    const auto next = [self = *this](std::optional<Resource> there) {
        if (!there) return self.move(self.base(), true);
        self.look(self.change_.href, [self, there](std::optional<Resource> here) {
            if (!here) return self.settle(*there);
            if (!isSameButStamps(here->text, there->text))
                return self.park(FailureKind::changed, "another one is there.", there->text);
            // Copied, but not removed here, where the server has no MOVE.
            removeEvent(self.access_, *here, [self, there](Outcome removed) {
                if (removed) return self.settle(*there);
                self.fail(removed.failure());
            });
        });
    };
    readMoved(access_, placeAfter(change_), orFail(next));
}

void OutboxSending::remove() const
{
    if (change_.baseTag.empty()) return removeIfSame();
    removeEvent(access_, base(), [self = *this](Outcome removed) {
        if (removed) return self.settle({self.change_.href, {}, {}});
        const auto& failure = removed.failure();
        const bool isSame = failure.kind == FailureKind::changed && failure.texts
            && isSameButStamps(failure.texts->theirs, self.change_.baseText);
        if (isSame) return self.removeIfSame();
        self.fail(failure);
    });
}

/// Where no tag is known of what is to be removed, such as after an edit before it.
void OutboxSending::removeIfSame() const
{
    look(change_.href, [self = *this](std::optional<Resource> found) {
        if (!found) return self.settle({self.change_.href, {}, {}});
        if (!isSameButStamps(found->text, self.change_.baseText))
            return self.park(FailureKind::changed, "it was changed meanwhile.", found->text);
        removeEvent(self.access_, *found, [self](Outcome removed) {
            if (removed) return self.settle({self.change_.href, {}, {}});
            self.fail(removed.failure());
        });
    });
}

} // namespace Tessel
