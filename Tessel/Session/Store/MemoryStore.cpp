#include "Tessel/Session/Store/MemoryStore.h"

#include "Tessel/Session/Recurrence/TextBounds.h"
#include "Tessel/Session/Store/StoreFailures.h"

#include <algorithm>
#include <iterator>
#include <list>
#include <map>
#include <mutex>
#include <unordered_map>

namespace Tessel {

namespace {

/// A resource, and its bounds once somebody asks for them.
class Held {
public:
    explicit Held(const Resource& held)
        : resource(held)
    {
    }

    bool meets(const Bounds& range) const
    {
        std::call_once(read_, [this] { bounds_ = bounds(resource.text); });
        return bounds_.meets(range);
    }

    const Resource resource;

private:
    mutable std::once_flag read_;
    mutable Bounds bounds_ = Bounds::always();
};

struct Calendar {
    StoredCalendar listed;
    std::map<std::string, std::shared_ptr<const Held>> resources;
    std::map<std::string, std::string> failed;
};

} // namespace

struct MemoryStore::Content {
    std::mutex mutex;
    std::list<Calendar> calendars; ///< in the order in which they came
    std::unordered_map<std::string, std::list<Calendar>::iterator> byHref;
    std::vector<PendingChange> outbox;
    std::int64_t lastNumber = 0; ///< of a change

    Calendar* find(const std::string& href)
    {
        const auto found = byHref.find(href);
        return found == byHref.end() ? nullptr : &*found->second;
    }

    auto findChange(const std::string& id)
    {
        return std::find_if(
            outbox.begin(), outbox.end(), [&](const auto& change) { return change.id == id; });
    }

    Outcome visit(const std::string& calendar, const Bounds* range, const Visitor& visitor)
    {
        std::vector<std::shared_ptr<const Held>> all;
        {
            const std::lock_guard lock(mutex);
            const auto* held = find(calendar);
            if (!held) return {};
            all.reserve(held->resources.size());
            for (const auto& [href, entry] : held->resources)
                all.push_back(entry);
        }
        for (const auto& entry : all) {
            if (range && !entry->meets(*range)) continue;
            if (!visitor(entry->resource)) break;
        }
        return {};
    }

