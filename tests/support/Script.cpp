#include "support/Script.h"

#include "Platform/Transport/MNetworkError.h"

#include <charconv>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace Tessel::Test {

namespace {

std::string unescaped(std::string_view text)
{
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\' || i + 1 == text.size()) {
            result += text[i];
            continue;
        }
        switch (text[++i]) {
        case 'r':
            result += '\r';
            break;
        case 'n':
            result += '\n';
            break;
        case 't':
            result += '\t';
            break;
        case 'x':
            result += static_cast<char>(std::stoi(std::string(text.substr(i + 1, 2)), nullptr, 16));
            i += 2;
            break;
        default:
            result += text[i];
        }
    }
    return result;
}

std::string_view trimmed(std::string_view text)
{
    const auto start = text.find_first_not_of(" \t");
    if (start == std::string_view::npos) return {};
    return text.substr(start, text.find_last_not_of(" \t") - start + 1);
}

int number(std::string_view text)
{
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc()) throw std::runtime_error("no number: " + std::string(text));
    return value;
}

/// Reads one exchange line by line.
class ExchangeReader {
public:
    explicit ExchangeReader(std::string_view title) { exchange_.title = title; }

    void take(std::string_view line)
    {
        const bool isRaw = line.size() > 1 && line[1] == '|';
        auto text = line.substr(std::min<std::size_t>(isRaw ? 2 : 1, line.size()));
        if (text.starts_with(' ')) text.remove_prefix(1);
        switch (line[0]) {
        case '>':
            isRaw ? takeRawRequest(text) : takeRequest(text);
            break;
        case '<':
            isRaw ? takeRawAnswer(text) : takeAnswer(text);
            break;
        case '@':
            takeDirective(text);
            break;
        default:
            throw std::runtime_error("a line starts with none of # == > < @");
        }
    }

    ScriptedExchange end()
    {
        if (exchange_.request.method.empty())
            throw std::runtime_error("an exchange without request");
        addLength();
        return std::move(exchange_);
    }

private:
    void takeRequest(std::string_view text)
    {
        auto& request = exchange_.request;
        if (request.method.empty()) {
            const auto blank = text.find(' ');
            if (blank == std::string_view::npos) throw std::runtime_error("a request without path");
            request.method = text.substr(0, blank);
            request.path = trimmed(text.substr(blank));
        } else if (request.body) {
            if (hasRequestLine_) *request.body += '\n';
            hasRequestLine_ = true;
            *request.body += text;
        } else if (text.empty()) {
            request.body.emplace();
        } else if (text[0] == '!') {
            request.absentFields.emplace_back(trimmed(text.substr(1)));
        } else {
            const auto colon = text.find(':');
            if (colon == std::string_view::npos) throw std::runtime_error("a field without colon");
            const auto value = trimmed(text.substr(colon + 1));
            request.fields.emplace_back(text.substr(0, colon),
                value == "*" ? std::nullopt : std::optional<std::string>(value));
        }
    }

    void takeRawRequest(std::string_view text)
    {
        if (!exchange_.request.body) throw std::runtime_error("a raw line outside of the body");
        *exchange_.request.body += unescaped(text);
    }

    void takeAnswer(std::string_view text)
    {
        if (inBody_) {
            if (hasAnswerLine_) append("\n");
            hasAnswerLine_ = true;
            append(text);
        } else {
            append(std::string(text) + "\r\n");
            if (text.empty()) {
                inBody_ = true;
                bodyStart_ = exchange_.answer.bytes().size();
            }
        }
    }

    void takeRawAnswer(std::string_view text) { append(unescaped(text)); }

    void append(std::string_view bytes)
    {
        auto& steps = exchange_.answer.steps;
        if (steps.empty() || steps.back().kind != AnswerStep::Kind::send) {
            steps.push_back({.kind = AnswerStep::Kind::send});
        }
        steps.back().bytes += bytes;
    }

