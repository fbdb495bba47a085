#include "Tessel/Session/Exchange/DavAnswer.h"

#include "Tessel/Platform/XML/GDataXMLDocument.h"
#include "Tessel/Session/Exchange/AnswerFailure.h"
#include "Tessel/Session/Exchange/Href.h"

#include <charconv>

namespace Tessel {

namespace {

using namespace XMLNamespace;

std::string trimmed(std::string text)
{
    constexpr std::string_view blanks = " \t\r\n";
    text.erase(text.find_last_not_of(blanks) + 1);
    text.erase(0, text.find_first_not_of(blanks));
    return text;
}

std::string textIn(const GDataXMLElement& element)
{
    return element.stringValue().value_or(std::string());
}

bool isMultistatus(const GDataXMLElement& root)
{
    return root.name() == "multistatus" && root.URI() == dav;
}

std::optional<std::string> syncTokenIn(const GDataXMLElement& element)
{
    if (element.name() != "sync-token" || element.URI() != dav) return std::nullopt;
    return trimmed(textIn(element));
}

/// Reads the responses of one answer.
class ResponseReader {
public:
    ResponseReader(const Answer& answer, const Origin& account)
        : base_(answer.url)
        , account_(account)
        , isAccount_(Origin::of(answer.url) == account)
    {
    }

