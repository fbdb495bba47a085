#pragma once

#include "Tessel/Session/Store/Store.h"

#include <memory>

namespace Tessel {

/// Holds everything in memory, for as long as it lives: for tests, and for hosts that sync anew at
/// every start.
class TESSEL_EXPORT MemoryStore final : public Store {
public:
    MemoryStore();
    ~MemoryStore() override;

    Result<std::vector<StoredCalendar>> calendars() override;
    Outcome put(const StoredCalendar& calendar) override;
    Outcome removeCalendar(const std::string& href) override;
    Result<std::vector<HeldTag>> tags(const std::string& calendar) override;
    Result<std::optional<Resource>> resource(
        const std::string& calendar, const std::string& href) override;
    Outcome visit(const std::string& calendar, const Visitor& visitor) override;
    Outcome visit(const std::string& calendar, std::int64_t from, std::int64_t to,
        const Visitor& visitor) override;
    Result<std::vector<FailedResource>> failed(const std::string& calendar) override;
    Result<std::vector<PendingChange>> pending() override;
    Outcome applyAll(std::span<const Batch> batches) override;

private:
    struct Content;
    std::unique_ptr<Content> content_;
};

} // namespace Tessel
