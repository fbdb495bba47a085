#include "tests/Tessel/Session/Text/LibicalCheck.h"

#include <memory>

#include <libical/ical.h>

namespace Tessel {

int libicalErrors(const std::string& text)
{
    const std::unique_ptr<icalcomponent, void (*)(icalcomponent*)> tree(
        icalparser_parse_string(text.c_str()), icalcomponent_free);
    return tree ? icalcomponent_count_errors(tree.get()) : 1000;
}

} // namespace Tessel
