#include "Tessel/Platform/Transport/WaitingExchanges.h"

#include "Tessel/Platform/Foundation/Base/Limits.h"
#include "Tessel/Platform/Foundation/Web/Origin.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace Tessel {

namespace {

/// What shares a limit; a URL without an origin fails before it needs one.
std::string hostOf(const std::string& url)
{
    auto origin = Origin::of(url);
    return origin ? std::move(*origin).text() : std::string();
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

std::deque<std::unique_ptr<SentTask>>* WaitingExchanges::Host::mostUrgent()
{
    const auto found = std::find_if(
        waiting.begin(), waiting.end(), [](const auto& queue) { return !queue.empty(); });
    return found == waiting.end() ? nullptr : &*found;
}

bool WaitingExchanges::Host::isIdle()
{
    return underWay == 0 && mentions == 0 && !mostUrgent();
}

void WaitingExchanges::list(Hosts::reference entry)
{
    auto& [name, host] = entry;
    auto& turns = known_.contains(name) ? knownTurns_ : strangersTurns_;
    if (std::exchange(host.turns, &turns) == &turns) return;
    turns.push_back(&entry);
    ++host.mentions;
}

void WaitingExchanges::add(std::unique_ptr<SentTask> exchange)
{
    exchange->host = hostOf(exchange->task.request.url());
    exchange->isWithStranger = false;
    auto& entry = *hosts_.try_emplace(exchange->host).first;
    list(entry);
    entry.second.waiting[rank(exchange->task.priority)].push_back(std::move(exchange));
}

std::unique_ptr<SentTask> WaitingExchanges::next()
{
    if (underWay_ == Limits::exchanges) return nullptr;
    if (auto exchange = nextOf(knownTurns_)) return exchange;
    if (underWayWithStrangers_ == Limits::exchangesWithStrangers) return nullptr;
    auto exchange = nextOf(strangersTurns_);
    if (exchange) {
        exchange->isWithStranger = true;
        ++underWayWithStrangers_;
    }
    return exchange;
}

std::unique_ptr<SentTask> WaitingExchanges::nextOf(Turns& turns)
{
    while (!turns.empty()) {
        auto& entry = *turns.front();
        auto& [name, host] = entry;
        turns.pop_front();
        --host.mentions;
        if (host.turns == &turns) host.turns = nullptr;
        auto* const queue = host.turns ? nullptr : host.mostUrgent();
        if (!queue) {
            forgetIfIdle(entry);
            continue;
        }
        const auto limit = queue->front()->configuration->maximumExchangesPerHost;
        if (host.underWay >= std::max<std::size_t>(limit, 1)) continue;

        auto exchange = std::move(queue->front());
        queue->pop_front();
        ++host.underWay;
        ++underWay_;
        if (host.mostUrgent()) list(entry);
        return exchange;
    }
    return nullptr;
}

std::vector<std::unique_ptr<SentTask>> WaitingExchanges::remove(
    const std::unordered_set<int>& numbers)
{
    std::vector<std::unique_ptr<SentTask>> removed;
    for (auto host = hosts_.begin(); host != hosts_.end();) {
        for (auto& queue : host->second.waiting) {
            const auto first = std::stable_partition(queue.begin(), queue.end(),
                [&](const auto& exchange) { return !numbers.contains(exchange->number); });
            std::move(first, queue.end(), std::back_inserter(removed));
            queue.erase(first, queue.end());
        }
        host = host->second.isIdle() ? hosts_.erase(host) : std::next(host);
    }
    return removed;
}

void WaitingExchanges::forgetIfIdle(Hosts::reference entry)
{
    if (entry.second.isIdle()) hosts_.erase(hosts_.find(entry.first));
}

void WaitingExchanges::remember(const std::string& name)
{
    // Forgotten now and then, so that a server cannot fill the memory with names.
    if (known_.size() == Limits::keptConnections) known_.clear();
    known_.insert(name);
}

void WaitingExchanges::finished(const SentTask& exchange, bool hasAnswered)
{
    --underWay_;
    if (exchange.isWithStranger) --underWayWithStrangers_;
    if (hasAnswered) remember(exchange.host);

    auto& entry = *hosts_.find(exchange.host);
    --entry.second.underWay;
    if (entry.second.mostUrgent()) list(entry);
    forgetIfIdle(entry);
}

} // namespace Tessel
