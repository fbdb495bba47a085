#pragma once

#include "Tessel/Platform/Foundation/Base/Export.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Tessel {

/// Header fields in the order in which they were set. Names are looked up without regard to case
/// (RFC 9110, 5.1); a field that arrives repeatedly is one comma-joined value (5.3).
class TESSEL_EXPORT HTTPHeaders {
public:
    using Field = std::pair<std::string, std::string>; ///< name and value

    /// Of all lines of that name; none without any.
    std::optional<std::string> value(std::string_view name) const;
    /// Replaces the value of `name`, or adds the field.
    void set(std::string_view name, std::string_view value);
    /// Appends to the value of `name` after ", ", or adds the field.
    void add(std::string_view name, std::string_view value);
    void remove(std::string_view name); ///< takes the field away, if any

    const std::vector<Field>& fields() const { return fields_; } ///< in order

private:
    void append(std::string_view name, std::string_view value);

    std::vector<Field> fields_;
};

} // namespace Tessel
