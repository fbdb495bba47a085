#pragma once

#include "Tessel/Platform/Foundation/Web/URLRequest.h"
#include "Tessel/Session/Exchange/Answer.h"
#include "Tessel/Session/Outcome/Result.h"

#include <chrono>

namespace Tessel {

/// The two log lines of an exchange, at debug: when it begins, and how it ended after how long.
/// Both carry its number, since exchanges run side by side; neither carries header fields or
/// bodies.
class ExchangeTrace {
public:
    void began(const URLRequest& request);
    void ended(const Result<Answer>& result) const;

private:
    unsigned number_ = 0;
    std::chrono::steady_clock::time_point start_;
};

} // namespace Tessel