    std::optional<Failure> refusal(std::span<const Batch> batches);
    void apply(Calendar& calendar, const Batch& batch);
    void applyOutbox(const Batch& batch);
};

/// Why the batches cannot be applied: they are looked through before anything changes. Each sees
/// what those before it do to marks and to the outbox.
std::optional<Failure> MemoryStore::Content::refusal(std::span<const Batch> batches)
{
    std::map<std::string, SyncMark> marks;
    std::map<std::string, std::int64_t> revisions; // 0: there is none
    const auto matches = [&](const std::string& id, std::int64_t expected, std::int64_t next) {
        const auto held = findChange(id);
        const auto [revision, isNew]
            = revisions.try_emplace(id, held == outbox.end() ? 0 : held->revision);
        if (revision->second != expected) return false;
        revision->second = next;
        return true;
    };
    for (const auto& batch : batches) {
        if (!batch.calendar.empty()) {
            const auto* calendar = find(batch.calendar);
            if (!calendar) return calendarNotHeld(batch.calendar);
            auto& mark = marks.try_emplace(batch.calendar, calendar->listed.mark).first->second;
            if (batch.basedOn && *batch.basedOn != mark) return markHasChanged(batch.calendar);
            if (batch.mark) mark = *batch.mark;
            for (const auto& [href, tag] : batch.expected) {
                const auto held = calendar->resources.find(href);
                if ((held == calendar->resources.end() ? "" : held->second->resource.tag) != tag)
                    return resourceHasChanged(href);
            }
        } else if (!batch.upserts.empty() || !batch.removed.empty() || !batch.failed.empty()) {
            return calendarNotHeld("");
        }
        for (const auto& change : batch.pending)
            if (!matches(change.id, change.revision, change.revision + 1))
                return changeHasChanged(change.id);
        for (const auto& [id, revision] : batch.settled)
            if (revision == 0 || !matches(id, revision, 0)) return changeHasChanged(id);
    }
    return std::nullopt;
}

void MemoryStore::Content::apply(Calendar& calendar, const Batch& batch)
{
    for (const auto& href : batch.removed) {
        calendar.resources.erase(href);
        calendar.failed.erase(href);
    }
    for (const auto& resource : batch.upserts) {
        calendar.resources.insert_or_assign(resource.href, std::make_shared<const Held>(resource));
        calendar.failed.erase(resource.href);
    }
    for (const auto& [href, reason] : batch.failed)
        calendar.failed.insert_or_assign(href, reason);
    if (batch.mark) calendar.listed.mark = *batch.mark;
}

void MemoryStore::Content::applyOutbox(const Batch& batch)
{
    for (const auto& change : batch.pending) {
        auto held = findChange(change.id);
        if (held == outbox.end()) {
            held = outbox.insert(outbox.end(), change);
            held->number = ++lastNumber;
        } else {
            const auto number = held->number;
            *held = change;
            held->number = number;
        }
        ++held->revision;
    }
    for (const auto& change : batch.settled)
        outbox.erase(findChange(change.id));
}

MemoryStore::MemoryStore()
    : content_(std::make_unique<Content>())
{
}

MemoryStore::~MemoryStore() = default;

Result<std::vector<StoredCalendar>> MemoryStore::calendars()
{
    const std::lock_guard lock(content_->mutex);
    std::vector<StoredCalendar> calendars;
    for (const auto& calendar : content_->calendars)
        calendars.push_back(calendar.listed);
    return calendars;
}

Outcome MemoryStore::put(const StoredCalendar& calendar)
{
    const std::lock_guard lock(content_->mutex);
    auto* held = content_->find(calendar.href);
    if (!held) {
        held = &content_->calendars.emplace_back();
        content_->byHref.emplace(calendar.href, std::prev(content_->calendars.end()));
    }
    auto mark = std::move(held->listed.mark);
    held->listed = calendar;
    held->listed.mark = std::move(mark);
    return {};
}

Outcome MemoryStore::removeCalendar(const std::string& href)
{
    const std::lock_guard lock(content_->mutex);
    const auto found = content_->byHref.find(href);
    if (found == content_->byHref.end()) return {};
    content_->calendars.erase(found->second);
    content_->byHref.erase(found);
    return {};
}

Result<std::vector<HeldTag>> MemoryStore::tags(const std::string& calendar)
{
    const std::lock_guard lock(content_->mutex);
    std::vector<HeldTag> tags;
    if (const auto* held = content_->find(calendar))
        for (const auto& [href, entry] : held->resources)
            tags.push_back({href, entry->resource.tag});
    return tags;
}

Result<std::optional<Resource>> MemoryStore::resource(
    const std::string& calendar, const std::string& href)
{
    const std::lock_guard lock(content_->mutex);
    const auto* held = content_->find(calendar);
    if (!held) return std::optional<Resource> {};
    const auto found = held->resources.find(href);
    return found == held->resources.end() ? std::nullopt : std::optional(found->second->resource);
}

Outcome MemoryStore::visit(const std::string& calendar, const Visitor& visitor)
{
    return content_->visit(calendar, nullptr, visitor);
}

Outcome MemoryStore::visit(
    const std::string& calendar, std::int64_t from, std::int64_t to, const Visitor& visitor)
{
    const Bounds range {from, to};
    return content_->visit(calendar, &range, visitor);
}

Result<std::vector<FailedResource>> MemoryStore::failed(const std::string& calendar)
{
    const std::lock_guard lock(content_->mutex);
    std::vector<FailedResource> failed;
    if (const auto* held = content_->find(calendar))
        for (const auto& [href, reason] : held->failed)
            failed.push_back({href, reason});
    return failed;
}

Result<std::vector<PendingChange>> MemoryStore::pending()
{
    const std::lock_guard lock(content_->mutex);
    return content_->outbox;
}

Outcome MemoryStore::applyAll(std::span<const Batch> batches)
{
    const std::lock_guard lock(content_->mutex);
    if (auto failure = content_->refusal(batches)) return std::move(*failure);
    for (const auto& batch : batches) {
        if (auto* calendar = content_->find(batch.calendar)) content_->apply(*calendar, batch);
        content_->applyOutbox(batch);
    }
    return {};
}

} // namespace Tessel
