#include "apps/tessel/commands/SyncReport.h"

#include <algorithm>

namespace Tessel::App {

namespace {

using Places = std::vector<std::string>;

/// Of a first sync nobody reads every event.
constexpr std::size_t shownAtMost = 20;

void list(const Output& out, AccountStore& store, const std::string& calendar, const char* what,
    const Places& places)
{
    if (out.isJson()) return;
    for (std::size_t i = 0; i < std::min(places.size(), shownAtMost); ++i)
        out.line(std::string("  ") + what + "  " + store.titleAt(calendar, places[i]));
    if (places.size() > shownAtMost)
        out.line(std::string("  ") + what + "  and " + std::to_string(places.size() - shownAtMost)
            + " more");
}

std::string counts(std::size_t added, std::size_t edited, std::size_t deleted)
{
    return std::to_string(added) + " new, " + std::to_string(edited) + " changed, "
        + std::to_string(deleted) + " gone";
}

} // namespace

void tell(const Output& out, AccountStore& store, const Changes& changes)
{
    std::size_t added = 0;
    std::size_t edited = 0;
    std::size_t deleted = 0;
    for (const auto& each : changes.calendars) {
        added += each.added.size();
        edited += each.edited.size();
        deleted += each.deleted.size();
        const Json object {{"calendar", each.displayName}, {"href", each.calendar},
            {"added", each.added}, {"edited", each.edited}, {"deleted", each.deleted},
            {"failed", each.failed.size()}};
        out.result(each.displayName + ": "
                + counts(each.added.size(), each.edited.size(), each.deleted.size()),
            object);
        list(out, store, each.calendar, "new    ", each.added);
        list(out, store, each.calendar, "changed", each.edited);
        list(out, store, each.calendar, "gone   ", each.deleted);
    }
    out.result("events: " + counts(added, edited, deleted)
            + "; calendars: " + std::to_string(changes.addedCalendars.size()) + " new, "
            + std::to_string(changes.deletedCalendars.size()) + " gone",
        {{"added", added}, {"edited", edited}, {"deleted", deleted},
            {"calendarsAdded", changes.addedCalendars},
            {"calendarsDeleted", changes.deletedCalendars}, {"isComplete", changes.isComplete()}});
}

} // namespace Tessel::App
