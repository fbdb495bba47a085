#pragma once

#include <initializer_list>
#include <string>

namespace Tessel {

/// A property by its local name and namespace.
struct PropertyName {
    const char* name;
    const char* uri;
};

/// The propfind document (RFC 4918, 14.20) that asks for the properties, in this order.
std::string propfindBody(std::initializer_list<PropertyName> properties);

} // namespace Tessel
