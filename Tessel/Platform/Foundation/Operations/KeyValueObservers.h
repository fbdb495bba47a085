#pragma once

#include <algorithm>
#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace Tessel {

/// Who wants to hear of a subject's changes, with the subject's own `Observer`, `ObserverToken` and
/// `Change`; nothing but a pointer while nobody does, which is so for most. Safe from any thread;
/// observers run unlocked.
template <class Subject> class KeyValueObservers {
public:
    using Observer = typename Subject::Observer;
    using Token = typename Subject::ObserverToken;
    using Change = typename Subject::Change;

    KeyValueObservers() = default;
    ~KeyValueObservers() { delete list_.load(); }
    KeyValueObservers(const KeyValueObservers&) = delete;
    KeyValueObservers& operator=(const KeyValueObservers&) = delete;

    Token add(std::string_view key, Observer observer)
    {
        auto& list = this->list();
        const std::lock_guard lock(list.mutex);
        list.entries.push_back({++list.lastToken, std::string(key), std::move(observer)});
        return list.lastToken;
    }

    void remove(Token token)
    {
        Entry removed;
        auto& list = this->list();
        const std::lock_guard lock(list.mutex);
        const auto found = std::find_if(list.entries.begin(), list.entries.end(),
            [token](const Entry& entry) { return entry.token == token; });
        if (found == list.entries.end()) return;
        removed = std::move(*found);
        list.entries.erase(found);
    }

    void notify(Subject& subject, std::string_view key, Change change) const
    {
        auto* const list = list_.load();
        if (!list) return;
        std::vector<Observer> observers;
        {
            const std::lock_guard lock(list->mutex);
            for (const auto& entry : list->entries) {
                if (entry.key == key) observers.push_back(entry.observer);
            }
        }
        for (const auto& observer : observers)
            observer(subject, key, change);
    }

private:
    struct Entry {
        Token token = 0;
        std::string key;
        Observer observer;
    };

    struct List {
        std::mutex mutex;
        std::vector<Entry> entries;
        Token lastToken = 0;
    };

    List& list()
    {
        if (auto* const list = list_.load()) return *list;
        auto made = std::make_unique<List>();
        List* other = nullptr;
        if (!list_.compare_exchange_strong(other, made.get())) return *other;
        return *made.release();
    }

    std::atomic<List*> list_ {nullptr};
};

} // namespace Tessel
