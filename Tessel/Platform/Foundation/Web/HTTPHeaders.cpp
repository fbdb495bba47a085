#include "Tessel/Platform/Foundation/Web/HTTPHeaders.h"

#include "Tessel/Platform/Foundation/Text/ASCII.h"

#include <algorithm>

namespace Tessel {

namespace {

// Most requests and answers have this many.
constexpr std::size_t usualCount = 8;

auto named(std::string_view name)
{
    return [name](const HTTPHeaders::Field& field) {
        return std::equal(name.begin(), name.end(), field.first.begin(), field.first.end(),
            [](char a, char b) { return lower(a) == lower(b); });
    };
}

} // namespace

std::optional<std::string> HTTPHeaders::value(std::string_view name) const
{
    const auto found = std::find_if(fields_.begin(), fields_.end(), named(name));
    if (found == fields_.end()) return std::nullopt;
    return found->second;
}

void HTTPHeaders::set(std::string_view name, std::string_view value)
{
    const auto found = std::find_if(fields_.begin(), fields_.end(), named(name));
    if (found == fields_.end()) {
        append(name, value);
    } else {
        found->second = value;
    }
}

void HTTPHeaders::add(std::string_view name, std::string_view value)
{
    const auto found = std::find_if(fields_.begin(), fields_.end(), named(name));
    if (found == fields_.end()) {
        append(name, value);
    } else {
        found->second.append(", ").append(value);
    }
}

void HTTPHeaders::append(std::string_view name, std::string_view value)
{
    if (fields_.empty()) fields_.reserve(usualCount);
    fields_.emplace_back(name, value);
}

void HTTPHeaders::remove(std::string_view name)
{
    std::erase_if(fields_, named(name));
}

} // namespace Tessel
