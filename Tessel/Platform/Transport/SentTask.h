#pragma once

#include "Tessel/Platform/Foundation/Base/Data.h"
#include "Tessel/Platform/Foundation/Base/Error.h"
#include "Tessel/Platform/Foundation/Web/HTTPURLResponse.h"
#include "Tessel/Platform/Transport/MNetworkConfiguration.h"
#include "Tessel/Platform/Transport/MTask.h"

#include <memory>
#include <string>

namespace Tessel {

/// A task on its way, with what it keeps over several redirects.
struct SentTask {
    MTask task;
    int number = 0;
    std::shared_ptr<const MNetworkConfiguration> configuration = {};
    int redirects = 0;
    // Set by `WaitingExchanges`.
    std::string host = {};
    bool isWithStranger = false;

    /// Tells the task's delegate and completion handler of the error.
    void fail(const Error& error) const;
    /// Hands the answer over, unless it is a redirect. Then, when the transport is to follow it,
    /// the task's request is the one to send next and the result is true; else the task has failed
    /// or its delegate has taken the redirect over.
    [[nodiscard]] bool settle(std::shared_ptr<const HTTPURLResponse> response, Data body);

private:
    void complete(std::shared_ptr<const HTTPURLResponse> response, Data body) const;
    bool follow(URLRequest next, int status);
};

} // namespace Tessel
