#pragma once

#include "Tessel/Platform/Transport/MCurlNetworkManager.h"
#include "tests/support/Callback.h"

#include <atomic>
#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace Tessel::Test {

/// One finished exchange, as the server or the network ended it.
struct Exchange {
    std::string method;
    std::string url; ///< of the request, before redirects that the transport followed
    std::optional<int> status; ///< absent after a transport error
    std::string error;
    HTTPHeaders headers; ///< of the answer, names as they came
    Data body;
};

/// Sends through the real transport and records what came back. An exchange is recorded after its
/// completion handler has returned: when it is there, whoever was to hear of it has heard.
class ExchangeRecorder final : public MNetworkManager {
public:
    explicit ExchangeRecorder(const std::string& authorityFile);

    int send(MTask task) override;

    /// Turns answers to writes whose status has no `MRVStatusCode` into errors, as a host does
    /// that must survive them.
    std::atomic<bool> refusalsAreErrors = false;

    /// Those sent so far; waits until all of them are recorded.
    std::vector<Exchange> exchanges() const;
    /// The last exchange with that method, once `count` of them are recorded; waits for it.
    std::optional<Exchange> last(const std::string& method, std::size_t count = 1) const;
    /// Forgets what was sent so far, once it is recorded.
    void forget();

private:
    struct Record {
        std::mutex mutex;
        std::vector<Exchange> exchanges;
        std::size_t underWay = 0;
    };
    std::vector<Exchange> recorded() const;
    void settle() const;

    MCurlNetworkManager actual_;
    const std::shared_ptr<Record> record_ = std::make_shared<Record>();
};

} // namespace Tessel::Test
