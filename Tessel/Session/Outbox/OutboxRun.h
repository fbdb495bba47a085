#pragma once

#include "Tessel/Session/Exchange/Channel.h"
#include "Tessel/Session/Outbox/OutboxSending.h"
#include "Tessel/Session/Outbox/Sent.h"
#include "Tessel/Session/Store/Store.h"

#include <cstddef>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace Tessel {

/// Sends what waits in an outbox, one change after another. Each is marked as being sent before it
/// is, and settled in one step with what the store then holds; one that was left behind as being
/// sent is looked for first. A change that fails holds back those of its resource that follow.
class OutboxRun final : public std::enable_shared_from_this<OutboxRun> {
public:
    OutboxRun(std::shared_ptr<Channel> channel, std::shared_ptr<Store> store, SendReport report,
        std::shared_ptr<PendingCall<Sent>> call);

    void start();

private:
    struct Settled {
        Resource resource;
        HeldThere held;
    };

    void pass();
    void sendNext();
    bool isHeldBack(const PendingChange& change) const;
    void holdBack(const PendingChange& change);
    static bool isMadeOn(const PendingChange& change, const Settled& before);
    bool claim(PendingChange& change);
    bool look(const std::string& place, bool isLeftBehind);
    void tried();

    // How a change ends.
    void settle(const PendingChange& change, Resource resource, HeldThere held);
    void fail(PendingChange change, Failure failure);
    bool write(const PendingChange& change);

    std::string calendarOf(const std::string& place) const;
    Result<std::optional<HeldTag>> heldAt(
        const std::string& calendar, const std::string& place, bool isLeftBehind) const;
    void expectAsBefore(Batch& batch) const;

    const std::shared_ptr<Channel> channel_;
    const std::shared_ptr<Store> store_;
    const SendReport report_;
    const std::shared_ptr<PendingCall<Sent>> call_;
    std::vector<std::string> calendars_; ///< that the store holds
    std::vector<PendingChange> pending_;
    std::size_t next_ = 0;
    std::size_t tried_ = 0;
    std::size_t triedBefore_ = 0; ///< this pass
    std::set<std::string> heldBack_; ///< paths, and ids of changes
    std::set<std::string> divisions_; ///< ids of changes whose second part waits
    std::map<std::string, Settled> results_; ///< of this run, by path
    /// Where the change that is being sent is and will be, by calendar, as the store held it
    /// before.
    std::map<std::string, HeldTag> heldBefore_;
    Sent sent_;
};

} // namespace Tessel
