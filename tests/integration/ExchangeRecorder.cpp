#include "integration/ExchangeRecorder.h"

#include "CaldavLibrary/Operation/MRVStatusCode.h"
#include "Platform/Foundation/HTTPURLResponse.h"

namespace Tessel::Test {

ExchangeRecorder::ExchangeRecorder(const std::string& authorityFile)
    : actual_(MNetworkConfiguration {.authorityFile = authorityFile})
{
}

int ExchangeRecorder::send(MTask task)
{
    const bool isWrite = task.request.method == "PUT" || task.request.method == "MOVE"
        || task.request.method == "POST";
    task.completionHandler
        = [record = record_, guarded = isWrite && refusalsAreErrors, method = task.request.method,
              url = task.request.url(), complete = std::move(task.completionHandler)](
              Data data, auto response, auto text, std::optional<Error> error, int number) {
              Exchange exchange {.method = method, .url = url, .body = data};
              if (const auto http = dynamic_cast<const HTTPURLResponse*>(response.get())) {
                  exchange.status = http->statusCode;
                  exchange.headers = http->headers;
              }
              if (error) exchange.error = error->localizedDescription;
              if (guarded && exchange.status && !fromRawValue<MRVStatusCode>(*exchange.status)) {
                  error = Error {"HTTP", *exchange.status, "refused"};
                  response = nullptr;
              }
              complete(data, std::move(response), std::move(text), std::move(error), number);
              const std::lock_guard lock(record->mutex);
              record->exchanges.push_back(std::move(exchange));
          };
    return actual_.send(std::move(task));
}

std::vector<Exchange> ExchangeRecorder::exchanges() const
{
    const std::lock_guard lock(record_->mutex);
    return record_->exchanges;
}

std::optional<Exchange> ExchangeRecorder::last(const std::string& method, std::size_t count) const
{
    std::optional<Exchange> found;
    waitFor([&] {
        std::size_t seen = 0;
        for (auto& exchange : exchanges()) {
            if (exchange.method != method) continue;
            ++seen;
            found = std::move(exchange);
        }
        return seen >= count;
    });
    return found;
}

void ExchangeRecorder::forget()
{
    const std::lock_guard lock(record_->mutex);
    record_->exchanges.clear();
}

} // namespace Tessel::Test