    void takeDirective(std::string_view text)
    {
        const auto blank = std::min(text.find(' '), text.size());
        const auto name = text.substr(0, blank);
        const auto argument = trimmed(text.substr(blank));
        auto& answer = exchange_.answer;
        const auto step = [&](AnswerStep::Kind kind, int time = 0) {
            answer.steps.push_back({.kind = kind, .time = std::chrono::milliseconds(time)});
        };
        if (name == "repeat") {
            exchange_.repeats = true;
        } else if (name == "contains") {
            exchange_.request.bodyParts.emplace_back(argument);
        } else if (name == "verbatim") {
            answer.isVerbatim = true;
        } else if (name == "delay") {
            step(AnswerStep::Kind::delay, number(argument));
        } else if (name == "trickle") {
            step(AnswerStep::Kind::trickle, number(argument));
        } else if (name == "close") {
            step(AnswerStep::Kind::close);
        } else if (name == "reset") {
            step(AnswerStep::Kind::reset);
        } else if (name == "stall") {
            step(AnswerStep::Kind::stall);
        } else if (name == "error") {
            const auto end = std::min(argument.find(' '), argument.size());
            answer.error
                = makeNetworkError(static_cast<MNetworkErrorCode>(number(argument.substr(0, end))),
                    std::string(trimmed(argument.substr(end))));
        } else if (name == "hold") {
            answer.isHeld = true;
        } else if (name == "not-http") {
            answer.isNotHTTP = true;
        } else if (name == "no-response") {
            answer.hasNoResponse = true;
        } else {
            throw std::runtime_error("no such directive: " + std::string(name));
        }
    }

    void addLength()
    {
        auto& answer = exchange_.answer;
        const auto bytes = answer.bytes();
        if (answer.isVerbatim || bytes.empty()) return;
        if (!inBody_) {
            append("\r\n");
            bodyStart_ = answer.bytes().size();
        }
        const auto head = bytes.substr(0, std::min(bodyStart_, bytes.size()));
        const bool mayHaveBody
            = head.find(" 204") == std::string::npos && head.find(" 304") == std::string::npos;
        if (!mayHaveBody || head.find("\r\nContent-Length:") != std::string::npos
            || head.find("\r\nTransfer-Encoding:") != std::string::npos) {
            return;
        }
        for (auto& step : answer.steps) {
            if (step.kind != AnswerStep::Kind::send) continue;
            const auto lineEnd = step.bytes.find("\r\n");
            if (lineEnd == std::string::npos) throw std::runtime_error("no status line");
            step.bytes.insert(lineEnd,
                "\r\nContent-Length: " + std::to_string(answer.bytes().size() - bodyStart_));
            return;
        }
    }

    ScriptedExchange exchange_;
    bool hasRequestLine_ = false;
    bool hasAnswerLine_ = false;
    bool inBody_ = false;
    std::size_t bodyStart_ = 0;
};

} // namespace

std::string ScriptedAnswer::bytes() const
{
    std::string result;
    for (const auto& step : steps)
        result += step.bytes;
    return result;
}

Script Script::parse(std::string_view text)
{
    Script script;
    std::optional<ExchangeReader> reader;
    int lineNumber = 0;
    try {
        while (!text.empty()) {
            ++lineNumber;
            const auto end = std::min(text.find('\n'), text.size());
            const auto line = text.substr(0, end);
            text.remove_prefix(std::min(end + 1, text.size()));
            if (line.starts_with("==")) {
                if (reader) script.exchanges.push_back(reader->end());
                reader.emplace(trimmed(line.substr(2)));
            } else if (line.starts_with('#') || trimmed(line).empty()) {
                continue;
            } else if (!reader && line == "@ unordered") {
                script.isUnordered = true;
            } else if (!reader) {
                throw std::runtime_error("the first exchange has no title");
            } else {
                reader->take(line);
            }
        }
        if (reader) script.exchanges.push_back(reader->end());
    } catch (const std::exception& error) {
        throw std::runtime_error(
            "script, line " + std::to_string(lineNumber) + ": " + error.what());
    }
    return script;
}

Script Script::load(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file) throw std::runtime_error("cannot read " + path);
    std::ostringstream text;
    text << file.rdbuf();
    return parse(text.str());
}

Script Script::only(std::string_view title) const
{
    for (const auto& exchange : exchanges) {
        if (exchange.title == title) return {.isUnordered = isUnordered, .exchanges = {exchange}};
    }
    throw std::runtime_error("no exchange is called " + std::string(title));
}

} // namespace Tessel::Test
