#pragma once

#include "apps/tessel/accounts/AccountList.h"

#include <cstdint>
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

private:
    struct Page;

    const UserFile file_;
    const std::string kind_;
};

} // namespace Tessel::App
