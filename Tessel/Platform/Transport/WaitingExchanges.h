#pragma once

#include "Tessel/Platform/Transport/SentTask.h"

#include <array>
#include <cstddef>
#include <deque>
#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace Tessel {

/// The exchanges that are not under way yet, by scheme, host and port: of one host the most urgent
/// first, else in order, and no more at a time than `maximumExchangesPerHost`. Of all hosts no more
/// than `Limits::exchanges` are under way; the hosts take turns.
///
/// Hosts that have answered come before strangers, who get a part of the room only: a server that
/// names any number of silent hosts keeps nobody from the account's own.
class WaitingExchanges {
public:
    void add(std::unique_ptr<SentTask> exchange);
    /// Takes out one for which there is room; null when there is none.
    std::unique_ptr<SentTask> next();
    /// Takes the tasks of these numbers out.
    std::vector<std::unique_ptr<SentTask>> remove(const std::unordered_set<int>& numbers);
    /// Makes room for another exchange after one that `next` gave.
    void finished(const SentTask& exchange, bool hasAnswered);

private:
    struct Host {
        std::size_t underWay = 0;
        std::array<std::deque<std::unique_ptr<SentTask>>, 3> waiting; ///< most urgent first
        const void* turns = nullptr; ///< the list in which it waits for its turn, if it does
        std::size_t mentions = 0; ///< in both lists

        std::deque<std::unique_ptr<SentTask>>* mostUrgent();
        bool isIdle();
    };
    using Hosts = std::unordered_map<std::string, Host>;
    using Turns = std::deque<Hosts::pointer>;

    void list(Hosts::reference host);
    std::unique_ptr<SentTask> nextOf(Turns& turns);
    void forgetIfIdle(Hosts::reference entry);
    void remember(const std::string& name);

    Hosts hosts_; ///< with something waiting or under way, or in a list
    std::unordered_set<std::string> known_; ///< hosts that have answered
    // Hosts that may have both room and something waiting, some of them listed elsewhere since.
    Turns knownTurns_;
    Turns strangersTurns_;
    std::size_t underWay_ = 0;
    std::size_t underWayWithStrangers_ = 0;
};

} // namespace Tessel
