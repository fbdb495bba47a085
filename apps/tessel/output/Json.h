#pragma once

#include <nlohmann/json.hpp>

#include <optional>

namespace Tessel::App {

/// Members stay in the order in which they were set.
using Json = nlohmann::ordered_json;

template <class T> Json orNull(const std::optional<T>& value)
{
    return value ? Json(*value) : Json(nullptr);
}

} // namespace Tessel::App
