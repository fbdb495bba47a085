#include "Tessel/Session/Sync/CalendarSync.h"

#include "Tessel/Platform/Foundation/Base/Limits.h"
#include "Tessel/Session/Exchange/Href.h"

#include <algorithm>
#include <deque>
#include <unordered_set>

namespace Tessel {

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
    if (!failed) return end(failed.failure());
    wasFailed_ = std::move(failed).value();

    const auto& mark = listed_.mark;
    const bool isUnchanged = mark.syncToken.empty() ? !mark.cTag.empty() && mark.cTag == held_.cTag
                                                    : mark.syncToken == held_.syncToken;
    if (isUnchanged && wasFailed_.empty()) return done_(std::move(changes_));

    auto tags = store_->tags(listed_.href);
    if (!tags) return end(tags.failure());
    tags_.reserve(tags.value().size());
    for (auto& tag : tags.value()) {
        auto path = normalPath(tag.href);
        Held held {std::move(tag)};
        const auto [place, isFirst] = tags_.try_emplace(std::move(path), std::move(held));
        if (isFirst) continue;
        // Held twice, in two spellings: the one would never be brought again, the other may be the
        // older of the two.
        page_.removed.push_back(std::move(held.tag.href));
        wasFailed_.push_back({place->second.tag.href, {}});
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
    if (!result) return end(result.failure());
    auto& listing = result.value();
    if (listing.isExpired || ++pages_ > Limits::listingPages) return askForAll();

    std::unordered_set<std::string> told;
    for (const auto& each : listing.present)
        told.insert(normalPath(each.href));
    for (const auto& removed : listing.removed) {
        const auto path = normalPath(removed);
        // One that is told of as present too is asked for, which shows.
        if (!told.insert(path).second) continue;
        const auto held = tags_.find(path);
        page_.removed.push_back(held == tags_.end() ? removed : held->second.tag.href);
    }
    // What failed before is asked for again, unless this page tells of it.
    for (const auto& each : std::exchange(wasFailed_, {})) {
        if (!told.contains(normalPath(each.href))) listing.present.push_back({each.href, {}});
    }
    bring(listing, {listed_.mark.cTag, listing.token}, !listing.isTruncated);
}

void CalendarSync::readAll(Result<ResourceListing> result)
{
    if (!result) return end(result.failure());
    std::unordered_set<std::string> present;
    if (!tags_.empty() || !wasFailed_.empty())
        for (const auto& each : result.value().present)
            present.insert(normalPath(each.href));
    for (const auto& [path, held] : tags_) {
        if (!present.contains(path)) page_.removed.push_back(held.tag.href);
    }
    for (const auto& failed : wasFailed_) {
        if (!present.contains(normalPath(failed.href))) page_.removed.push_back(failed.href);
    }
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
    std::unordered_set<std::string> wantedPaths;
    for (const auto& each : listing.present) {
        const auto path = normalPath(each.href);
        const auto held = tags_.find(path);
        const bool isHeld
            = held != tags_.end() && !each.tag.empty() && held->second.tag.tag == each.tag;
        if (isHeld && !failedBefore.contains(path)) continue;
        if (!wantedPaths.insert(path).second) continue;
        // One resource keeps one name, however the server spells it from now on.
        wanted.push_back(held == tags_.end() ? each.href : held->second.tag.href);
    }
    total_ += wanted.size();
    if (report_) report_(arrived_, total_);
    const auto fetch = std::make_shared<ResourceFetch>(
        channel_, listed_.href, std::move(wanted), call_,
        [self = shared_from_this()](FetchedBatch batch) { return self->keep(std::move(batch)); },
        [self = shared_from_this()](std::optional<Failure> failure) {
            if (failure) return self->end(std::move(failure));
            self->finishPage();
        });
    fetch->start();
}

/// An outbox may have stored what is new here while this sync ran: it keeps that name.
std::optional<Failure> CalendarSync::takeNames(std::vector<Resource>& resources) const
{
    for (auto& resource : resources) {
        if (tags_.empty() || tags_.contains(normalPath(resource.href))) continue;
        const auto spellings = spellingsOf(listed_.href, resource.href);
        for (std::size_t i = 1; i < spellings.size(); ++i) {
            const auto held = store_->resource(listed_.href, spellings[i]);
            if (!held) return held.failure();
            if (held.value()) resource.href = spellings[i];
        }
    }
    return std::nullopt;
}

bool CalendarSync::keep(FetchedBatch batch)
{
    const auto arrived = batch.resources.size() + batch.failed.size();
    if (auto failure = takeNames(batch.resources)) {
        end(std::move(failure));
        return false;
    }
    Batch stored {.calendar = listed_.href,
        .upserts = std::move(batch.resources),
        .failed = std::move(batch.failed)};
    if (!apply(stored)) return false;
    for (const auto& resource : stored.upserts) {
        auto path = normalPath(resource.href);
        failed_.erase(path);
        if (const auto place = tags_.find(path); place != tags_.end()) {
            auto& held = place->second;
            held.tag = {resource.href, resource.tag};
            if (held.fate == Fate::unchanged) held.fate = Fate::edited;
            continue;
        }
        const auto fate = deleted_.erase(path) > 0 ? Fate::edited : Fate::added;
        if (!isLastPage_) {
            tags_.emplace(std::move(path), Held {{resource.href, resource.tag}, fate});
        } else { // nothing that is still to come is compared with it
            (fate == Fate::added ? changes_.added : changes_.edited).push_back(resource.href);
        }
    }
    for (auto& each : stored.failed) {
        auto path = normalPath(each.href);
        failed_.insert_or_assign(std::move(path), std::move(each));
    }
    arrived_ += arrived;
    if (report_) report_(arrived_, total_);
    return true;
}

void CalendarSync::finishPage()
{
    page_.calendar = listed_.href;
    if (!apply(page_)) return;
    const auto page = std::exchange(page_, {});
    held_ = *page.mark;
    for (const auto& href : page.removed) {
        const auto path = normalPath(href);
        failed_.erase(path);
        const auto held = tags_.find(path);
        if (held == tags_.end() || held->second.tag.href != href) continue;
        // What came with one page and is gone with the next was never there before.
        if (held->second.fate != Fate::added) deleted_.emplace(path, href);
        tags_.erase(held);
    }
    if (!isLastPage_) return askForChanges();
    end(std::nullopt);
}

bool CalendarSync::apply(Batch& batch)
{
    batch.basedOn = held_;
    if (const auto outcome = store_->apply(batch); !outcome) {
        end(outcome.failure());
        return false;
    }
    return true;
}

void CalendarSync::end(std::optional<Failure> failure)
{
    for (auto& [path, held] : tags_) {
        if (held.fate == Fate::added) changes_.added.push_back(std::move(held.tag.href));
        if (held.fate == Fate::edited) changes_.edited.push_back(std::move(held.tag.href));
    }
    for (auto& [path, href] : deleted_)
        changes_.deleted.push_back(std::move(href));
    for (auto& [path, each] : failed_)
        changes_.failed.push_back(std::move(each));
    for (auto* hrefs : {&changes_.added, &changes_.edited, &changes_.deleted})
        std::sort(hrefs->begin(), hrefs->end());
    std::sort(changes_.failed.begin(), changes_.failed.end(),
        [](const auto& a, const auto& b) { return a.href < b.href; });
    changes_.failure = std::move(failure);
    done_(std::move(changes_));
}

} // namespace Tessel
