#include "apps/tessel/ExchangeLog.h"

#include <algorithm>
#include <utility>

namespace Tessel::App {

namespace {

std::string word(const Exchange& exchange)
{
    if (exchange.failure) return *exchange.failure;
    return exchange.status ? std::to_string(*exchange.status) : "no answer";
}

} // namespace

bool Exchange::isWithout(std::string_view element) const
{
    return multistatus.find("multistatus") != std::string::npos
        && multistatus.find(element) == std::string::npos;
}

std::string Exchange::description() const
{
    return method + " " + url + ": " + word(*this);
}

std::string Exchange::summary() const
{
    return method + " " + word(*this);
}

std::size_t ExchangeLog::begin(std::string method, std::string url)
{
    const std::lock_guard lock(mutex_);
    ++underWay_;
    exchanges_.push_back({.method = std::move(method), .url = std::move(url)});
    return exchanges_.size() - 1;
}

void ExchangeLog::answered(std::size_t index, std::optional<int> status,
    std::optional<std::string> failure, std::string multistatus)
{
    const std::lock_guard lock(mutex_);
    auto& exchange = exchanges_[index];
    exchange.status = status;
    exchange.failure = std::move(failure);
    exchange.multistatus = std::move(multistatus);
    last_ = index;
}

void ExchangeLog::end(std::size_t index)
{
    const std::lock_guard lock(mutex_);
    if (std::exchange(exchanges_[index].isOver, true)) return;
    --underWay_;
    lastEnd_ = Clock::now();
    changed_.notify_all();
}

void ExchangeLog::update(const std::function<void()>& change)
{
    const std::lock_guard lock(mutex_);
    change();
    changed_.notify_all();
}

ExchangeLog::Outcome ExchangeLog::wait(
    const Condition& condition, Clock::time_point deadline, std::size_t first) const
{
    std::unique_lock lock(mutex_);
    while (!condition(exchanges_)) {
        const auto now = Clock::now();
        if (now >= deadline) return Outcome::timedOut;
        const bool isIdle = underWay_ == 0 && exchanges_.size() > first;
        if (isIdle && now >= lastEnd_ + silence) return Outcome::silent;
        changed_.wait_until(lock, isIdle ? std::min(deadline, lastEnd_ + silence) : deadline);
    }
    return Outcome::met;
}

ExchangeLog::Exchanges ExchangeLog::exchanges(std::size_t first) const
{
    const std::lock_guard lock(mutex_);
    return {
        exchanges_.begin() + std::ptrdiff_t(std::min(first, exchanges_.size())), exchanges_.end()};
}

std::size_t ExchangeLog::count() const
{
    const std::lock_guard lock(mutex_);
    return exchanges_.size();
}

std::optional<Exchange> ExchangeLog::last() const
{
    const std::lock_guard lock(mutex_);
    if (!last_) return std::nullopt;
    return exchanges_[*last_];
}

} // namespace Tessel::App
