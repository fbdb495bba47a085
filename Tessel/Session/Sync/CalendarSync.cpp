#include "Tessel/Session/Sync/CalendarSync.h"

#include "Tessel/Session/Exchange/Href.h"

#include <algorithm>
#include <deque>
#include <unordered_set>

namespace Tessel {

namespace {

/// A server that always has more to tell, without end, is left after so many pages.
constexpr int mostPages = 10'000;

} // namespace

CalendarSync::CalendarSync(std::shared_ptr<Channel> channel, std::shared_ptr<Store> store,
    StoredCalendar listed, SyncMark held, std::shared_ptr<CallState> call, Report report, Done done)
    : channel_(std::move(channel))
    , store_(std::move(store))
    , listed_(std::move(listed))
    , held_(std::move(held))
    , call_(std::move(call))
    , report_(std::move(report))
    , done_(std::move(done))
{
    changes_.calendar = listed_.href;
    changes_.displayName = listed_.displayName;
}

void CalendarSync::start()
{
    auto failed = store_->failed(listed_.href);
    if (!failed) return fail(failed.failure());
    wasFailed_ = std::move(failed).value();

    const auto& mark = listed_.mark;
    const bool isUnchanged = mark.syncToken.empty() ? !mark.cTag.empty() && mark.cTag == held_.cTag
                                                    : mark.syncToken == held_.syncToken;
    if (isUnchanged && wasFailed_.empty()) return done_(std::move(changes_));

    auto tags = store_->tags(listed_.href);
    if (!tags) return fail(tags.failure());
    tags_.reserve(tags.value().size());
    for (auto& tag : tags.value()) {
        auto path = normalPath(tag.href);
        tags_.emplace(std::move(path), std::move(tag));
    }
    if (!mark.syncToken.empty() && !held_.syncToken.empty()) {
        askForChanges();
    } else {
        askForAll();
    }
}

void CalendarSync::askForChanges()
{
    listChanges(channel_, listed_.href, held_.syncToken, call_,
        [self = shared_from_this()](auto result) { self->readChanges(std::move(result)); });
}

void CalendarSync::askForAll()
{
    listResources(channel_, listed_.href, call_,
        [self = shared_from_this()](auto result) { self->readAll(std::move(result)); });
}

void CalendarSync::readChanges(Result<ResourceListing> result)
{
    if (!result) return fail(result.failure());
    auto& listing = result.value();
    if (listing.isExpired || ++pages_ > mostPages) return askForAll();

    // What failed before is asked for again, unless this page tells of it.
    std::unordered_set<std::string> told;
    for (const auto& each : listing.present)
        told.insert(normalPath(each.href));
    for (const auto& removed : listing.removed)
        told.insert(normalPath(removed));
    for (const auto& each : std::exchange(wasFailed_, {})) {
        if (!told.contains(normalPath(each.href))) listing.present.push_back({each.href, {}});
    }
    for (const auto& removed : listing.removed) {
        const auto held = tags_.find(normalPath(removed));
        page_.removed.push_back(held == tags_.end() ? removed : held->second.href);
        if (held == tags_.end()) continue;
        // What came with one page and is gone with the next was never there before.
        if (std::erase(changes_.added, held->second.href) == 0)
            changes_.deleted.push_back(held->second.href);
        tags_.erase(held);
    }
    bring(listing, {listed_.mark.cTag, listing.token}, !listing.isTruncated);
}

void CalendarSync::readAll(Result<ResourceListing> result)
{
    if (!result) return fail(result.failure());
    std::unordered_set<std::string> present;
    if (!tags_.empty() || !wasFailed_.empty())
        for (const auto& each : result.value().present)
            present.insert(normalPath(each.href));
    for (const auto& [path, held] : tags_) {
        if (present.contains(path)) continue;
        page_.removed.push_back(held.href);
        changes_.deleted.push_back(held.href);
    }
    for (const auto& failed : wasFailed_) {
        if (!present.contains(normalPath(failed.href))) page_.removed.push_back(failed.href);
    }
    std::sort(changes_.deleted.begin(), changes_.deleted.end());
    // The mark is the one that was listed before: what has changed since will be announced again.
    bring(result.value(), listed_.mark, true);
}

void CalendarSync::bring(const ResourceListing& listing, SyncMark mark, bool isLast)
{
    isLastPage_ = isLast;
    page_.mark = std::move(mark);
    std::unordered_set<std::string> failedBefore;
    for (const auto& each : wasFailed_)
        failedBefore.insert(normalPath(each.href));
    std::deque<std::string> wanted;
    for (const auto& each : listing.present) {
        const auto path = normalPath(each.href);
        const auto held = tags_.find(path);
        const bool isHeld
            = held != tags_.end() && !each.tag.empty() && held->second.tag == each.tag;
        if (isHeld && !failedBefore.contains(path)) continue;
        // One resource keeps one name, however the server spells it from now on.
        wanted.push_back(held == tags_.end() ? each.href : held->second.href);
    }
    total_ += wanted.size();
    if (report_) report_(arrived_, total_);
    const auto fetch = std::make_shared<ResourceFetch>(
        channel_, listed_.href, std::move(wanted), call_,
        [self = shared_from_this()](FetchedBatch batch) { return self->keep(std::move(batch)); },
        [self = shared_from_this()](std::optional<Failure> failure) {
            if (failure) return self->fail(std::move(*failure));
            self->finishPage();
        });
    fetch->start();
}

bool CalendarSync::keep(FetchedBatch batch)
{
    arrived_ += batch.resources.size() + batch.failed.size();
    for (const auto& resource : batch.resources) {
        auto path = normalPath(resource.href);
        (tags_.contains(path) ? changes_.edited : changes_.added).push_back(resource.href);
        // What pages to come tell of is compared with this.
        if (!isLastPage_)
            tags_.insert_or_assign(std::move(path), HeldTag {resource.href, resource.tag});
    }
    for (const auto& each : batch.failed)
        changes_.failed.push_back(each);
    const bool isKept = apply({.calendar = listed_.href,
        .upserts = std::move(batch.resources),
        .failed = std::move(batch.failed)});
    if (isKept && report_) report_(arrived_, total_);
    return isKept;
}

void CalendarSync::finishPage()
{
    page_.calendar = listed_.href;
    const auto mark = page_.mark;
    if (!apply(std::exchange(page_, {}))) return;
    held_ = *mark;
    if (!isLastPage_) return askForChanges();
    done_(std::move(changes_));
}

bool CalendarSync::apply(Batch batch)
{
    batch.basedOn = held_;
    if (const auto outcome = store_->apply(batch); !outcome) {
        fail(outcome.failure());
        return false;
    }
    return true;
}

void CalendarSync::fail(Failure failure)
{
    // What was to be deleted with the page's last step is held on.
    if (!page_.removed.empty()) {
        const std::unordered_set<std::string> kept(page_.removed.begin(), page_.removed.end());
        std::erase_if(changes_.deleted, [&](const auto& href) { return kept.contains(href); });
    }
    changes_.failure = std::move(failure);
    done_(std::move(changes_));
}

} // namespace Tessel
