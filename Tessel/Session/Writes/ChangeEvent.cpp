#include "Tessel/Session/Writes/ChangeEvent.h"

#include "Tessel/Platform/Foundation/Base/Limits.h"
#include "Tessel/Session/Exchange/AnswerFailure.h"
#include "Tessel/Session/Recurrence/MissingInstance.h"
#include "Tessel/Session/Text/SameMeaning.h"
#include "Tessel/Session/Writes/RemoveEvent.h"

namespace Tessel {

ChangeEvent::ChangeEvent(
    ResourceAccess access, Resource base, EventEdit edit, Done done, Merge merge)
    : access_(std::move(access))
    , base_(std::move(base))
    , edit_(std::move(edit))
    , merge_(merge)
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
    if (!canGuard(current_.tag)) {
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
            current_.tag, [self = shared_from_this()](Result<Resource> resource) {
                if (!resource) return self->fail(resource.failure());
                self->end(std::move(resource).value());
            });
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
                failure.texts = self->bothTexts({});
                return self->fail(std::move(failure));
            }
            self->mergeWith(std::move(*found.value()), failure);
        });
}

void ChangeEvent::mergeWith(Resource theirs, const Failure& why)
{
    if (meanTheSame(theirs.text, edited_->event.text())) return end(std::move(theirs));
    const bool isAnswered = why.status != 0;
    if (why.isUncertain && isAnswered && theirs.tag == current_.tag) return failUndone(why);
    // One that was lost is sent once more, guarded as before.
    if (why.isUncertain && wasLost_) return fail(why);
    wasLost_ = wasLost_ || why.isUncertain;
    if (tries_ >= Limits::changeTries || isLate() || !canGuard(theirs.tag)) return fail(why);
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
            failure->texts = bothTexts(theirs);
            return fail(std::move(*failure));
        }
        auto merged = merge_(base.value(), edit_, newer.value(), Date());
        if (!merged) {
            auto failure = merged.failure();
            failure.method = why.method;
            failure.url = why.url;
            failure.status = why.status;
            // It may have been ours that the other edit was made on.
            failure.isUncertain = why.isUncertain;
            if (!failure.texts) failure.texts = bothTexts(theirs);
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

/// Whether others who write all the time have kept it for as long as one request may take.
bool ChangeEvent::isLate() const
{
    const auto& limit = access_.channel->settings().limit;
    return limit && std::chrono::steady_clock::now() > begun_ + *limit;
}

std::shared_ptr<const BothTexts> ChangeEvent::bothTexts(const Resource& theirs) const
{
    return std::make_shared<const BothTexts>(BothTexts {edited_->event.text(), theirs.text});
}

void ChangeEvent::end(Resource resource)
{
    done_(ChangedEvent {std::move(resource), std::move(following_)}, isMerged_);
}

/// The new series was made of the older text: what others have changed in its days is not in it.
void ChangeEvent::takeBackFollowing(Resource theirs)
{
    removeEvent(access_, *following_, [self = shared_from_this(), theirs](Outcome removed) mutable {
        if (!removed) return self->failWithFollowing(removed.failure());
        self->following_ = std::nullopt;
        self->current_ = std::move(theirs);
        self->write();
    });
}

void ChangeEvent::fail(Failure failure)
{
    if (!following_) return done_(std::move(failure), isMerged_);
    // The series may be shortened already: its later days are in the new one, which stays.
    if (failure.isUncertain) return failWithFollowing(std::move(failure));
    removeEvent(access_, *following_, [self = shared_from_this(), failure](Outcome removed) {
        if (!removed) return self->failWithFollowing(failure);
        self->done_(failure, self->isMerged_);
    });
}

/// The server has answered with a fault of its own, and what it holds is what was to be changed.
void ChangeEvent::failUndone(Failure failure)
{
    failure.isUncertain = mayStillArrive(failure);
    fail(std::move(failure));
}

void ChangeEvent::failWithFollowing(Failure failure)
{
    failure.isUncertain = true;
    failure.reason += " The days that follow were written to " + following_->href + ".";
    done_(std::move(failure), isMerged_);
}

} // namespace Tessel
