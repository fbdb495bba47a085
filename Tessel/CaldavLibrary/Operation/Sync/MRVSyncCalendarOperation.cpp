#include "Tessel/CaldavLibrary/Operation/Sync/MRVSyncCalendarOperation.h"

#include "Tessel/CaldavLibrary/Operation/Calendar/MRVGetCalendarsOperation.h"
#include "Tessel/Platform/Plinth/Logger.h"

#include <string_view>
#include <unordered_map>

namespace Tessel {

namespace {

using Calendars = MRVSyncCalendarOperation::Calendars;

/// The first calendar of each href.
std::unordered_map<std::string_view, const MRVCalendar*> byHref(const Calendars& calendars)
{
    std::unordered_map<std::string_view, const MRVCalendar*> index;
    for (const auto& calendar : calendars)
        index.try_emplace(calendar->href, calendar.get());
    return index;
}

std::optional<Calendars> nonEmpty(Calendars calendars)
{
    if (calendars.empty()) return std::nullopt;
    return calendars;
}

} // namespace

std::shared_ptr<MRVSyncCalendarOperation> MRVSyncCalendarOperation::make(
    std::shared_ptr<MRVClient> client, std::shared_ptr<MRVAccountInfoProvider> accountInfoProvider,
    Completion completion)
{
    const auto operation = std::make_shared<MRVSyncCalendarOperation>();
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
    compare();

    const auto delegate = client ? client->syncDelegate() : nullptr;
    if (delegate && deletedCalendars) delegate->calendarsDeleted(*deletedCalendars);
    if (delegate && addedCalendars) delegate->calendarsAdded(*addedCalendars);
    if (delegate && editedCalendars) delegate->calendarsEdited(*editedCalendars);
    if (delegate) delegate->calendarSyncFinished();

    completion(
        std::nullopt, std::static_pointer_cast<MRVSyncCalendarOperation>(shared_from_this()));
    setDone(true);
}

void MRVSyncCalendarOperation::compare()
{
    const auto held = heldCalendars();
    const auto heldByHref = byHref(held);
    const auto listedByHref = byHref(*calendars);

    Calendars deleted, added, edited;
    for (const auto& calendar : held) {
        if (!listedByHref.contains(calendar->href)) deleted.push_back(calendar);
    }
    for (const auto& calendar : *calendars) {
        const auto found = heldByHref.find(calendar->href);
        if (found == heldByHref.end()) {
            added.push_back(calendar);
        } else if (found->second->cTag != calendar->cTag) {
            edited.push_back(calendar);
        }
    }
    deletedCalendars = nonEmpty(std::move(deleted));
    addedCalendars = nonEmpty(std::move(added));
    editedCalendars = nonEmpty(std::move(edited));
}

Calendars MRVSyncCalendarOperation::heldCalendars() const
{
    const auto source = client ? client->dataSource() : nullptr;
    if (!source) return {};
    return source->calendars(client).value_or(Calendars {});
}

} // namespace Tessel
