#pragma once

#include "Tessel/Session/Exchange/Channel.h"
#include "Tessel/Session/Store/Batch.h"

#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Tessel {

/// What one request for several resources has brought.
struct FetchedBatch {
    std::vector<Resource> resources;
    std::vector<FailedResource> failed; ///< with the reason: every other one that was asked for
};

/// Fetches resources by their places, a batch a request (calendar-multiget, RFC 4791, 7.9), a few
/// at a time: the next travel while one is read and another is handed over. Memory holds these
/// batches and no more.
class ResourceFetch final : public std::enable_shared_from_this<ResourceFetch> {
public:
    /// Takes a batch and says whether to go on.
    using Arrived = std::function<bool(FetchedBatch)>;
    /// Told once at the end, unless `arrived` said no: with the failure of the first request that
    /// failed as a whole. One that a single resource may have spoilt is asked again in halves, so
    /// that only that one fails, unless everything does.
    using Done = std::function<void(std::optional<Failure>)>;

    ResourceFetch(std::shared_ptr<Channel> channel, std::string calendar,
        std::deque<std::string> places, std::shared_ptr<CallState> call, Arrived arrived,
        Done done);

    void start();

private:
    void sendNext();
    void ask(std::vector<std::string> places);
    void take(const std::vector<std::string>& asked, Result<FetchedBatch> batch);

    const std::shared_ptr<Channel> channel_;
    const std::string calendar_;
    const std::shared_ptr<CallState> call_;
    const Arrived arrived_;
    const Done done_;
    std::deque<std::string> places_; ///< that have not been asked for yet
    std::size_t underWay_ = 0;
    int failuresInARow_ = 0;
    bool isOver_ = false;
};

} // namespace Tessel
