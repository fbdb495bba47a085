#pragma once

#include "Tessel/Session/Store/SQLiteStore.h"
#include "tests/support/TemporaryDirectory.h"

#include <gtest/gtest.h>

namespace Tessel::Test {

inline std::shared_ptr<Store> openStore(
    const std::filesystem::path& file, const std::string& user = "alice")
{
    const auto opened
        = SQLiteStore::open(file, {.user = user, .origin = *Origin::ofServer("cal.example.com")});
    if (!opened) {
        ADD_FAILURE() << opened.reason();
        return nullptr;
    }
    return opened.value();
}

inline std::string snapshotOf(const PendingChange& change)
{
    std::string text = change.id + "|" + std::to_string(change.revision) + "|"
        + std::to_string(int(change.kind)) + std::to_string(int(change.state));
    for (const auto* field : {&change.calendar, &change.href, &change.destination, &change.uid,
             &change.baseTag, &change.baseText, &change.content, &change.reason})
        text += "|" + *field;
    text += "|" + std::to_string(change.attempts) + "|" + std::to_string(change.notBefore);
    return change.texts ? text + "|" + change.texts->mine + "|" + change.texts->theirs : text;
}

/// All that a store holds.
inline std::string snapshotOf(Store& store)
{
    std::string text;
    const auto calendars = store.calendars();
    if (!calendars) return calendars.reason();
    for (const auto& calendar : calendars.value()) {
        text += "calendar " + calendar.href + " " + calendar.displayName + " " + calendar.mark.cTag
            + " " + calendar.mark.syncToken + "\n";
        store.visit(calendar.href, [&](const Resource& resource) {
            text += resource.href + " " + resource.tag + " " + resource.text + "\n";
            return true;
        });
        const auto failed = store.failed(calendar.href);
        for (const auto& [href, reason] : failed.value())
            text += "failed " + href + " " + reason + "\n";
    }
    const auto pending = store.pending();
    for (const auto& change : pending.value())
        text += "pending " + snapshotOf(change) + "\n";
    return text;
}

} // namespace Tessel::Test
