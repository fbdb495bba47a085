#pragma once

#include "Tessel/Session/Sync/Changes.h"
#include "Tessel/Session/Sync/ResourceFetch.h"
#include "Tessel/Session/Sync/ResourceListing.h"

#include <memory>
#include <unordered_map>

namespace Tessel {

/// Brings what is held of one calendar to the server's state: by what has changed since the sync
/// token (RFC 6578), page by page; else, when the ctag has changed, by comparing all tags.
///
/// Batches are stored as they come. The mark is stored with the last, once all that it announces
/// has arrived or is noted as failed; so is what was deleted.
class CalendarSync final : public std::enable_shared_from_this<CalendarSync> {
public:
    using Done = std::function<void(CalendarChanges)>;
    using Report = std::function<void(std::size_t done, std::size_t total)>;

    /// `listed` is the calendar as the server lists it now, `held` its mark in the store.
    CalendarSync(std::shared_ptr<Channel> channel, std::shared_ptr<Store> store,
        StoredCalendar listed, SyncMark held, std::shared_ptr<CallState> call, Report report,
        Done done);

    void start();

private:
    enum class Fate : char { unchanged, added, edited };
    struct Held {
        HeldTag tag;
        Fate fate = Fate::unchanged; ///< in this sync
    };

    void askForChanges();
    void askForAll();
    void readChanges(Result<ResourceListing> result);
    void readAll(Result<ResourceListing> result);
    void bring(const ResourceListing& listing, SyncMark mark, bool isLast);
    std::optional<Failure> takeNames(std::vector<Resource>& resources) const;
    bool keep(FetchedBatch batch);
    void finishPage();
    bool apply(Batch& batch);
    void end(std::optional<Failure> failure);

    const std::shared_ptr<Channel> channel_;
    const std::shared_ptr<Store> store_;
    const StoredCalendar listed_;
    SyncMark held_;
    const std::shared_ptr<CallState> call_;
    const Report report_;
    Done done_;

    // All three by comparable path. A resource may be told of on several pages.
    std::unordered_map<std::string, Held> tags_; ///< what is held
    std::unordered_map<std::string, std::string> deleted_; ///< hrefs of what was held before
    std::unordered_map<std::string, FailedResource> failed_;
    std::vector<FailedResource> wasFailed_;
    Batch page_; ///< what the page's last step stores
    bool isLastPage_ = true;
    CalendarChanges changes_; ///< filled at the end, but for what comes with the last page
    std::size_t arrived_ = 0;
    std::size_t total_ = 0;
    int pages_ = 0;
};

} // namespace Tessel
