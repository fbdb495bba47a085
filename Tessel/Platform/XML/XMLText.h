#pragma once

#include <libxml/xmlstring.h>

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
    return view(a) == b;
}

} // namespace Tessel::XMLText
