#include "apps/tessel/EventListing.h"

#include "apps/tessel/EventReading.h"

namespace Tessel::App {

namespace {

/// Holds nothing, so that a sync brings every event as a new one.
class Listing final : public StoreDelegate {
public:
    Listing(AccountStore& store, std::shared_ptr<ExchangeLog> log)
        : StoreDelegate(store)
        , log_(std::move(log))
    {
    }

    std::optional<Events> events(const Calendar&) override { return std::nullopt; }
    void eventsAdded(const Events& events, const Calendar&, const Account&, const Client&) override
    {
        events_ = events;
    }
    void eventsSyncFinished(const std::optional<Error>&, const Calendar&, const Client&) override
    {
        log_->update([this] { isFinished_ = true; });
    }

    bool isFinished() const { return isFinished_; }
    const Events& found() const { return events_; }

private:
    const std::shared_ptr<ExchangeLog> log_;
    Events events_;
    bool isFinished_ = false;
};

/// The library reads no event of a resource that also holds changed instances of its series.
std::optional<RemoteEvent> series(
    Host& host, const std::shared_ptr<MRVCalendar>& calendar, const std::string& href)
{
    const auto resource = host.get(href);
    if (!resource) return std::nullopt;
    const auto parsed = CGICalendar::initWithString(resource->text);
    for (const auto& object : parsed->objects) {
        std::erase_if(object->components, [](const auto& component) {
            return component->isEvent() && component->hasPropertyForName("RECURRENCE-ID");
        });
    }
    auto event = readEvent(parsed->description(), calendar, href, resource->eTag);
    if (!event) return std::nullopt;
    return RemoteEvent {std::move(event), resource->text};
}

} // namespace

StoreDelegate::Events remoteEvents(Host& host, const std::shared_ptr<MRVCalendar>& calendar)
{
    const auto listing = std::make_shared<Listing>(host.store(), host.log());
    const auto client = host.makeClient();
    client->setSyncDelegate(listing);
    client->setDataSource(listing);
    const auto first = host.log()->count();
    const auto isOver = [&](const ExchangeLog::Exchanges& all) {
        return listing->isFinished()
            || (all.size() > first && all.back().isOver && all.back().isWithout("response"));
    };
    host.waitFor("listing the events", isOver, [&] { client->syncEvents(calendar); });
    if (!host.log()->last()->isSuccess()) host.fail("listing the events", "refused");
    return listing->found();
}

RemoteEvent remoteEvent(
    Host& host, const std::shared_ptr<MRVCalendar>& calendar, const std::string& href)
{
    const auto delegate = std::make_shared<StoreDelegate>(host.store());
    const auto client = host.makeClient();
    client->setSyncDelegate(delegate);
    const auto answer
        = host.makeAnswer<std::optional<StoreDelegate::Events>, std::optional<Error>>();
    const auto [events, error] = host.await(
        "fetching the event", answer, [&] { client->getEvent(href, calendar, true, answer); });
    if (events && events->size() == 1) return {events->front(), events->front()->calendarData};
    if (const auto found = series(host, calendar, href)) return *found;
    host.fail("fetching the event", "there is no event " + href);
}

} // namespace Tessel::App
