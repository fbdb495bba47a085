#include "tests/integration/ExchangeRecorder.h"

#include "Tessel/CaldavLibrary/Operation/MRVStatusCode.h"
#include "Tessel/Platform/Foundation/Web/HTTPURLResponse.h"

#include <gtest/gtest.h>

namespace Tessel::Test {

ExchangeRecorder::ExchangeRecorder(const std::string& authorityFile)
    : actual_(MNetworkConfiguration {.authorityFile = authorityFile})
{
}

int ExchangeRecorder::send(MTask task)
{
    const bool isWrite = task.request.method == "PUT" || task.request.method == "MOVE"
        || task.request.method == "POST";
    {
        const std::lock_guard lock(record_->mutex);
        ++record_->underWay;
    }
    // A redirect that is taken over ends its exchange without a completion.
    std::shared_ptr<void> end(nullptr, [record = record_](void*) {
        const std::lock_guard lock(record->mutex);
        --record->underWay;
    });
    task.completionHandler
        = [record = record_, guarded = isWrite && refusalsAreErrors, method = task.request.method,
              url = task.request.url(), complete = std::move(task.completionHandler),
              end = std::move(end)](
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

void ExchangeRecorder::settle() const
{
    EXPECT_TRUE(waitFor([&] {
        const std::lock_guard lock(record_->mutex);
        return record_->underWay == 0;
    })) << "an exchange does not end";
}

std::vector<Exchange> ExchangeRecorder::recorded() const
{
    const std::lock_guard lock(record_->mutex);
    return record_->exchanges;
}

std::vector<Exchange> ExchangeRecorder::exchanges() const
{
    settle();
    return recorded();
}

std::optional<Exchange> ExchangeRecorder::last(const std::string& method, std::size_t count) const
{
    std::optional<Exchange> found;
    waitFor([&] {
        std::size_t seen = 0;
        for (auto& exchange : recorded()) {
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
    settle();
    const std::lock_guard lock(record_->mutex);
    record_->exchanges.clear();
}

} // namespace Tessel::Test
