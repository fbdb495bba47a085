#include "Tessel/Platform/Foundation/Web/HTTPHeaders.h"

#include <algorithm>

namespace Tessel {

namespace {

char lower(char c)
{
    return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c;
}

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
        fields_.emplace_back(name, value);
    } else {
        found->second = value;
    }
}

void HTTPHeaders::add(std::string_view name, std::string_view value)
{
    const auto found = std::find_if(fields_.begin(), fields_.end(), named(name));
    if (found == fields_.end()) {
        fields_.emplace_back(name, value);
    } else {
        found->second.append(", ").append(value);
    }
}

void HTTPHeaders::remove(std::string_view name)
{
    std::erase_if(fields_, named(name));
}

} // namespace Tessel
