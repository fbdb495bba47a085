#include "Tessel/icalendar/CGICalendarContentLine.h"

#include "Tessel/icalendar/ContentLineParts.h"
#include "Tessel/icalendar/LineFolding.h"

namespace Tessel {

static std::string escaped(std::string_view line)
{
    std::string text;
    text.reserve(line.size());
    for (const char c : line) {
        if (c == '\n') {
            text += "\\n";
            continue;
        }
        if (c == ';' || c == ',') text += '\\';
        text += c;
    }
    return text;
}

bool CGICalendarContentLine::IsFoldingLineString(std::string_view line)
{
    return line.starts_with(' ') || line.starts_with('\t');
}

std::shared_ptr<CGICalendarContentLine> CGICalendarContentLine::contentLineWithString(
    std::string_view line)
{
    return std::make_shared<CGICalendarContentLine>(line);
}

void CGICalendarContentLine::setString(std::string_view line)
{
    const auto parts = splitContentLine(trimNewlines(line));
    if (!parts) return;

    // Collected first: `line` may be this line's own text.
    decltype(parameters) collected;
    forEachParameter(parts->parameters, [&](const ParameterParts& parameter) {
        auto& node = *collected.emplace_back(std::make_shared<CGICalendarParameter>());
        node.setName(parameter.name);
        node.setValue(parameter.value);
    });
    const std::string value(parts->value);
    setName(parts->name);
    setValue(value);
    parameters = std::move(collected);
}

void CGICalendarContentLine::appendDescription(std::string& text) const
{
    std::string line;
    appendLine(line);
    appendFolded(text, escaped(line));
    text.push_back('\n');
}

} // namespace Tessel
