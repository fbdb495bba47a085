#include "Tessel/CaldavLibrary/Operation/Sync/MRVSyncCalendarOperation.h"

#include "Tessel/CaldavLibrary/Operation/Calendar/MRVGetCalendarsOperation.h"
#include "Tessel/Platform/Plinth/Logger.h"

#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace Tessel {

namespace {

using Calendars = MRVSyncCalendarOperation::Calendars;

/// What is held under one href.
struct HeldTags {
    std::string_view first;
    bool differ = false; ///< a host may hold an href twice, with another tag each

    bool differFrom(std::string_view tag) const { return differ || first != tag; }
};

std::unordered_map<std::string_view, HeldTags> tagsByHref(const Calendars& held)
{
    std::unordered_map<std::string_view, HeldTags> tags;
    for (const auto& calendar : held) {
        auto& known = tags.try_emplace(calendar->href, HeldTags {calendar->cTag}).first->second;
        known.differ = known.differFrom(calendar->cTag);
    }
    return tags;
}

/// Tells the delegate of the calendars, if there are any, then stores them.
void report(Calendars calendars, MRVSyncDelegate* delegate,
    void (MRVSyncDelegate::*tell)(const Calendars&), std::optional<Calendars>& stored)
{
    if (calendars.empty()) return;
    if (delegate) (delegate->*tell)(calendars);
    stored = std::move(calendars);
}

} // namespace

std::shared_ptr<MRVSyncCalendarOperation> MRVSyncCalendarOperation::make(
    std::shared_ptr<MRVClient> client, std::shared_ptr<MRVAccountInfoProvider> accountInfoProvider,
    Completion completion)
{
    auto operation = std::make_shared<MRVSyncCalendarOperation>();
    operation->client = client;
    operation->accountInfoProvider = std::move(accountInfoProvider);
    operation->completion = std::move(completion);

    const auto listing = std::make_shared<MRVGetCalendarsOperation>(
        client, nullptr, [weak = weakly(operation.get())](auto calendars, const auto&) {
            if (const auto self = weak.lock()) self->calendars = std::move(calendars);
        });
    operation->addDependency(listing);
    if (client) client->syncQueue().addOperation(listing);
    return operation;
}

void MRVSyncCalendarOperation::main()
{
    if (!calendars) {
        Plinth::logger()->log(Plinth::Level::error, "No calendars obtained from server");
        return;
    }
    auto found = differences(heldCalendars());
    const auto delegate = client ? client->syncDelegate() : nullptr;
    report(std::move(found.deleted), delegate.get(), &MRVSyncDelegate::calendarsDeleted,
        deletedCalendars);
    report(
        std::move(found.added), delegate.get(), &MRVSyncDelegate::calendarsAdded, addedCalendars);
    report(std::move(found.edited), delegate.get(), &MRVSyncDelegate::calendarsEdited,
        editedCalendars);
    if (delegate) delegate->calendarSyncFinished();

    completion(
        std::nullopt, std::static_pointer_cast<MRVSyncCalendarOperation>(shared_from_this()));
    setDone(true);
}

MRVSyncCalendarOperation::Differences MRVSyncCalendarOperation::differences(
    const Calendars& held) const
{
    const auto heldTags = tagsByHref(held);
    std::unordered_set<std::string_view> listed;
    Differences found;
    for (const auto& calendar : *calendars) {
        listed.insert(calendar->href);
        const auto tags = heldTags.find(calendar->href);
        if (tags == heldTags.end()) {
            found.added.push_back(calendar);
        } else if (tags->second.differFrom(calendar->cTag)) {
            found.edited.push_back(calendar);
        }
    }
    for (const auto& calendar : held) {
        if (!listed.contains(calendar->href)) found.deleted.push_back(calendar);
    }
    return found;
}

Calendars MRVSyncCalendarOperation::heldCalendars() const
{
    const auto source = client ? client->dataSource() : nullptr;
    if (!source) return {};
    return source->calendars(client).value_or(Calendars {});
}

} // namespace Tessel
