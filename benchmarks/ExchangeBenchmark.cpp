#include "Tessel/CaldavLibrary/MRVClient.h"
#include "Tessel/CaldavLibrary/Operation/MRVOperation.h"
#include "Tessel/Platform/Foundation/Base/FatalError.h"
#include "Tessel/Platform/Transport/MNetworkManager.h"
#include "benchmarks/LoopbackServer.h"
#include "benchmarks/ProcessUsage.h"
#include "benchmarks/Table.h"

#include <curl/curl.h>

#include <array>
#include <atomic>
#include <memory>
#include <string>

using namespace Tessel;
using namespace Tessel::Benchmarks;

namespace {

constexpr int rounds = 20;
constexpr int requestCount = 1'000; // of one round
constexpr int inFlight = 16;
const std::string requestBody
    = "<d:propfind xmlns:d=\"DAV:\"><d:prop><d:getetag/></d:prop></d:propfind>";
const std::string answerBody
    = "<d:multistatus "
      "xmlns:d=\"DAV:\"><d:response><d:href>/home/event.ics</d:href></d:response></d:multistatus>";

std::string answer()
{
    return "HTTP/1.1 207 Multi-Status\r\nDAV: 1, 3, calendar-access\r\nContent-Type: text/xml\r\n"
           "Date: Sat, 01 Jan 2028 00:00:00 GMT\r\nServer: loopback\r\nContent-Length: "
        + std::to_string(answerBody.size()) + "\r\n\r\n" + answerBody;
}

URLRequest makeRequest(const std::string& url)
{
    URLRequest request(url);
    request.method = "PROPFIND";
    request.headers.set("Depth", "0");
    request.headers.set("Content-Type", "text/xml");
    request.headers.set("User-Agent", "benchmark");
    request.body = requestBody;
    return request;
}

void require(bool condition, const char* what)
{
    if (!condition) fatalError(what);
}

/// Counts the requests that are still to be sent and to be answered.
class Countdown {
public:
    bool mayStart() { return toStart_-- > 0; }
    void answered()
    {
        if (--toAnswer_ == 0) toAnswer_.notify_one();
    }
    void wait() const
    {
        for (int left = toAnswer_; left > 0; left = toAnswer_)
            toAnswer_.wait(left);
    }

private:
    std::atomic<int> toStart_ {requestCount};
    std::atomic<int> toAnswer_ {requestCount};
};

/// The least that libcurl needs: 16 handles, each sending its next request when one is answered.
class PlainLoop {
public:
    explicit PlainLoop(const std::string& url)
        : multi_(curl_multi_init())
    {
        for (const auto* field : {"Depth: 0", "Content-Type: text/xml", "User-Agent: benchmark"}) {
            fields_ = curl_slist_append(fields_, field);
        }
        for (std::size_t i = 0; i < handles_.size(); ++i) {
            auto* const handle = handles_[i] = curl_easy_init();
            curl_easy_setopt(handle, CURLOPT_URL, url.c_str());
            curl_easy_setopt(handle, CURLOPT_CUSTOMREQUEST, "PROPFIND");
            curl_easy_setopt(handle, CURLOPT_POSTFIELDSIZE, long(requestBody.size()));
            curl_easy_setopt(handle, CURLOPT_POSTFIELDS, requestBody.c_str());
            curl_easy_setopt(handle, CURLOPT_HTTPHEADER, fields_);
            curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, &PlainLoop::take);
            curl_easy_setopt(handle, CURLOPT_WRITEDATA, &bodies_[i]);
            curl_easy_setopt(handle, CURLOPT_PRIVATE, &bodies_[i]);
        }
    }

    ~PlainLoop()
    {
        for (auto* const handle : handles_)
            curl_easy_cleanup(handle);
        curl_multi_cleanup(multi_);
        curl_slist_free_all(fields_);
    }

