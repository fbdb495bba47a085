#pragma once

#include "Tessel/Session/Outcome/Failure.h"

#include <string>
#include <utility>
#include <variant>

namespace Tessel {

/// What a call gives: a value, or why there is none. Asking for the one that is not there throws
/// `std::bad_variant_access`.
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

    const T& value() const& { return std::get<0>(content_); }
    T& value() & { return std::get<0>(content_); }
    /// By value, so that `for (const auto& each : wait(call).value())` holds what it walks over.
    T value() && { return std::get<0>(std::move(content_)); }

    const Failure& failure() const { return std::get<1>(content_); }
    const std::string& reason() const { return failure().reason; }

private:
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
    const Failure& failure() const { return std::get<1>(content_); }
    const std::string& reason() const { return failure().reason; }

private:
    std::variant<std::monostate, Failure> content_;
};

using Outcome = Result<void>;

} // namespace Tessel
