#pragma once

#include "Tessel/Session/Outcome/Failure.h"

#include <stdexcept>
#include <string>
#include <utility>
#include <variant>

namespace Tessel {

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
    Result(T value)
        : content_(std::in_place_index<0>, std::move(value))
    {
    }
    Result(Failure failure)
        : content_(std::in_place_index<1>, std::move(failure))
    {
    }

    explicit operator bool() const { return content_.index() == 0; }

    const T& value() const&
    {
        check();
        return *std::get_if<0>(&content_);
    }
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

    const Failure& failure() const { return failureIn(content_); }
    const std::string& reason() const { return failure().reason; }

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
    Result(Failure failure)
        : content_(std::move(failure))
    {
    }

    explicit operator bool() const { return content_.index() == 0; }
    const Failure& failure() const { return failureIn(content_); }
    const std::string& reason() const { return failure().reason; }

private:
    std::variant<std::monostate, Failure> content_;
};

using Outcome = Result<void>;

} // namespace Tessel
