#pragma once

#include <libxml/xmlstring.h>

#include <cstring>
#include <string>
#include <string_view>

/// Between libxml2's zero-terminated bytes and the library's texts.
namespace Tessel::XMLText {

inline std::string_view view(const xmlChar* text)
{
    return text ? std::string_view(reinterpret_cast<const char*>(text)) : std::string_view();
}

/// A zero-terminated copy, for the calls that want one.
class Terminated {
public:
    explicit Terminated(std::string_view text)
        : text_(text)
    {
    }

    operator const xmlChar*() const { return reinterpret_cast<const xmlChar*>(text_.c_str()); }

private:
    std::string text_;
};

inline bool equal(const xmlChar* a, std::string_view b)
{
    // Stops at the first difference: a name may be very long.
    const auto* const text = reinterpret_cast<const char*>(a);
    if (!text || b.empty()) return b.empty() && (!text || !*text);
    return std::strncmp(text, b.data(), b.size()) == 0 && !text[b.size()];
}

} // namespace Tessel::XMLText
