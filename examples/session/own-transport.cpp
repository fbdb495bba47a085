// Puts a transport of one's own below a session: one that counts what libcurl's sends and receives.
// usage: own-transport SERVER USER
#include "examples/session/Example.h"

#include <atomic>

using namespace Tessel;
using Example::got;

namespace {

class CountingTransport final : public MNetworkManager {
public:
    explicit CountingTransport(std::shared_ptr<MNetworkManager> below)
        : below_(std::move(below))
    {
    }

    int send(MTask task) override
    {
        task.completionHandler
            = [this, next = std::move(task.completionHandler)](Data data, auto... rest) {
                  ++exchanges;
                  bytes += data.size();
                  next(std::move(data), std::move(rest)...);
              };
        return below_->send(std::move(task));
    }

    void cancel(int number) override { below_->cancel(number); }

    std::atomic<std::size_t> exchanges {0};
    std::atomic<std::size_t> bytes {0};

private:
    const std::shared_ptr<MNetworkManager> below_;
};

} // namespace

int main(int argc, char** argv)
{
    const auto transport = std::make_shared<CountingTransport>(Example::transport());
    const auto session = Example::open(argc, argv, transport);
    std::cout << got(wait(session->calendars())).size() << " calendars, " << transport->exchanges
              << " exchanges, " << transport->bytes << " bytes\n";
}
