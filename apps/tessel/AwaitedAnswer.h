#pragma once

#include "apps/tessel/ExchangeLog.h"

#include <memory>
#include <optional>
#include <tuple>

namespace Tessel::App {

/// A completion that keeps what it is called with. Copies share it.
template <class... Arguments> class AwaitedAnswer {
public:
    explicit AwaitedAnswer(std::shared_ptr<ExchangeLog> log)
        : log_(std::move(log))
    {
    }

    void operator()(Arguments... arguments) const
    {
        log_->update([&] { value_->emplace(std::move(arguments)...); });
    }

    /// Read in a wait condition, or after it was met.
    const std::optional<std::tuple<Arguments...>>& value() const { return *value_; }

private:
    std::shared_ptr<ExchangeLog> log_;
    std::shared_ptr<std::optional<std::tuple<Arguments...>>> value_
        = std::make_shared<std::optional<std::tuple<Arguments...>>>();
};

} // namespace Tessel::App
