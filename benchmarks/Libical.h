#pragma once

#include <libical/ical.h>

#include <memory>
#include <string>

namespace Tessel::Benchmarks {

struct FreeComponent {
    void operator()(icalcomponent* component) const { icalcomponent_free(component); }
};
using LibicalTree = std::unique_ptr<icalcomponent, FreeComponent>;

struct FreeText {
    void operator()(char* text) const { icalmemory_free_buffer(text); }
};
using LibicalText = std::unique_ptr<char, FreeText>;

inline LibicalTree libicalTree(const std::string& text)
{
    return LibicalTree(icalparser_parse_string(text.c_str()));
}

inline LibicalText libicalText(const LibicalTree& tree)
{
    return LibicalText(icalcomponent_as_ical_string_r(tree.get()));
}

} // namespace Tessel::Benchmarks
