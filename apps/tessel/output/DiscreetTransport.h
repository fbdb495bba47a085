#pragma once

#include <Tessel/TesselSession.h>

#include <memory>

namespace Tessel::App {

/// Takes the credential out of answers that tell of a failure, before anybody shows or keeps what
/// the server says there; whatever is sent as one is known to `Secrets` from then on.
class DiscreetTransport final : public MNetworkManager {
public:
    explicit DiscreetTransport(std::shared_ptr<MNetworkManager> actual);

    int send(MTask task) override;
    void cancel(int number) override;

private:
    const std::shared_ptr<MNetworkManager> actual_;
};

} // namespace Tessel::App
