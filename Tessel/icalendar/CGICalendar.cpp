#include "Tessel/icalendar/CGICalendar.h"

#include "Tessel/Platform/Foundation/Files/WholeFile.h"
#include "Tessel/Platform/Foundation/Text/UTF8.h"
#include "Tessel/Platform/Foundation/Text/UUID.h"
#include "Tessel/icalendar/CGICalendarParser.h"

#include <limits>
#include <new>

namespace Tessel {

std::string CGICalendar::UUID()
{
    return makeUUID();
}

std::shared_ptr<CGICalendar> CGICalendar::initWithString(std::optional<std::string> text)
{
    auto calendar = std::make_shared<CGICalendar>();
    calendar->parseWithString(std::move(text));
    return calendar;
}

std::shared_ptr<CGICalendar> CGICalendar::initWithPath(const std::filesystem::path& path)
{
    auto calendar = std::make_shared<CGICalendar>();
    calendar->parseWithPath(path);
    return calendar;
}

void CGICalendar::addObject(std::shared_ptr<CGICalendarObject> object)
{
    objects.push_back(std::move(object));
}

std::shared_ptr<CGICalendarObject> CGICalendar::objectAtIndex(std::size_t index) const
{
    return objects.at(index);
}

Error CGICalendar::createErrorAt(int, std::string_view lineString) const
{
    const std::string line(lineString);
    return {.domain = "skavegeirmi",
        .code = -1,
        .localizedDescription = {},
        .userInfo = {{"LineNumber", line}, {"ContentLine", line}}};
}

bool CGICalendar::parseWithString(std::optional<std::string> text, Error*)
{
    objects.clear();
    clearParserObjects();
    if (!text) return false;

    return parseWithLimit(std::move(*text), std::numeric_limits<std::size_t>::max());
}

bool CGICalendar::parseWithLimit(std::string text, std::size_t mostNodes)
{
    objects.clear();
    clearParserObjects();
    const bool isWhole
        = CGICalendarParser(objects, parserStack, std::move(text), mostNodes).parse();
    clearParserObjects();
    if (!isWhole) objects.clear();
    return isWhole;
}

bool CGICalendar::parseWithPath(const std::filesystem::path& path, Error* error)
{
    auto bytes = readWholeFile(path);
    if (!bytes) return false;
    if (!isValidUTF8(*bytes)) bytes.reset();
    try {
        return parseWithString(std::move(bytes), error);
    } catch (const std::bad_alloc&) {
        clearParserObjects();
        objects.clear();
        return false;
    }
}

std::shared_ptr<CGICalendarComponent> CGICalendar::peekParserObject() const
{
    return parserStack.empty() ? nullptr : parserStack.back();
}

void CGICalendar::pushParserObject(std::shared_ptr<CGICalendarComponent> component)
{
    parserStack.push_back(std::move(component));
}

std::shared_ptr<CGICalendarComponent> CGICalendar::popParserObject()
{
    auto component = peekParserObject();
    if (component) parserStack.pop_back();
    return component;
}

void CGICalendar::clearParserObjects()
{
    parserStack.clear();
}

std::string CGICalendar::description() const
{
    std::string text;
    for (const auto& object : objects) {
        if (object) object->appendDescription(text);
    }
    return text;
}

bool CGICalendar::writeToFile(const std::filesystem::path& path) const
{
    const auto text = description();
    return isValidUTF8(text) && writeWholeFile(path, text);
}

} // namespace Tessel
