#pragma once

#include "Tessel/Platform/Transport/Exchange.h"

#include <array>
#include <cstddef>
#include <deque>
#include <memory>
#include <string>
#include <unordered_map>

namespace Tessel {

/// The exchanges that are not under way yet, by host: the most urgent first, else in order, and no
/// more at a time than `maximumExchangesPerHost`.
class WaitingExchanges {
public:
    void add(std::unique_ptr<Exchange> exchange);
    /// Takes out one whose host has room; null when there is none.
    std::unique_ptr<Exchange> next();
    /// Makes room for another exchange with the host of one that `next` gave.
    void finished(const Exchange& exchange);

private:
    struct Host {
        std::size_t underWay = 0;
        std::array<std::deque<std::unique_ptr<Exchange>>, 3> waiting; ///< most urgent first
        bool isListed = false;

        std::deque<std::unique_ptr<Exchange>>* mostUrgent();
    };

    void list(const std::string& name, Host& host);

    std::unordered_map<std::string, Host> hosts_;
    std::deque<std::string> listed_; ///< hosts that may have both room and something waiting
};

} // namespace Tessel
