#include "Tessel/icalendar/CGICalendarText.h"

#include <algorithm>

namespace Tessel {

void CGICalendarText::assign(std::optional<std::string_view> text)
{
    // The copy is made before the old text goes: the new one may lie within it.
    const char* copy = text ? "" : nullptr;
    const bool owned = text && !text->empty();
    if (owned) {
        auto* bytes = new char[text->size()];
        std::copy(text->begin(), text->end(), bytes);
        copy = bytes;
    }
    const auto size = text ? text->size() : 0;

    release();
    data_ = copy;
    size_ = size;
    owned_ = owned;
}

} // namespace Tessel
