#include "Tessel/Session/Writes/ChangeEvent.h"

#include "Tessel/Platform/Foundation/Base/Limits.h"
#include "Tessel/Session/Recurrence/MissingInstance.h"
#include "Tessel/Session/Text/SameMeaning.h"
#include "Tessel/Session/Writes/RemoveEvent.h"

namespace Tessel {

ChangeEvent::ChangeEvent(ResourceAccess access, Resource base, EventEdit edit, Done done)
    : access_(std::move(access))
    , base_(std::move(base))
    , edit_(std::move(edit))
    , done_(std::move(done))
    , current_(base_)
{
}

void ChangeEvent::start()
{
    const auto event = EventText::read(base_.text);
    if (!event) return fail(event.failure());
    if (auto failure = missingInstance(event.value(), edit_)) return fail(std::move(*failure));
    auto edited = event.value().apply(edit_);
    if (!edited) return fail(edited.failure());
    edited_ = std::move(edited).value();
    if (current_.tag.empty() || current_.tag.starts_with("W/")) {
        // Nothing guards a write without a tag: what is there may be newer.
        return look({.kind = FailureKind::unsupported,
            .reason = access_.what + ": the server gives no tag that would guard the change."});
    }
    write();
}

void ChangeEvent::write()
{
    if (edited_->following && !following_) return createFollowing();
    const auto& text = edited_->event.text();
    if (text == current_.text) return end(current_);
    ++tries_;
    access_.replace(current_, text,
        [self = shared_from_this()](auto result) { self->readWritten(std::move(result)); });
}

/// The new series first: should the second step fail, it can be taken back, and no day is lost.
void ChangeEvent::createFollowing()
{
    auto calendar = current_.href.substr(0, current_.href.rfind('/') + 1);
    createEvent(access_, calendar, *edited_->following,
        [self = shared_from_this()](Result<Resource> created) {
            if (!created) return self->fail(created.failure());
            self->following_ = std::move(created).value();
            self->write();
        });
}

void ChangeEvent::readWritten(Result<std::string> result)
{
    if (result) {
        return confirm(access_, {current_.href, result.value(), edited_->event.text()},
            [self = shared_from_this()](
                Result<Resource> resource) { self->end(std::move(resource).value()); });
    }
    const auto& failure = result.failure();
    if (failure.kind == FailureKind::changed || failure.isUncertain) return look(failure);
    fail(failure);
}

void ChangeEvent::look(Failure failure)
{
    access_.read(current_.href,
        [self = shared_from_this(), failure](Result<std::optional<Resource>> found) mutable {
            if (!found) return self->fail(failure.isUncertain ? failure : found.failure());
            if (!found.value()) {
                failure.kind = FailureKind::missing;
                failure.isUncertain = false;
                failure.reason = self->access_.what + ": it was removed on the server meanwhile.";
                failure.texts = std::make_shared<const BothTexts>(
                    BothTexts {self->edited_->event.text(), std::string()});
                return self->fail(std::move(failure));
            }
            self->mergeWith(std::move(*found.value()), failure);
        });
}

void ChangeEvent::mergeWith(Resource theirs, const Failure& why)
{
    if (meanTheSame(theirs.text, edited_->event.text())) return end(std::move(theirs));
    // One that was lost is sent once more, guarded as before.
    if (why.isUncertain && wasLost_) return fail(why);
    wasLost_ = wasLost_ || why.isUncertain;
    const bool hasTag = !theirs.tag.empty() && !theirs.tag.starts_with("W/");
    if (tries_ >= Limits::changeTries || !hasTag) return fail(why);
    const auto base = EventText::read(base_.text);
    const auto newer = EventText::read(theirs.text);
    if (!newer) return fail(newer.failure());
    if (theirs.text != base_.text) {
        isMerged_ = true;
        // What makes no difference there any more was done already, by us or by others.
        const auto again = newer.value().apply(edit_);
        if (why.isUncertain && again && again.value().event.text() == theirs.text)
            return end(std::move(theirs));
        if (auto failure = missingInstance(newer.value(), edit_)) {
            failure->isUncertain = why.isUncertain;
            return fail(std::move(*failure));
        }
        auto merged = mergeEdit(base.value(), edit_, newer.value());
        if (!merged) {
            auto failure = merged.failure();
            failure.method = why.method;
            failure.url = why.url;
            failure.status = why.status;
            // It may have been ours that the other edit was made on.
            failure.isUncertain = why.isUncertain;
            if (!failure.texts) {
                failure.texts = std::make_shared<const BothTexts>(
                    BothTexts {edited_->event.text(), theirs.text});
            }
            return fail(std::move(failure));
        }
        // A series that ends there already may be as we have left it: its later days are in the
        // new one.
        if (following_ && !merged.value().following && why.isUncertain) return fail(why);
        edited_->following = std::move(merged.value().following);
        edited_->event = std::move(merged.value().event);
        if (following_) return takeBackFollowing(std::move(theirs));
    }
    current_ = std::move(theirs);
    write();
}

void ChangeEvent::end(Resource resource)
{
    done_(ChangedEvent {std::move(resource), std::move(following_)}, isMerged_);
}

/// The new series was made of the older text: what others have changed in its days is not in it.
void ChangeEvent::takeBackFollowing(Resource theirs)
{
    removeEvent(access_, *following_, [self = shared_from_this(), theirs](Outcome removed) mutable {
        if (!removed) return self->done_(removed.failure(), self->isMerged_);
        self->following_ = std::nullopt;
        self->current_ = std::move(theirs);
        self->write();
    });
}

void ChangeEvent::fail(Failure failure)
{
    if (!following_) return done_(std::move(failure), isMerged_);
    if (failure.isUncertain) {
        // The series may be shortened already: its later days are in the new one, which stays.
        failure.reason += " The days that follow were written to " + following_->href + ".";
        return done_(std::move(failure), isMerged_);
    }
    removeEvent(access_, *following_,
        [self = shared_from_this(), failure](Outcome) { self->done_(failure, self->isMerged_); });
}

} // namespace Tessel
