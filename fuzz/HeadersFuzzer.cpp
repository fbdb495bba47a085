#include "Tessel/Platform/Foundation/Base/Limits.h"
#include "Tessel/Platform/Transport/AnswerCollector.h"
#include "Tessel/Platform/Transport/FieldList.h"
#include "Tessel/Platform/Transport/RequestFields.h"
#include "fuzz/FuzzTarget.h"

#include <algorithm>

namespace Tessel::Fuzz {

namespace {

constexpr std::uint64_t maximumSize = 4096;

char otherCase(char c)
{
    const bool isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    return isLetter ? char(c ^ 0x20) : c;
}

std::string lower(std::string_view text)
{
    std::string result;
    for (const char c : text)
        result += c >= 'A' && c <= 'Z' ? otherCase(c) : c;
    return result;
}

/// What the lines of a head give; false when they are refused. With `changesCase` every other line
/// has the letters of its name in the other case.
bool collect(AnswerCollector& answer, std::string_view lines, bool changesCase)
{
    bool changes = false;
    while (!lines.empty()) {
        const auto end = std::min(lines.find('\n'), lines.size() - 1) + 1;
        std::string line(lines.substr(0, end));
        lines.remove_prefix(end);
        const bool hasName = line.find_first_of(" \t") != 0 && !line.starts_with("HTTP/");
        if (changesCase && changes && hasName) {
            const auto name = line.begin() + std::ptrdiff_t(std::min(line.find(':'), line.size()));
            if (name != line.end()) std::transform(line.begin(), name, line.begin(), otherCase);
        }
        changes = !changes;
        if (!answer.takeHeaderLine(line)) return false;
    }
    return true;
}

void requireOneFieldPerName(const HTTPHeaders& headers)
{
    std::vector<std::string> names;
    for (const auto& [name, value] : headers.fields()) {
        require(headers.value(name) == value, "a field is not found by its name");
        names.push_back(lower(name));
    }
    std::sort(names.begin(), names.end());
    require(std::adjacent_find(names.begin(), names.end()) == names.end(), "a name comes twice");
}

/// No field that a server had a say in adds a line to a request.
void requireWholeLines(const HTTPHeaders& headers)
{
    URLRequest request("https://cal.example.com/");
    for (const auto& [name, value] : headers.fields())
        request.headers.set(name, value);
    if (refusal(request)) return;
    FieldList list;
    std::size_t count = 0;
    for (const auto* line = list.assign(request); line; line = line->next, ++count) {
        require(std::string_view(line->data).find_first_of("\r\n") == std::string_view::npos,
            "a field breaks its line");
    }
    require(count <= request.headers.fields().size() + 2, "a field is sent twice");
}

/// Lines of a head are one field for each name whatever its case, and never more than allowed.
const Target headers("headers", [](std::string_view input) {
    AnswerCollector answer(maximumSize), again(maximumSize);
    const bool isTaken = collect(answer, input, false);
    require(isTaken == collect(again, input, true), "the case of a name decides what is taken");
    require(isTaken != answer.isTooLarge(), "refused without saying so");
    require(answer.hasWholeHead() == again.hasWholeHead(), "the case of a name ends the head");

    const auto &fields = answer.headers.fields(), &fieldsAgain = again.headers.fields();
    require(fields.size() == fieldsAgain.size(), "the case of a name makes another field");
    require(fields.size() <= std::size_t(Limits::headerLines), "too many fields");
    for (std::size_t i = 0; i < fields.size(); ++i) {
        require(lower(fields[i].first) == lower(fieldsAgain[i].first)
                && fields[i].second == fieldsAgain[i].second,
            "the case of a name changes a field");
    }
    requireOneFieldPerName(answer.headers);
    requireWholeLines(answer.headers);
});

} // namespace

} // namespace Tessel::Fuzz
