#pragma once

#include "Tessel/Platform/Foundation/Web/Origin.h"
#include "Tessel/Session/Store/Store.h"

#include <chrono>
#include <filesystem>
#include <memory>

namespace Tessel {

/// Whose calendars a store holds.
struct StoreAccount {
    std::string user; ///< as the server knows the user
    Origin origin; ///< of the server
};

/// Holds everything in one SQLite file, which may serve several accounts and several processes at
/// once. Whenever a process is killed, each step is there whole or not at all; steps that touch the
/// outbox are on the disk when they return, others at the latest with the next of those or when
/// SQLite writes its log back. A process that forks uses a store on one side only.
class TESSEL_EXPORT SQLiteStore final : public Store {
public:
    /// Opens the file, or makes it: readable for its user alone (0600), as are folders that are
    /// missing (0700). The store of a `tessel` command without sessions is taken over: its
    /// calendars and texts are held, its marks are not, so that the next sync compares everything.
    ///
    /// A step waits up to `patience` for another process. The failure has the kind `storage` where
    /// the file is not SQLite's, another program's, of a newer version, damaged, or cannot be
    /// written; it is left as it was then.
    static Result<std::shared_ptr<SQLiteStore>> open(const std::filesystem::path& file,
        const StoreAccount& account, std::chrono::milliseconds patience = std::chrono::seconds(10));

    ~SQLiteStore() override;

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
    explicit SQLiteStore(std::unique_ptr<Content> content);

    std::unique_ptr<Content> content_;
};

} // namespace Tessel
