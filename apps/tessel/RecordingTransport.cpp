#include "apps/tessel/RecordingTransport.h"

#include <string_view>
#include <utility>

namespace Tessel::App {

namespace {

/// Ends the exchange with the completion handler that holds it, called or not: a redirect that the
/// library takes over has no completion.
struct Entry {
    Entry(std::shared_ptr<ExchangeLog> log, const URLRequest& request)
        : log(std::move(log))
        , index(this->log->begin(request.method, request.url()))
    {
    }
    ~Entry() { log->end(index); }
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;

    const std::shared_ptr<ExchangeLog> log;
    const std::size_t index;
};

std::string shortMultistatus(std::optional<int> status, const Data& data)
{
    if (status != 207 || data.size() > Exchange::shortBody) return "";
    return std::string(data.view());
}

bool wouldStopProcess(const std::string& method, int status)
{
    const bool isWrite = method == "PUT" || method == "MOVE" || method == "POST";
    return isWrite && !fromRawValue<MRVStatusCode>(status);
}

} // namespace

RecordingTransport::RecordingTransport(
    std::shared_ptr<MNetworkManager> actual, std::shared_ptr<ExchangeLog> log)
    : actual_(std::move(actual))
    , log_(std::move(log))
{
}

int RecordingTransport::send(MTask task)
{
    task.completionHandler = [entry = std::make_shared<Entry>(log_, task.request),
                                 method = task.request.method,
                                 complete = std::move(task.completionHandler)](Data data,
                                 auto response, auto text, std::optional<Error> error, int number) {
        const auto http = dynamic_cast<const HTTPURLResponse*>(response.get());
        const auto status = http ? std::optional(http->statusCode) : std::nullopt;
        entry->log->answered(entry->index, status,
            error ? std::optional(error->localizedDescription) : std::nullopt,
            shortMultistatus(status, data));
        if (status && wouldStopProcess(method, *status)) {
            error = Error {"HTTP", *status, "the server answered " + std::to_string(*status)};
            response = nullptr;
        }
        complete(std::move(data), std::move(response), std::move(text), std::move(error), number);
        entry->log->end(entry->index);
    };
    return actual_->send(std::move(task));
}

} // namespace Tessel::App
