#include "apps/tessel/commands/AccountStore.h"

#include "apps/tessel/commands/EventTitle.h"
#include "apps/tessel/output/Reason.h"
#include "apps/tessel/output/Secrets.h"

namespace Tessel::App {

AccountStore::AccountStore(std::shared_ptr<Store> actual)
    : actual_(std::move(actual))
{
}

std::string AccountStore::titleAt(const std::string& calendar, const std::string& place)
{
    const auto held = actual_->resource(calendar, place);
    if (held && held.value()) return titleOf(held.value()->text, place);
    const std::lock_guard lock(mutex_);
    const auto known = removed_.find(place);
    return known == removed_.end() ? place : known->second;
}

Outcome AccountStore::applyAll(std::span<const Batch> batches)
{
    std::vector<Batch> discreet(batches.begin(), batches.end());
    for (auto& batch : discreet) {
        for (auto& each : batch.failed)
            each.reason = Secrets::masked(reasonOf(std::move(each.reason)));
        for (auto& each : batch.pending)
            each.reason = Secrets::masked(reasonOf(std::move(each.reason)));
        for (const auto& place : batch.removed) {
            auto title = titleAt(batch.calendar, place);
            const std::lock_guard lock(mutex_);
            removed_.insert_or_assign(place, std::move(title));
        }
    }
    return actual_->applyAll(discreet);
}

Result<std::vector<StoredCalendar>> AccountStore::calendars()
{
    return actual_->calendars();
}

Outcome AccountStore::put(const StoredCalendar& calendar)
{
    return actual_->put(calendar);
}

Outcome AccountStore::removeCalendar(const std::string& href)
{
    return actual_->removeCalendar(href);
}

Result<std::vector<HeldTag>> AccountStore::tags(const std::string& calendar)
{
    return actual_->tags(calendar);
}

Result<std::optional<Resource>> AccountStore::resource(
    const std::string& calendar, const std::string& href)
{
    return actual_->resource(calendar, href);
}

Outcome AccountStore::visit(const std::string& calendar, const Visitor& visitor)
{
    return actual_->visit(calendar, visitor);
}

Outcome AccountStore::visit(
    const std::string& calendar, std::int64_t from, std::int64_t to, const Visitor& visitor)
{
    return actual_->visit(calendar, from, to, visitor);
}

Result<std::vector<FailedResource>> AccountStore::failed(const std::string& calendar)
{
    return actual_->failed(calendar);
}

Result<std::vector<PendingChange>> AccountStore::pending()
{
    return actual_->pending();
}

} // namespace Tessel::App
