#pragma once

#include "apps/tessel/ExchangeLog.h"

#include <Tessel/Tessel.h>

#include <memory>

namespace Tessel::App {

/// Sends through another transport and notes what the server said, which the library does not
/// always pass on.
///
/// It also keeps a refusal from stopping the process: the write calls take a status that has no
/// `MRVStatusCode` (412 for a lost update, 409, 500) as a programming error. Such an answer to PUT,
/// MOVE and POST is handed on as an error instead.
class RecordingTransport final : public MNetworkManager {
public:
    RecordingTransport(std::shared_ptr<MNetworkManager> actual, std::shared_ptr<ExchangeLog> log);

    int send(MTask task) override;

private:
    const std::shared_ptr<MNetworkManager> actual_;
    const std::shared_ptr<ExchangeLog> log_;
};

} // namespace Tessel::App