    void run()
    {
        int toStart = requestCount;
        int toAnswer = requestCount;
        for (auto* const handle : handles_) {
            curl_multi_add_handle(multi_, handle);
            --toStart;
        }
        while (toAnswer > 0) {
            int count = 0;
            curl_multi_perform(multi_, &count);
            while (const auto* message = curl_multi_info_read(multi_, &count)) {
                auto* const handle = message->easy_handle;
                std::string* body = nullptr;
                curl_easy_getinfo(handle, CURLINFO_PRIVATE, &body);
                require(*body == answerBody, "the bare loop got another answer");
                body->clear();
                curl_multi_remove_handle(multi_, handle);
                --toAnswer;
                if (toStart-- > 0) curl_multi_add_handle(multi_, handle);
            }
            if (toAnswer > 0) curl_multi_poll(multi_, nullptr, 0, 1000, nullptr);
        }
    }

private:
    static std::size_t take(char* bytes, std::size_t size, std::size_t count, void* body)
    {
        static_cast<std::string*>(body)->append(bytes, size * count);
        return size * count;
    }

    CURLM* const multi_;
    curl_slist* fields_ = nullptr;
    std::array<CURL*, inFlight> handles_ {};
    std::array<std::string, inFlight> bodies_;
};

void sendNext(Countdown& countdown, const std::string& url)
{
    if (!countdown.mayStart()) return;
    MNetworkManager::sharedInstance()->send(
        {.request = makeRequest(url), .completionHandler = [&](const Data& data, auto&&...) {
             require(data.view() == answerBody, "the transport got another answer");
             sendNext(countdown, url);
             countdown.answered();
         }});
}

void runSends(const std::string& url)
{
    Countdown countdown;
    for (int i = 0; i < inFlight; ++i)
        sendNext(countdown, url);
    countdown.wait();
}

struct Anybody final : MRVAuthDelegate {
    void authorize(const URLRequest& request, bool, const std::shared_ptr<MRVAccount>&,
        std::function<void(URLRequest)> completion) override
    {
        completion(request);
    }
};

/// One exchange through `process`, then the next.
class Probe final : public MRVOperation {
public:
    static void startNext(
        Countdown& countdown, const std::string& url, const std::shared_ptr<MRVClient>& client)
    {
        if (!countdown.mayStart()) return;
        const auto probe = std::make_shared<Probe>();
        probe->client = client;
        probe->countdown_ = &countdown;
        probe->url_ = &url;
        OperationQueue().addOperation(probe);
    }

    void main() override
    {
        auto request = makeRequest(*url_);
        process(request, "Probe", nullptr,
            [weak = weakly(this)](const Data& data, const auto&, auto status) {
                require(status == MRVStatusCode::multiStatus && data.view() == answerBody,
                    "an operation got another answer");
                const auto self = weak.lock();
                startNext(*self->countdown_, *self->url_, self->client);
                self->countdown_->answered();
            });
    }

private:
    Countdown* countdown_ = nullptr;
    const std::string* url_ = nullptr;
};

void runOperations(const std::string& url)
{
    const auto anybody = std::make_shared<Anybody>();
    const auto client = std::make_shared<MRVClient>(std::make_shared<MRVAccount>(), anybody);
    Countdown countdown;
    for (int i = 0; i < inFlight; ++i)
        Probe::startNext(countdown, url, client);
    countdown.wait();
}

} // namespace

int main()
{
    stayOnOneCore();
    const LoopbackServer server({{"", answer()}});
    const LoopbackServer plainServer({{"", answer()}});
    curl_global_init(CURL_GLOBAL_ALL);
    const auto url = server.url("/home/");
    const auto plainUrl = plainServer.url("/home/");
    PlainLoop loop(plainUrl);

    const auto plain = [&] { loop.run(); };
    const auto operations = cpuInTurns(
        rounds, [&] { runOperations(url); }, plain);
    const auto sends = cpuInTurns(
        rounds, [&] { runSends(url); }, plain);
    const auto what = std::to_string(rounds * requestCount) + " requests, "
        + std::to_string(inFlight) + " in flight, one core, CPU, ";
    printRow(what + "through process: bare libcurl", operations, "s", timesCost(1.6));
    printRow(what + "through send: bare libcurl", sends, "s", timesCost(1.6));
    printRow("connections opened for them: requests in flight",
        {double(server.connectionCount()), inFlight}, "", timesCost(1));
}
