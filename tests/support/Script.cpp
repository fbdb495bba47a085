#include "tests/support/Script.h"

#include "Tessel/Platform/Transport/MNetworkError.h"

#include <fstream>
#include <sstream>
#include <stdexcept>

namespace Tessel::Test {

namespace {

std::string unescaped(std::string_view text)
{
    constexpr std::string_view letters = "rnt";
    constexpr std::string_view meanings = "\r\n\t";
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\' || i + 1 == text.size()) {
            result += text[i];
        } else if (text[++i] == 'x') {
            result += static_cast<char>(std::stoi(std::string(text.substr(i + 1, 2)), nullptr, 16));
            i += 2;
        } else {
            const auto letter = letters.find(text[i]);
            result += letter == letters.npos ? text[i] : meanings[letter];
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

/// Cuts the text up to the end mark, and the mark, off its start.
std::string_view cut(std::string_view& text, std::string_view mark)
{
    const auto end = std::min(text.find(mark), text.size());
    const auto part = text.substr(0, end);
    text.remove_prefix(std::min(end + mark.size(), text.size()));
    return part;
}

/// A request or an answer as it is written.
struct Message {
    std::string head; ///< each line with CR LF
    std::optional<std::string> body;

    void take(std::string_view text)
    {
        const bool isRaw = text.starts_with('|');
        if (isRaw) text.remove_prefix(1);
        if (text.starts_with(' ')) text.remove_prefix(1);
        if (isRaw) {
            (body ? *body : head) += unescaped(text);
        } else if (body) {
            if (std::exchange(hasBodyLine_, true)) *body += '\n';
            *body += text;
        } else if (text.empty()) {
            body.emplace();
        } else {
            head.append(text).append("\r\n");
        }
    }

private:
    bool hasBodyLine_ = false;
};

/// Reads one exchange line by line.
class ExchangeReader {
public:
    explicit ExchangeReader(std::string_view title) { exchange_.title = title; }

    void take(std::string_view line)
    {
        const auto text = line.substr(1);
        if (line[0] == '>') return request_.take(text);
        if (line[0] == '<') return answer_.take(text);
        if (line[0] == '@') return takeDirective(trimmed(text));
        throw std::runtime_error("a line starts with none of # == > < @");
    }

    ScriptedExchange end()
    {
        finishRequest();
        finishAnswer();
        return std::move(exchange_);
    }

private:
    void takeDirective(std::string_view argument)
    {
        using End = ScriptedAnswer::End;
        const auto name = cut(argument, " ");
        auto& answer = exchange_.answer;
        if (name == "repeat") {
            exchange_.repeats = true;
        } else if (name == "contains") {
            exchange_.request.bodyParts.emplace_back(argument);
        } else if (name == "verbatim") {
            isVerbatim_ = true;
        } else if (name == "trickle") {
            answer.pause = std::chrono::milliseconds(std::stoi(std::string(argument)));
        } else if (name == "close") {
            answer.end = End::close;
        } else if (name == "reset") {
            answer.end = End::reset;
        } else if (name == "stall") {
            answer.end = End::stall;
        } else if (name == "error") {
            const auto code = std::stoi(std::string(cut(argument, " ")));
            answer.error
                = makeNetworkError(static_cast<MNetworkErrorCode>(code), std::string(argument));
        } else if (name == "not-http") {
            answer.isNotHTTP = true;
        } else if (name == "no-response") {
            answer.hasNoResponse = true;
        } else {
            throw std::runtime_error("no such directive: " + std::string(name));
        }
    }

    void finishRequest()
    {
        auto& request = exchange_.request;
        std::string_view head = request_.head;
        auto path = cut(head, "\r\n");
        request.method = cut(path, " ");
        request.path = trimmed(path);
        if (request.path.empty()) throw std::runtime_error("an exchange without request");
        while (!head.empty()) {
            auto value = cut(head, "\r\n");
            if (value[0] == '!') {
                request.absentFields.emplace_back(value.substr(1));
            } else {
                const auto name = cut(value, ":");
                if (value.empty()) throw std::runtime_error("a field without value");
                request.fields.emplace_back(name, trimmed(value));
            }
        }
        request.body = std::move(request_.body);
    }

    void finishAnswer()
    {
        auto& head = answer_.head;
        if (!isVerbatim_ && !head.empty()) {
            const auto status = head.substr(std::string_view("HTTP/1.1 ").size(), 3);
            const bool isMeasured = status == "204" || status == "304"
                || head.find("\r\nContent-Length:") != std::string::npos
                || head.find("\r\nTransfer-Encoding:") != std::string::npos;
            if (!answer_.body) answer_.body.emplace();
            if (!isMeasured)
                head += "Content-Length: " + std::to_string(answer_.body->size()) + "\r\n";
        }
        exchange_.answer.bytes = answer_.body ? head + "\r\n" + *answer_.body : head;
    }

    ScriptedExchange exchange_;
    Message request_;
    Message answer_;
    bool isVerbatim_ = false;
};

} // namespace

Script Script::parse(std::string_view text)
{
    Script script;
    std::optional<ExchangeReader> reader;
    int lineNumber = 0;
    try {
        while (!text.empty()) {
            ++lineNumber;
            const auto line = cut(text, "\n");
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
