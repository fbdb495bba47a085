#pragma once

#include "Tessel/Platform/Foundation/Operations/Operation.h"

#include <atomic>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace Tessel {

/// Who wants to hear of an operation's changes; nothing but a pointer while nobody does, which is
/// so for most operations. Safe from any thread; observers run unlocked.
class KeyValueObservers {
public:
    KeyValueObservers() = default;
    ~KeyValueObservers();
    KeyValueObservers(const KeyValueObservers&) = delete;
    KeyValueObservers& operator=(const KeyValueObservers&) = delete;

    Operation::ObserverToken add(std::string_view key, Operation::Observer observer);
    void remove(Operation::ObserverToken token);
    void notify(Operation& operation, std::string_view key, Operation::Change change) const;

private:
    struct Entry {
        Operation::ObserverToken token = 0;
        std::string key;
        Operation::Observer observer;
    };

    struct List {
        std::mutex mutex;
        std::vector<Entry> entries;
        Operation::ObserverToken lastToken = 0;
    };
    List& list();

    std::atomic<List*> list_ {nullptr};
};

} // namespace Tessel
