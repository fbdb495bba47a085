#include "Tessel/Platform/Foundation/Operations/KeyValueObservers.h"

#include <algorithm>
#include <memory>

namespace Tessel {

KeyValueObservers::~KeyValueObservers()
{
    delete list_.load();
}

KeyValueObservers::List& KeyValueObservers::list()
{
    if (auto* const list = list_.load()) return *list;
    auto made = std::make_unique<List>();
    List* other = nullptr;
    if (!list_.compare_exchange_strong(other, made.get())) return *other;
    return *made.release();
}

Operation::ObserverToken KeyValueObservers::add(std::string_view key, Operation::Observer observer)
{
    auto& list = this->list();
    const std::lock_guard lock(list.mutex);
    list.entries.push_back({++list.lastToken, std::string(key), std::move(observer)});
    return list.lastToken;
}

void KeyValueObservers::remove(Operation::ObserverToken token)
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

void KeyValueObservers::notify(
    Operation& operation, std::string_view key, Operation::Change change) const
{
    auto* const list = list_.load();
    if (!list) return;
    std::vector<Operation::Observer> observers;
    {
        const std::lock_guard lock(list->mutex);
        for (const auto& entry : list->entries) {
            if (entry.key == key) observers.push_back(entry.observer);
        }
    }
    for (const auto& observer : observers)
        observer(operation, key, change);
}

} // namespace Tessel
