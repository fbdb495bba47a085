#include "Tessel/Session/Sync/ResourceListing.h"

#include "Tessel/Platform/XML/GDataXMLElement.h"
#include "Tessel/Session/Exchange/AnswerFailure.h"
#include "Tessel/Session/Exchange/DavAnswer.h"
#include "Tessel/Session/Exchange/Href.h"

namespace Tessel {

namespace {

constexpr std::string_view dav = "DAV:";
constexpr std::string_view what = "The calendar's events could not be listed";

constexpr const char* allTags = R"(<?xml version="1.0" encoding="utf-8"?>
<d:propfind xmlns:d="DAV:"><d:prop><d:getetag/><d:resourcetype/></d:prop></d:propfind>)";

std::string changesSince(const std::string& token)
{
    auto root = GDataXMLElement::elementWithName("sync-collection", dav);
    root.addNamespace("d", dav);
    root.addElement("sync-token", dav, token);
    root.addElement("sync-level", dav, "1");
    root.addElement("prop", dav).addElement("getetag", dav);
    return R"(<?xml version="1.0" encoding="utf-8"?>)" + root.XMLString();
}

bool isCollection(const DavResponse& response)
{
    const auto type = response.property("resourcetype", dav);
    return type && type->first("collection", dav);
}

/// A refusal that says nothing about this user or this moment, but about the report or its token:
/// DAV:valid-sync-token comes with 403 (RFC 6578, 3.2), from sabre/dav too; others use 400, 409,
/// 410 or 412, or know no such report.
bool speaksOfTheToken(const Answer& answer)
{
    switch (answer.status) {
    case 400:
    case 403:
    case 405:
    case 409:
    case 410:
    case 412:
    case 415:
    case 422:
    case 501:
        return true;
    default:
        return false;
    }
}

ResourceListing read(const DavAnswer& answer, const std::string& calendar)
{
    ResourceListing listing;
    const auto self = normalPath(calendar);
    const auto isSelf = [&](const DavResponse& response) {
        auto path = normalPath(response.url);
        if (path == self) return true;
        path += '/';
        return path == self;
    };
    for (const auto& response : answer.responses) {
        if (response.href.empty()) continue;
        if (isSelf(response)) {
            if (response.status == 507) {
                listing.isTruncated = true;
            } else if (response.refusal() == 0 || !response.properties.empty()) {
                listing.hasCalendar = true;
            }
            continue;
        }
        if (isCollection(response)) continue;
        if (response.status == 404 || response.status == 410) {
            listing.removed.push_back(response.place);
        } else if (auto tag = response.token("getetag", dav); !tag.empty()) {
            listing.present.push_back({response.place, std::move(tag)});
        } else {
            // Announced without a tag: fetched, since nothing tells that it is held.
            listing.present.push_back({response.place, {}});
        }
    }
    listing.token = answer.syncToken.value_or(std::string());
    return listing;
}

} // namespace

void listResources(const std::shared_ptr<Channel>& channel, const std::string& calendar,
    const std::shared_ptr<CallState>& call, ListingRead done)
{
    channel->send(
        {.method = "PROPFIND",
            .url = calendar,
            .fields = {{"Depth", "1"}, {"Content-Type", "application/xml; charset=utf-8"}},
            .body = allTags,
            .what = std::string(what)},
        call, [=](Result<Answer> result) {
            if (!result) return done(result.failure());
            const auto answer = DavAnswer::read(result.value(), channel->origin(), what);
            if (!answer) return done(answer.failure());
            auto listing = read(answer.value(), calendar);
            // A calendar that was emptied still lists itself; what does not is no list of all.
            if (!listing.hasCalendar || listing.isTruncated) {
                auto failure = failureOf(result.value(), "");
                failure.kind = FailureKind::malformed;
                failure.reason = std::string(what).append(": the server's list is not whole.");
                return done(std::move(failure));
            }
            done(std::move(listing));
        });
}

void listChanges(const std::shared_ptr<Channel>& channel, const std::string& calendar,
    const std::string& token, const std::shared_ptr<CallState>& call, ListingRead done)
{
    channel->send(
        {.method = "REPORT",
            .url = calendar,
            .fields = {{"Depth", "0"}, {"Content-Type", "application/xml; charset=utf-8"}},
            .body = changesSince(token),
            .what = std::string(what)},
        call, [=](Result<Answer> result) {
            if (!result) return done(result.failure());
            if (speaksOfTheToken(result.value())) {
                ResourceListing expired;
                expired.isExpired = true;
                return done(std::move(expired));
            }
            const auto answer = DavAnswer::read(result.value(), channel->origin(), what);
            if (!answer) return done(answer.failure());
            auto listing = read(answer.value(), calendar);
            // Without a new token, what was told could be told only once.
            if (listing.token.empty() || (listing.isTruncated && listing.token == token)) {
                listing = {};
                listing.isExpired = true;
            }
            done(std::move(listing));
        });
}

} // namespace Tessel
