#include "Tessel/Platform/Transport/WaitingExchanges.h"

#include <algorithm>

namespace Tessel {

namespace {

/// The URL up to its path.
std::string hostOf(const std::string& url)
{
    const auto slashes = url.find("://");
    return url.substr(0, slashes == std::string::npos ? 0 : url.find_first_of("/?#", slashes + 3));
}

std::size_t rank(MTaskPriority priority)
{
    switch (priority) {
    case MTaskPriority::high:
        return 0;
    case MTaskPriority::normal:
        return 1;
    case MTaskPriority::low:
        return 2;
    }
    return 1;
}

} // namespace

std::deque<std::unique_ptr<Exchange>>* WaitingExchanges::Host::mostUrgent()
{
    const auto found = std::find_if(
        waiting.begin(), waiting.end(), [](const auto& queue) { return !queue.empty(); });
    return found == waiting.end() ? nullptr : &*found;
}

void WaitingExchanges::list(const std::string& name, Host& host)
{
    if (host.isListed) return;
    host.isListed = true;
    listed_.push_back(name);
}

void WaitingExchanges::add(std::unique_ptr<Exchange> exchange)
{
    exchange->host = hostOf(exchange->task.request.url());
    auto& host = hosts_[exchange->host];
    list(exchange->host, host);
    host.waiting[rank(exchange->task.priority)].push_back(std::move(exchange));
}

std::unique_ptr<Exchange> WaitingExchanges::next()
{
    while (!listed_.empty()) {
        auto& host = hosts_[listed_.front()];
        auto* const queue = host.mostUrgent();
        const auto limit = queue
            ? std::max<std::size_t>(queue->front()->configuration->maximumExchangesPerHost, 1)
            : 0;
        if (host.underWay < limit) {
            auto exchange = std::move(queue->front());
            queue->pop_front();
            ++host.underWay;
            return exchange;
        }
        host.isListed = false;
        listed_.pop_front();
    }
    return nullptr;
}

void WaitingExchanges::finished(const Exchange& exchange)
{
    const auto found = hosts_.find(exchange.host);
    auto& host = found->second;
    --host.underWay;
    if (host.mostUrgent()) {
        list(exchange.host, host);
    } else if (host.underWay == 0 && !host.isListed) {
        hosts_.erase(found);
    }
}

} // namespace Tessel
