#include "Tessel/icalendar/CGICalendarParser.h"

#include "Tessel/icalendar/ParameterIndex.h"

#include <algorithm>
#include <cstring>

namespace Tessel {

static char* lineEnd(char* begin, char* end)
{
    if (begin == end) return end;
    auto* const found = static_cast<char*>(std::memchr(begin, '\n', std::size_t(end - begin)));
    return found ? found : end;
}

CGICalendarParser::CGICalendarParser(
    Objects& objects, Components& open, std::string text, std::size_t mostNodes)
    : objects_(objects)
    , open_(open)
    , arena_(new ParseArena(std::move(text)))
    , nodesLeft_(mostNodes)
{
}

bool CGICalendarParser::parse()
{
    try {
        readLines();
        return true;
    } catch (const LimitPassed&) {
        return false;
    }
}

void CGICalendarParser::readLines()
{
    char* next = arena_->text.data();
    char* const end = next + arena_->text.size();
    const auto continues = [&] { return next != end && (*next == ' ' || *next == '\t'); };
    const auto step = [&](char* newline) { return newline == end ? end : newline + 1; };

    bool more = true;
    while (more && continues()) {
        auto* const newline = lineEnd(next, end);
        more = newline != end;
        next = step(newline);
    }
    while (more) {
        char* const begin = next;
        char* newline = lineEnd(next, end);
        char* unfoldedEnd = newline;
        next = step(newline);
        while (continues()) {
            char* const piece = next + 1;
            newline = lineEnd(piece, end);
            std::memmove(unfoldedEnd, piece, std::size_t(newline - piece));
            unfoldedEnd += newline - piece;
            next = step(newline);
        }
        more = newline != end;
        readLine({begin, std::size_t(unfoldedEnd - begin)});
    }
}

void CGICalendarParser::readLine(std::string_view line)
{
    const auto parts = splitContentLine(trimNewlines(line));

    if (parts && parts->name == "BEGIN") {
        beginComponent(parts->value);
    } else if (parts && parts->name == "END") {
        if (!open_.empty()) open_.pop_back();
    } else if (!open_.empty()) {
        auto& properties = open_.back()->properties;
        if (parts)
            properties.push_back(makeProperty(*parts));
        else
            properties.appendBlank();
    }
}

void CGICalendarParser::beginComponent(std::string_view type)
{
    if (open_.empty()) {
        const auto object = make<CGICalendarObject>();
        object->type_.refer(type);
        objects_.push_back(object);
        open_.push_back(object);
    } else {
        const auto component = make<CGICalendarComponent>();
        component->type_.refer(type);
        open_.back()->components.push_back(component);
        open_.push_back(component);
    }
}

std::shared_ptr<CGICalendarProperty> CGICalendarParser::makeProperty(const ContentLineParts& parts)
{
    auto property = make<CGICalendarProperty>();
    property->name_.refer(parts.name);
    property->value_.refer(parts.value);
    if (parts.parameters) readParameters(*property, *parts.parameters);
    return property;
}

void CGICalendarParser::readParameters(CGICalendarProperty& property, std::string_view parameters)
{
    ParameterIndex index(property.parameters);
    forEachParameter(parameters, [&](const ParameterParts& parts) {
        if (!parts.name) return property.parameters.appendBlank();
        auto* parameter = index.find(*parts.name);
        if (!parameter) {
            auto node = make<CGICalendarParameter>();
            parameter = node.get();
            parameter->name_.refer(*parts.name);
            index.append(std::move(node));
        }
        parameter->value_.refer(*parts.value);
    });
}

template <typename Node> std::shared_ptr<Node> CGICalendarParser::make()
{
    if (nodesLeft_-- == 0) throw LimitPassed();
    return std::allocate_shared<Node>(ParseAllocator<Node>(*arena_));
}

} // namespace Tessel
