#pragma once

#include "apps/tessel/accounts/AccountList.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Tessel::App {

/// Short numbers for things whose own names are long. A number that was printed is never that of
/// another thing.
class NumberBook {
public:
    /// `kind` is that of the things, such as "invitations".
    NumberBook(const Account& account, std::string kind);

    /// The number of each, in their order.
    std::vector<int> numbers(const std::vector<std::string>& names) const;
    /// The place among these of the one that was printed with the number. Throws a `Stop` where
    /// there is none.
    std::size_t find(const std::vector<std::string>& names, std::int64_t number) const;

    /// A word about one of these, kept for as long as it is among those that are numbered.
    void note(const std::string& name, const std::string& word) const;
    /// None for one about which there is none.
    std::optional<std::string> noteOn(const std::string& name) const;

private:
    struct Page;

    const UserFile file_;
    const std::string kind_;
};

} // namespace Tessel::App
