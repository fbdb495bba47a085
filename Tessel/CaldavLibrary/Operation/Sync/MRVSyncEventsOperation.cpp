#include "Tessel/CaldavLibrary/Operation/Sync/MRVSyncEventsOperation.h"

#include "Tessel/CaldavLibrary/Extensions/FixedBody.h"
#include "Tessel/CaldavLibrary/Extensions/URLRequestExtension.h"
#include "Tessel/CaldavLibrary/Operation/Event/MRVGetEventsOperation.h"
#include "Tessel/CaldavLibrary/Operation/Sync/MRVEventsSyncCompleteOperation.h"
#include "Tessel/CaldavLibrary/Parsers/MRVEventDescriptorsParser.h"
#include "Tessel/Platform/Foundation/Base/FatalError.h"

#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace Tessel {

namespace {

constexpr FixedBody body(R"(
<?xml version="1.0" encoding="utf-8" ?>
<c:calendar-query xmlns:d="DAV:" xmlns:c="urn:ietf:params:xml:ns:caldav">
  <d:prop>
    <d:getetag />
    <c:schedule-tag />
    <d:resourcetype />
  </d:prop>
  <c:filter>
    <c:comp-filter name="VCALENDAR">
      <c:comp-filter name="VEVENT" />
    </c:comp-filter>
  </c:filter>
</c:calendar-query>)");

} // namespace

void MRVSyncEventsOperation::main()
{
    URLRequest request(absoluteURL(calendar->href));
    setReport(request, body.text());
    process(request, "Events Info", nullptr,
        [weak = weakly(this)](const Data& data, const auto& error, auto) {
            const auto self = weak.lock();
            if (error || !self) return;
            const auto owner = self->client ? self->client->account() : nullptr;
            self->processInfo(MRVEventDescriptorsParser(data, owner).parseEventsDescription());
        });
}

void MRVSyncEventsOperation::processInfo(const std::optional<Descriptors>& listed)
{
    if (!listed) return;
    const auto held = heldEvents();
    if (listed->empty()) {
        if (!held.empty()) tellDeleted(held);
        return;
    }

    std::unordered_set<std::string_view> listedHrefs;
    for (const auto& descriptor : *listed)
        listedHrefs.insert(descriptor->href);
    Events matched;
    std::unordered_map<std::string_view, std::string_view>
        heldTags; // of the first event of an href
    for (const auto& event : held) {
        if (listedHrefs.contains(event->href)) matched.push_back(event);
        heldTags.try_emplace(event->href, event->eTag);
    }

    Descriptors added, changed;
    for (const auto& descriptor : *listed) {
        const auto found = heldTags.find(descriptor->href);
        if (found == heldTags.end()) {
            added.push_back(descriptor);
        } else if (found->second != descriptor->eTag) {
            changed.push_back(descriptor);
        }
    }

    if (!matched.empty()) tellDeleted(matched);
    fetch(std::move(changed), std::move(added));
}

MRVSyncEventsOperation::Events MRVSyncEventsOperation::heldEvents() const
{
    const auto source = client ? client->dataSource() : nullptr;
    if (!source) return {};
    return source->events(calendar).value_or(Events {});
}

void MRVSyncEventsOperation::tellDeleted(const Events& events) const
{
    if (!client) fatalError("an event sync has no client");
    if (const auto delegate = client->syncDelegate()) {
        delegate->eventsDeleted(events, calendar, client->account(), client);
    }
}

void MRVSyncEventsOperation::fetch(Descriptors changed, Descriptors added) const
{
    if (!client) fatalError("an event sync has no client");
    const auto fetchOf = [this](Descriptors descriptors, bool areNew) {
        auto operation = std::make_shared<MRVGetEventsOperation>();
        operation->client = client;
        operation->events = std::move(descriptors);
        operation->calendar = calendar;
        operation->hasNewEvents = areNew;
        return operation;
    };
    const auto changedFetch = fetchOf(std::move(changed), false);
    const auto newFetch = fetchOf(std::move(added), true);
    const auto completion = std::make_shared<MRVEventsSyncCompleteOperation>();
    completion->client = client;
    completion->calendar = calendar;
    completion->addDependency(changedFetch);
    completion->addDependency(newFetch);

    OperationQueue queue;
    queue.addOperation(changedFetch);
    queue.addOperation(newFetch);
    queue.addOperation(completion);
}

} // namespace Tessel
