#include "Tessel/Session/Exchange/ExchangeTrace.h"

#include "Tessel/Platform/Foundation/Web/URL.h"
#include "Tessel/Platform/Plinth/Logger.h"

#include <atomic>

namespace Tessel {

using Plinth::Level;

void ExchangeTrace::began(const URLRequest& request)
{
    static std::atomic<unsigned> last {0};
    number_ = ++last;
    start_ = std::chrono::steady_clock::now();
    Plinth::logger()->log(Level::debug, "exchange ", number_, ": ", request.method, " ",
        [&] { return withoutUserInfo(request.url()); });
}

void ExchangeTrace::ended(const Result<Answer>& result) const
{
    if (number_ == 0) return;
    const auto passed = std::chrono::steady_clock::now() - start_;
    const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(passed).count();
    const auto logger = Plinth::logger();
    if (result) {
        logger->log(Level::debug, "exchange ", number_, ": ", result.value().status, ", ",
            result.value().body.size(), " bytes, ", milliseconds, " ms");
    } else {
        logger->log(Level::debug, "exchange ", number_, ": ", result.failure().reason, " After ",
            milliseconds, " ms");
    }
}

} // namespace Tessel
