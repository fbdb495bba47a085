#include "Tessel/Session/Exchange/DavAnswer.h"

#include "Tessel/Platform/XML/GDataXMLDocument.h"
#include "Tessel/Session/Exchange/AnswerFailure.h"
#include "Tessel/Session/Exchange/Href.h"

#include <charconv>

namespace Tessel {

namespace {

constexpr std::string_view dav = "DAV:";

std::string trimmed(std::string_view text)
{
    const auto first = text.find_first_not_of(" \t\r\n");
    if (first == text.npos) return {};
    return std::string(text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1));
}

std::string textIn(const GDataXMLElement& element)
{
    return element.stringValue().value_or(std::string());
}

DavResponse readResponse(
    const GDataXMLElement& element, const std::string& base, const Origin& account, bool isAccount)
{
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
    response.url = resolved(base, response.href);
    const bool isPath = response.href.starts_with('/') && !response.href.starts_with("//");
    response.place = isPath && isAccount ? response.href : placeOf(account, response.url);
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

int DavResponse::refusal() const
{
    if (status >= 300) return status;
    for (const auto& each : properties) {
        if (each.status >= 300) return each.status;
    }
    return 0;
}

Result<DavAnswer> DavAnswer::read(
    const Answer& answer, const Origin& account, std::string_view what)
{
    if (!answer.isSuccess()) return failureOf(answer, what);
    Error error;
    const auto document = GDataXMLDocument::parse(answer.body.view(), error);
    if (!document) return unreadable(answer, what, error.localizedDescription);
    const auto& root = document->rootElement();
    if (root.name() != "multistatus" || root.URI() != dav)
        return unreadable(answer, what, "it is no multistatus");

    const bool isAccount = Origin::of(answer.url) == account;
    DavAnswer read;
    for (const auto& child : root.children()) {
        if (child.URI() != dav) continue;
        if (child.name() == "response") {
            read.responses.push_back(readResponse(child, answer.url, account, isAccount));
        } else if (child.name() == "sync-token") {
            read.syncToken = trimmed(textIn(child));
        }
    }
    return read;
}

std::optional<Failure> refusalIn(const Answer& answer, const Origin& account, std::string_view what)
{
    if (!answer.isSuccess()) return failureOf(answer, what);
    // Radicale answers DELETE with 200 and a multistatus.
    const auto body = answer.body.view();
    if (answer.status != 207 && body.find("multistatus") == body.npos) return std::nullopt;
    const auto read = DavAnswer::read(answer, account, what);
    if (!read) {
        if (answer.status == 207) return read.failure();
        return std::nullopt;
    }
    for (const auto& response : read.value().responses) {
        if (const auto status = response.refusal())
            return failureOf(answer, status, response.words, what);
    }
    return std::nullopt;
}

} // namespace Tessel
