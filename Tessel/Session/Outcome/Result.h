#pragma once

#include "Tessel/Session/Outcome/Failure.h"

#include <stdexcept>
#include <string>
#include <utility>
#include <variant>

namespace Tessel {

/// The failure of what may have none; throws `std::logic_error` then.
template <class T> const Failure& failureIn(const std::variant<T, Failure>& content)
{
    if (const auto* failure = std::get_if<1>(&content)) return *failure;
    throw std::logic_error("There is no failure: it was done.");
}

/// What a call gives: a value, or why there is none. Asking for the value of a failure throws
/// `std::logic_error`, whose `what()` is the reason; asking for the failure of a success throws one
/// too.
template <class T> class Result {
public:
    /// That it was done.
    Result(T value)
        : content_(std::in_place_index<0>, std::move(value))
    {
    }
    /// Why not.
    Result(Failure failure)
        : content_(std::in_place_index<1>, std::move(failure))
    {
    }

    explicit operator bool() const { return content_.index() == 0; } ///< whether there is a value

    /// Throws where there is none.
    const T& value() const&
    {
        check();
        return *std::get_if<0>(&content_);
    }
    /// The same, to be changed.
    T& value() &
    {
        check();
        return *std::get_if<0>(&content_);
    }
    /// By value, so that `for (const auto& each : wait(call).value())` holds what it walks over.
    T value() &&
    {
        check();
        return std::move(*std::get_if<0>(&content_));
    }

    const Failure& failure() const { return failureIn(content_); } ///< throws where there is none
    const std::string& reason() const { return failure().reason; } ///< of the failure, for a person

private:
    void check() const
    {
        if (const auto* failure = std::get_if<1>(&content_))
            throw std::logic_error(failure->reason);
    }

    std::variant<T, Failure> content_;
};

/// What a call without a value gives: that it was done, or why not.
template <> class Result<void> {
public:
    Result() = default;
    /// Why not.
    Result(Failure failure)
        : content_(std::move(failure))
    {
    }

    explicit operator bool() const { return content_.index() == 0; } ///< whether it was done
    const Failure& failure() const { return failureIn(content_); } ///< throws where there is none
    const std::string& reason() const { return failure().reason; } ///< of the failure, for a person

private:
    std::variant<std::monostate, Failure> content_;
};

using Outcome = Result<void>; ///< of a call without a value

} // namespace Tessel
