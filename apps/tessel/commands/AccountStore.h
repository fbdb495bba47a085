#pragma once

#include <Tessel/TesselSession.h>

#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace Tessel::App {

/// What is held of an account, in another store. Reasons are kept as a user reads them, without a
/// credential that a server has repeated; what has been removed is still known by its title.
class AccountStore final : public Store {
public:
    explicit AccountStore(std::shared_ptr<Store> actual);

    /// That of an event which is held, or was removed through this; its place where nobody knows.
    std::string titleAt(const std::string& calendar, const std::string& place);

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
    const std::shared_ptr<Store> actual_;
    std::mutex mutex_;
    std::map<std::string, std::string> removed_; ///< titles by place
};

} // namespace Tessel::App
