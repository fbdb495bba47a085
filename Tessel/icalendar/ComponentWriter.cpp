#include "Tessel/icalendar/CGICalendarComponent.h"

namespace Tessel {

namespace {

struct OpenComponent {
    const CGICalendarComponent* component;
    std::size_t nextChild = 0;
};

} // namespace

static void appendBoundary(
    std::string& text, std::string_view keyword, const CGICalendarComponent& component)
{
    text.append(keyword).append(component.type().value_or("(null)")).push_back('\n');
}

static void appendHead(std::string& text, const CGICalendarComponent& component)
{
    appendBoundary(text, "BEGIN:", component);
    for (const auto& property : component.properties) {
        if (property) property->appendDescription(text);
    }
}

void CGICalendarComponent::appendDescription(std::string& text) const
{
    // An explicit stack: components may nest deeper than the thread's stack is.
    std::vector<OpenComponent> open {{this}};
    appendHead(text, *this);
    while (!open.empty()) {
        auto& [component, nextChild] = open.back();
        if (nextChild == component->components.size()) {
            appendBoundary(text, "END:", *component);
            open.pop_back();
            continue;
        }
        const auto* const child = component->components[nextChild++].get();
        if (!child) continue;
        appendHead(text, *child);
        open.push_back({child});
    }
}

std::string CGICalendarComponent::description() const
{
    std::string text;
    appendDescription(text);
    return text;
}

} // namespace Tessel
