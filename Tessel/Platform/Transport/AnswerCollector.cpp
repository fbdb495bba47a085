#include "Tessel/Platform/Transport/AnswerCollector.h"

#include "Tessel/Platform/Foundation/Base/Limits.h"

#include <algorithm>
#include <cstddef>

namespace Tessel {

namespace {

// A server that announces much and sends little must not cost memory.
constexpr std::int64_t maximumReservation = std::int64_t {64} << 20;

std::string_view trimmed(std::string_view text)
{
    const auto isBlank = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

} // namespace

bool AnswerCollector::refuse()
{
    tooLarge_ = true;
    return false;
}

bool AnswerCollector::takeHeaderLine(std::string_view line)
{
    headerSize_ += line.size();
    if (++headerLines_ > Limits::headerLines || headerSize_ > Limits::headerBytes) return refuse();

    if (!inHead_) {
        if (!line.starts_with("HTTP/")) return true;
        inHead_ = true;
        headers = {};
        lastName_.clear();
        return true;
    }
    const auto text = trimmed(line);
    if (text.empty()) {
        inHead_ = false;
        return true;
    }
    // A line that starts with a blank continues the one before (RFC 9112, 5.2).
    if (line[0] == ' ' || line[0] == '\t') {
        if (const auto value = headers.value(lastName_)) {
            headers.set(lastName_, std::string(*value).append(" ").append(text));
        }
        return true;
    }
    const auto colon = text.find(':');
    if (colon == std::string_view::npos) return true;
    lastName_ = trimmed(text.substr(0, colon));
    headers.add(lastName_, trimmed(text.substr(colon + 1)));
    return true;
}

bool AnswerCollector::takeBody(
    std::string_view bytes, std::int64_t expectedSize, std::int64_t arrivedSize)
{
    const std::uint64_t size = body.size() + bytes.size();
    const auto arrived = static_cast<std::uint64_t>(arrivedSize) + Limits::expansionAllowance;
    if (size > maximumSize_ || size / Limits::expansion > arrived) return refuse();
    if (body.empty() && expectedSize > 0) {
        body.reserve(static_cast<std::size_t>(std::min(expectedSize, maximumReservation)));
    }
    body.append(bytes);
    return true;
}

} // namespace Tessel
