#pragma once

#include "Tessel/Session/Text/MergeEdit.h"
#include "Tessel/Session/Writes/ChangedEvent.h"
#include "Tessel/Session/Writes/CreateEvent.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace Tessel {

/// Makes an edit of a resource, guarded by its tag. Where somebody else has written meanwhile, the
/// edit is made on the newer text, unless the two touch the same property of the same instance:
/// then it ends as `changed`, with both texts. A lost answer is resolved by looking.
class ChangeEvent final : public std::enable_shared_from_this<ChangeEvent> {
public:
    /// `isMerged`: what somebody else has written meanwhile is in it, too.
    using Done = std::function<void(Result<ChangedEvent>, bool isMerged)>;
    /// How the edit is made on a newer text.
    using Merge = decltype(&mergeEdit);

    ChangeEvent(
        ResourceAccess access, Resource base, EventEdit edit, Done done, Merge merge = &mergeEdit);

    void start();

private:
    void write();
    void readWritten(Result<std::string> result);
    void look(Failure failure);
    void mergeWith(Resource theirs, const Failure& why);
    void createFollowing();
    void takeBackFollowing(Resource theirs);
    bool isLate() const;
    std::shared_ptr<const BothTexts> bothTexts(const Resource& theirs) const;
    void end(Resource resource);
    void fail(Failure failure);
    void failUndone(Failure failure);
    void failWithFollowing(Failure failure);

    const ResourceAccess access_;
    const Resource base_;
    const EventEdit edit_;
    const Merge merge_;
    Done done_;
    Resource current_; ///< what the server holds, as far as is known
    std::optional<EditedEvent> edited_;
    std::optional<Resource> following_;
    const std::chrono::steady_clock::time_point begun_ = std::chrono::steady_clock::now();
    int tries_ = 0;
    bool wasLost_ = false;
    bool isMerged_ = false;
};

} // namespace Tessel
