#include "apps/tessel/commands/NumberBook.h"

#include "apps/tessel/accounts/Stop.h"
#include "apps/tessel/output/Json.h"

#include <algorithm>
#include <map>
#include <set>

namespace Tessel::App {

NumberBook::NumberBook(const Account& account, std::string kind)
    : file_(account.file(".numbers.json"))
    , kind_(std::move(kind))
{
}

std::vector<int> NumberBook::numbers(const std::vector<std::string>& names) const
{
    std::map<std::string, int> chosen;
    file_.change([&](const auto& text) {
        // What cannot be read gives new numbers: they are printed before they are used.
        auto book = text ? Json::parse(*text, nullptr, false) : Json();
        if (!book.is_object()) book = Json::object();
        std::set<int> used;
        const Json before = book.value(kind_, Json::object());
        for (const auto& [name, value] : before.items()) {
            const bool isListed = std::find(names.begin(), names.end(), name) != names.end();
            const int number = value.is_number_integer() ? int(value) : 0;
            if (isListed && number > 0 && used.insert(number).second) chosen[name] = number;
        }
        int next = 1;
        for (const auto& name : names) {
            while (used.contains(next))
                ++next;
            if (chosen.emplace(name, next).second) used.insert(next);
        }
        book[kind_] = chosen;
        return book.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
    });
    std::vector<int> numbers;
    for (const auto& name : names)
        numbers.push_back(chosen.at(name));
    return numbers;
}

std::size_t NumberBook::find(const std::vector<std::string>& names, int number) const
{
    const auto all = numbers(names);
    const auto found = std::find(all.begin(), all.end(), number);
    if (found == all.end())
        throw Stop::missing("There is no number " + std::to_string(number) + " among the " + kind_
            + "; they may have changed since they were listed.");
    return static_cast<std::size_t>(found - all.begin());
}

} // namespace Tessel::App
