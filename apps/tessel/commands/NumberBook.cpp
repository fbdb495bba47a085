#include "apps/tessel/commands/NumberBook.h"

#include "apps/tessel/accounts/Stop.h"
#include "apps/tessel/output/Json.h"

#include <algorithm>
#include <map>

namespace Tessel::App {

namespace {

/// What cannot be read gives new numbers: they are printed before they are used.
Json readBook(const std::optional<std::string>& text)
{
    auto book = text ? Json::parse(*text, nullptr, false) : Json();
    return book.is_object() ? book : Json::object();
}

} // namespace

/// Of one kind of things.
struct NumberBook::Page {
    Page(const Json& book, const std::string& kind)
    {
        const auto page = book.find(kind);
        if (page == book.end() || !page->is_object()) return;
        if (const auto at = page->find("last"); at != page->end() && at->is_number_integer())
            last = *at;
        const auto known = page->find("numbers");
        if (known == page->end() || !known->is_object()) return;
        for (const auto& [name, value] : known->items())
            if (value.is_number_integer()) last = std::max(last, numbers[name] = int(value));
        const auto said = page->find("notes");
        if (said == page->end() || !said->is_object()) return;
        for (const auto& [name, value] : said->items())
            if (value.is_string()) notes[name] = value;
    }

    Json json() const { return {{"last", last}, {"numbers", numbers}, {"notes", notes}}; }

    std::map<std::string, int> numbers;
    std::map<std::string, std::string> notes;
    int last = 0; ///< that was given
};

NumberBook::NumberBook(const Account& account, std::string kind)
    : file_(account.file(".numbers.json"))
    , kind_(std::move(kind))
{
}

std::vector<int> NumberBook::numbers(const std::vector<std::string>& names) const
{
    std::vector<int> numbers;
    file_.change([&](const auto& text) {
        auto book = readBook(text);
        Page page(book, kind_);
        std::map<std::string, int> listed;
        for (const auto& name : names) {
            const auto known = page.numbers.find(name);
            numbers.push_back(known == page.numbers.end() ? ++page.last : known->second);
            listed[name] = numbers.back();
        }
        page.numbers = std::move(listed);
        std::erase_if(
            page.notes, [&](const auto& note) { return !page.numbers.contains(note.first); });
        book[kind_] = page.json();
        return book.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
    });
    return numbers;
}

std::size_t NumberBook::find(const std::vector<std::string>& names, std::int64_t number) const
{
    const Page page(readBook(file_.read()), kind_);
    const auto found = std::find_if(names.begin(), names.end(), [&](const auto& name) {
        const auto known = page.numbers.find(name);
        return known != page.numbers.end() && known->second == number;
    });
    if (found == names.end())
        throw Stop::missing("There is no number " + std::to_string(number) + " among the " + kind_
            + "; they may have changed since they were listed.");
    return std::size_t(found - names.begin());
}

void NumberBook::note(const std::string& name, const std::string& word) const
{
    file_.change([&](const auto& text) {
        auto book = readBook(text);
        Page page(book, kind_);
        page.notes[name] = word;
        book[kind_] = page.json();
        return book.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
    });
}

std::optional<std::string> NumberBook::noteOn(const std::string& name) const
{
    const Page page(readBook(file_.read()), kind_);
    const auto found = page.notes.find(name);
    return found == page.notes.end() ? std::nullopt : std::optional(found->second);
}

} // namespace Tessel::App
