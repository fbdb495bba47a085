#pragma once

#include "Tessel/Session/Store/PendingChange.h"
#include "Tessel/Session/Text/EventText.h"
#include "Tessel/Session/Writes/ResourceAccess.h"

#include <functional>
#include <memory>
#include <optional>

namespace Tessel {

/// What there is once a change is made.
enum class HeldThere {
    ours, ///< what was written just now, as the server has made it
    whatever, ///< others may have had a part in it
};

/// One change of an outbox on its way to the server. A copy goes with each continuation.
class OutboxSending {
public:
    /// How a change ends: exactly one of them is called, as a step of the call.
    struct Ends {
        std::function<void(const PendingChange&, const Resource&, HeldThere)> settle;
        std::function<void(const PendingChange&, Failure)> fail;
    };

    /// How it stands with the change.
    struct Standing {
        bool isLeftBehind; ///< it was sent before, and nobody knows what became of it
        bool isDivision; ///< what it takes away from a series waits to be created
    };

    OutboxSending(std::shared_ptr<Channel> channel, std::shared_ptr<CallState> call,
        PendingChange change, Standing standing, Ends ends);

    void start() const;

private:
    void create() const;
    void readCreated(const Failure& failure) const;
    void edit() const;
    void lookForEdit(const EventEdit& edit) const;
    void makeEdit(const EventEdit& edit) const;
    void replaceWhole() const;
    void move(const Resource& current, bool mayTryAgain) const;
    void lookForMove() const;
    void remove() const;
    void removeIfSame() const;

    using Found = std::function<void(std::optional<Resource>)>;
    /// Goes on with what is there; what cannot be read fails, as uncertain where it was sent.
    void look(const std::string& place, Found next) const;
    ResourceAccess::Read orFail(Found next) const;
    void settle(const Resource& resource, HeldThere held = HeldThere::whatever) const
    {
        ends_.settle(change_, resource, held);
    }
    void fail(Failure failure) const { ends_.fail(change_, std::move(failure)); }
    void park(FailureKind kind, const std::string& reason, const std::string& theirs) const;
    void parkRemoved() const;

    Resource base() const { return {change_.href, change_.baseTag, change_.baseText}; }

    PendingChange change_;
    Standing standing_;
    Ends ends_;
    ResourceAccess access_;
};

} // namespace Tessel