    /// None for any other element.
    std::optional<DavResponse> response(const GDataXMLElement& element) const;

private:
    const std::string& base_;
    const Origin& account_;
    const bool isAccount_; ///< whether it comes from there
};

std::optional<DavResponse> ResponseReader::response(const GDataXMLElement& element) const
{
    if (element.name() != "response" || element.URI() != dav) return std::nullopt;
    DavResponse response;
    for (const auto& child : element.children()) {
        if (child.URI() != dav) continue;
        const auto name = child.name();
        if (name == "href") {
            if (response.href.empty()) response.href = trimmed(textIn(child));
        } else if (name == "status") {
            response.status = statusOf(textIn(child));
        } else if (name == "propstat") {
            const auto prop = child.first("prop", dav);
            const auto status = child.first("status", dav);
            // A propstat without a status is one of 200, as several servers mean it.
            if (prop)
                response.properties.push_back({status ? statusOf(textIn(*status)) : 200, *prop});
            if (const auto error = child.first("error", dav)) {
                for (const auto& condition : error->children())
                    response.words = condition.name();
            }
        } else if (name == "error") {
            for (const auto& condition : child.children())
                response.words = condition.name();
        } else if (name == "responsedescription" && response.words.empty()) {
            response.words = trimmed(textIn(child));
        }
    }
    response.url = resolved(base_, response.href);
    const bool isPath = response.href.starts_with('/') && !response.href.starts_with("//");
    response.place = isPath && isAccount_ ? response.href : placeOf(account_, response.url);
    return response;
}

Failure unreadable(const Answer& answer, std::string_view what, std::string_view why)
{
    auto failure = failureOf(answer, answer.status, why, what);
    failure.kind = FailureKind::malformed;
    failure.reason = std::string(what) + ": the answer cannot be read: " + std::string(why) + ".";
    return failure;
}

} // namespace

int statusOf(std::string_view line)
{
    constexpr int none = 500;
    const auto start = line.find("HTTP/");
    const auto blank = start == line.npos ? start : line.find(' ', start);
    const auto number = blank == line.npos ? blank : line.find_first_not_of(' ', blank);
    if (number == line.npos) return none;
    line.remove_prefix(number);
    int status = 0;
    const auto read = std::from_chars(line.data(), line.data() + line.size(), status);
    return read.ec == std::errc() && status >= 200 && status < 600 ? status : none;
}

std::optional<GDataXMLElement> DavResponse::property(
    std::string_view name, std::string_view uri) const
{
    for (const auto& each : properties) {
        if (each.status < 200 || each.status > 299) continue;
        if (auto found = each.prop.first(name, uri)) return found;
    }
    return std::nullopt;
}

std::optional<std::string> DavResponse::text(std::string_view name, std::string_view uri) const
{
    const auto found = property(name, uri);
    if (!found) return std::nullopt;
    return textIn(*found);
}

std::string DavResponse::token(std::string_view name, std::string_view uri) const
{
    return trimmed(text(name, uri).value_or(std::string()));
}

std::optional<std::string> DavResponse::hrefIn(std::string_view name, std::string_view uri) const
{
    const auto found = property(name, uri);
    if (!found) return std::nullopt;
    const auto href = found->first("href", dav);
    if (!href) return std::nullopt;
    auto text = trimmed(textIn(*href));
    if (text.empty()) return std::nullopt;
    return text;
}

bool DavResponse::isCollection() const
{
    const auto type = property("resourcetype", dav);
    return type && type->first("collection", dav);
}

bool DavResponse::isCalendar() const
{
    const auto type = property("resourcetype", dav);
    return type && type->first("calendar", caldav);
}

int DavResponse::refusal() const
{
    if (status >= 300) return status;
    for (const auto& each : properties) {
        if (each.status >= 300) return each.status;
    }
    return 0;
}

std::string DavResponse::refusedNames() const
{
    std::string names;
    for (const auto& each : properties) {
        if (each.status < 300) continue;
        for (const auto& property : each.prop.children())
            names.append(names.empty() ? "" : ", ").append(property.name());
    }
    return names;
}

Result<DavAnswer> DavAnswer::read(
    const Answer& answer, const Origin& account, std::string_view what)
{
    if (!answer.isSuccess()) return failureOf(answer, what);
    Error error;
    const auto document = GDataXMLDocument::parse(answer.body.view(), error);
    if (!document) return unreadable(answer, what, error.localizedDescription);
    if (!isMultistatus(document->rootElement()))
        return unreadable(answer, what, "it is no multistatus");

    const ResponseReader reader(answer, account);
    DavAnswer read;
    for (const auto& child : document->rootElement().children()) {
        if (auto response = reader.response(child)) {
            read.responses.push_back(std::move(*response));
        } else if (auto token = syncTokenIn(child)) {
            read.syncToken = std::move(token);
        }
    }
    return read;
}

Result<std::optional<std::string>> DavAnswer::visit(
    const Answer& answer, const Origin& account, std::string_view what, const Visitor& visitor)
{
    if (!answer.isSuccess()) return failureOf(answer, what);
    const ResponseReader reader(answer, account);
    std::optional<std::string> syncToken;
    Error error;
    const auto document
        = GDataXMLDocument::parse(answer.body.view(), error, [&](const GDataXMLElement& child) {
              if (const auto response = reader.response(child)) {
                  visitor(*response);
              } else if (auto token = syncTokenIn(child)) {
                  syncToken = std::move(token);
              }
          });
    if (!document) return unreadable(answer, what, error.localizedDescription);
    if (!isMultistatus(document->rootElement()))
        return unreadable(answer, what, "it is no multistatus");
    return syncToken;
}

std::optional<Failure> refusalIn(const Answer& answer, const Origin& account, std::string_view what)
{
    const bool isForLater = answer.status == 202 && changesSomething(answer.method);
    if (!answer.isSuccess() || isForLater) return failureOf(answer, what);
    // Radicale answers DELETE with 200 and a multistatus.
    const auto body = answer.body.view();
    if (answer.status != 207 && body.find("multistatus") == body.npos) return std::nullopt;
    const auto read = DavAnswer::read(answer, account, what);
    if (!read) {
        if (answer.status != 207) return std::nullopt;
        auto failure = read.failure();
        failure.isUncertain = changesSomething(answer.method);
        return failure;
    }
    for (const auto& response : read.value().responses) {
        const auto status = response.refusal();
        if (status == 0) continue;
        auto words = response.words;
        if (const auto names = response.refusedNames(); !names.empty())
            words.append(words.empty() ? "" : ": ").append(names);
        return failureOf(answer, status, words, what);
    }
    return std::nullopt;
}

std::optional<Failure> refusalIn(
    const Result<Answer>& result, const Origin& account, std::string_view what)
{
    return result ? refusalIn(result.value(), account, what) : result.failure();
}

} // namespace Tessel
