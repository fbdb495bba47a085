#pragma once

#include <functional>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

/// What every target is made of. A fuzz program runs one target on inputs of its own making; the
/// test in tests/fuzz runs all of them on the inputs below corpus/.
namespace Tessel::Fuzz {

/// A property that does not hold for an input.
struct Finding : std::logic_error {
    using logic_error::logic_error;
};

inline void require(bool holds, const std::string& property)
{
    if (!holds) throw Finding(property);
}

/// Runs `read`, in which a fatal error is expected if its message begins with one of `reasons` and
/// is a finding otherwise. True when it ran to its end.
bool endsOrStopsFor(
    std::initializer_list<std::string_view> reasons, const std::function<void()>& read);

/// One kind of input. Targets register themselves, each is a static object of its file.
struct Target {
    using Take = void (*)(std::string_view input);

    Target(std::string_view name, Take take);

    std::string_view name; ///< its program is fuzz-NAME, its inputs are below corpus/NAME
    Take take; ///< throws a `Finding`

    static const std::vector<Target>& all();
};

} // namespace Tessel::Fuzz
