#pragma once

#include <Tessel/Platform/Foundation/Web/HTTPURLResponse.h>
#include <Tessel/Platform/Foundation/Web/URL.h>
#include <Tessel/TesselSession.h>

#include <atomic>
#include <memory>
#include <string>

namespace Tessel::App {

/// Prints each exchange to standard error as it ends: number, method, URL, status, bytes and
/// milliseconds; with `showsBodies` what was sent and what came too, without `Secrets`. Header
/// fields are not shown.
class TraceTransport final : public MNetworkManager {
public:
    TraceTransport(std::shared_ptr<MNetworkManager> actual, bool showsBodies);

    int send(MTask task) override;
    void cancel(int number) override;

private:
    const std::shared_ptr<MNetworkManager> actual_;
    const bool showsBodies_;
    std::atomic<int> count_ {0};
};

} // namespace Tessel::App
