#pragma once

#include "Platform/Foundation/Operation.h"

#include <atomic>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace Tessel {

/// Who wants to hear of an operation's changes. Safe from any thread; observers run unlocked.
class KeyValueObservers {
public:
    Operation::ObserverToken add(std::string_view key, Operation::Observer observer);
    void remove(Operation::ObserverToken token);
    void notify(Operation& operation, std::string_view key, Operation::Change change) const;

private:
    struct Entry {
        Operation::ObserverToken token = 0;
        std::string key;
        Operation::Observer observer;
    };

    mutable std::mutex mutex_;
    std::atomic<bool> any_ {false};
    std::vector<Entry> entries_;
    Operation::ObserverToken lastToken_ = 0;
};

} // namespace Tessel
