#pragma once

#include "apps/tessel/accounts/AccountList.h"

#include <string>
#include <vector>

namespace Tessel::App {

/// Short numbers for things whose own names are long. A number that was printed stays that of the
/// same thing for as long as it is listed.
class NumberBook {
public:
    /// `kind` is that of the things, such as "invitations".
    NumberBook(const Account& account, std::string kind);

    /// The number of each, in their order.
    std::vector<int> numbers(const std::vector<std::string>& names) const;
    /// The place among these of the one that the user means. Throws a `Stop` where there is none.
    std::size_t find(const std::vector<std::string>& names, int number) const;

private:
    const UserFile file_;
    const std::string kind_;
};

} // namespace Tessel::App
