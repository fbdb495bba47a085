#include "Platform/Foundation/KeyValueObservers.h"

#include <algorithm>

namespace Tessel {

Operation::ObserverToken KeyValueObservers::add(std::string_view key, Operation::Observer observer)
{
    const std::lock_guard lock(mutex_);
    entries_.push_back({++lastToken_, std::string(key), std::move(observer)});
    any_ = true;
    return lastToken_;
}

void KeyValueObservers::remove(Operation::ObserverToken token)
{
    Entry removed;
    const std::lock_guard lock(mutex_);
    const auto found = std::find_if(entries_.begin(), entries_.end(),
        [token](const Entry& entry) { return entry.token == token; });
    if (found == entries_.end()) return;
    removed = std::move(*found);
    entries_.erase(found);
}

void KeyValueObservers::notify(
    Operation& operation, std::string_view key, Operation::Change change) const
{
    if (!any_) return;
    std::vector<Operation::Observer> observers;
    {
        const std::lock_guard lock(mutex_);
        for (const auto& entry : entries_) {
            if (entry.key == key) observers.push_back(entry.observer);
        }
    }
    for (const auto& observer : observers)
        observer(operation, key, change);
}

} // namespace Tessel
