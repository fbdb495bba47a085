#include "Tessel/CaldavLibrary/MRVClient.h"
#include "Tessel/Platform/Foundation/Base/FatalError.h"
#include "benchmarks/Corpus.h"
#include "benchmarks/LoopbackServer.h"
#include "benchmarks/PlainClient.h"
#include "benchmarks/ProcessUsage.h"
#include "benchmarks/Table.h"

#include <algorithm>
#include <future>
#include <limits>
#include <malloc.h>
#include <memory>
#include <string>

using namespace Tessel;
using namespace Tessel::Benchmarks;

namespace {

std::string onTheWire(const std::string& body)
{
    return "HTTP/1.1 207 Multi-Status\r\nContent-Type: text/xml\r\nContent-Length: "
        + std::to_string(body.size()) + "\r\n\r\n" + body;
}

/// A host that keeps the events which it is given, and says when a calendar's sync has finished.
struct Host final : MRVAuthDelegate, MRVDataSource, MRVSyncDelegate {
    std::vector<std::shared_ptr<MRVEvent>> held;
    std::promise<void> finished;

    void authorize(const URLRequest& request, bool, const std::shared_ptr<MRVAccount>&,
        std::function<void(URLRequest)> completion) override
    {
        completion(request);
    }
    std::optional<std::vector<std::shared_ptr<MRVCalendar>>> calendars(
        const std::shared_ptr<MRVClient>&) override
    {
        return std::nullopt;
    }
    std::optional<std::vector<std::shared_ptr<MRVEvent>>> events(
        const std::shared_ptr<MRVCalendar>&) override
    {
        return held;
    }
    std::optional<std::vector<std::shared_ptr<MRVNotification>>> notifications(
        const std::shared_ptr<MRVClient>&) override
    {
        return std::nullopt;
    }
    void calendarsDeleted(const Calendars&) override { }
    void calendarsAdded(const Calendars&) override { }
    void calendarsEdited(const Calendars&) override { }
    void calendarSyncFinished() override { }
    void eventsAdded(const Events& events, const std::shared_ptr<MRVCalendar>&,
        const std::shared_ptr<MRVAccount>&, const std::shared_ptr<MRVClient>&) override
    {
        held = events;
    }
    void eventsEdited(const Events&, const std::shared_ptr<MRVCalendar>&,
        const std::shared_ptr<MRVAccount>&, const std::shared_ptr<MRVClient>&) override
    {
    }
    void eventsDeleted(const Events&, const std::shared_ptr<MRVCalendar>&,
        const std::shared_ptr<MRVAccount>&, const std::shared_ptr<MRVClient>&) override
    {
    }
    void eventsSyncFinished(const std::optional<Error>&, const std::shared_ptr<MRVCalendar>&,
        const std::shared_ptr<MRVClient>&) override
    {
        finished.set_value();
    }
    void notificationsRemoved(const std::vector<std::shared_ptr<MRVNotification>>&,
        const std::shared_ptr<MRVClient>&) override
    {
    }
};

struct Session {
    explicit Session(const std::string& serverURL)
    {
        client->account()->serverURL = serverURL;
        client->setSyncDelegate(host);
        client->setDataSource(host);
    }

    void sync()
    {
        host->finished = {};
        client->syncEvents(calendar);
        host->finished.get_future().wait();
        if (host->held.size() != corpusEvents) fatalError("not every event was synchronised");
    }

    std::shared_ptr<Host> host = std::make_shared<Host>();
    std::shared_ptr<MRVClient> client
        = std::make_shared<MRVClient>(std::make_shared<MRVAccount>(), host);
    std::shared_ptr<MRVCalendar> calendar = std::make_shared<MRVCalendar>(
        MRVCalendar {.calID = "", .href = "/calendar/", .account = client->account()});
};

std::string multigetBody()
{
    std::string body = "<c:calendar-multiget xmlns:d=\"DAV:\">";
    for (std::size_t i = 0; i < corpusEvents; ++i)
        body += "<d:href>" + eventHref(i) + "</d:href>";
    return body + "</c:calendar-multiget>";
}

} // namespace

int main()
{
    const auto answer = multigetAnswer(corpusEvents);
    const LoopbackServer server({{"calendar-multiget", onTheWire(answer)},
        {"calendar-query", onTheWire(entityTagAnswer(corpusEvents))}});
    const auto answerSize = double(answer.size());
    const auto url = server.url("");

    // First of all, while the heap is fresh: what the first sync needs at its peak.
    double peak = 0;
    {
        Session session(url);
        session.client->account()->serverURL = url;
        malloc_trim(0);
        const auto before = residentBytes();
        resetPeak();
        session.sync();
        peak = double(peakResidentBytes()) - double(before);
    }

    constexpr auto most = std::numeric_limits<double>::max();
    Costs first {most, most}, second {most, most};
    PlainClient plain;
    const auto request = [&](const std::string& body) {
        keep(PlainClient::read(plain.send("REPORT", server.url("/calendar/"), body)));
    };
    const auto multiget = multigetBody();
    const std::string query = "<c:calendar-query xmlns:d=\"DAV:\"/>";
    for (int i = 0; i < 7; ++i) {
        Session session(url);
        first.ours = std::min(first.ours, cpuOf([&] { session.sync(); }));
        second.ours = std::min(second.ours, cpuOf([&] { session.sync(); }));
        second.opponent = std::min(second.opponent, cpuOf([&] { request(query); }));
        first.opponent = std::min(first.opponent, cpuOf([&] {
            request(query);
            request(multiget);
        }));
    }
    printRow("first sync of 10,000 events, CPU: libcurl and libxml2", first, "s", timesCost(2.2));
    printRow("sync without changes, CPU: libcurl and libxml2", second, "s", timesCost(2.2));
    printRow("peak memory of the first sync, MB: its answer", {peak / 1e6, answerSize / 1e6}, "MB",
        timesCost(6));
}
