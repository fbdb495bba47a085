#include "Tessel/Platform/Transport/FieldList.h"

#include <cstring>

namespace Tessel {

namespace {

bool isNamed(const HTTPHeaders::Field& field, const char* name)
{
    return curl_strequal(field.first.c_str(), name);
}

bool isTransportsOwn(const HTTPHeaders::Field& field)
{
    return isNamed(field, "Content-Length") || isNamed(field, "Transfer-Encoding")
        || isNamed(field, "Host") || isNamed(field, "Expect");
}

} // namespace

void FieldList::add(std::string_view name, std::string_view separator, std::string_view value)
{
    lines_.append(name).append(separator).append(value).append(1, '\0');
    nodes_.emplace_back();
}

curl_slist* FieldList::assign(const URLRequest& request)
{
    lines_.clear();
    nodes_.clear();
    // libcurl would announce a large body first and wait a second for a 100.
    add("Expect", ":", "");
    // libcurl's own type for a body would be that of a form.
    if (!request.headers.value("Content-Type")) add("Content-Type", ":", "");
    for (const auto& field : request.headers.fields()) {
        if (isTransportsOwn(field)) continue;
        const auto& [name, value] = field;
        // "Name;" is libcurl's way of saying an empty value, "Name:" would remove the field.
        const bool isBlank = value.find_first_not_of(" \t") == std::string::npos;
        if (isBlank)
            add(name, ";", "");
        else
            add(name, ": ", value);
    }

    // Once the lines stay where they are.
    char* line = lines_.data();
    for (auto& node : nodes_) {
        node = {line, &node + 1};
        line += std::strlen(line) + 1;
    }
    nodes_.back().next = nullptr;
    return nodes_.data();
}

} // namespace Tessel
