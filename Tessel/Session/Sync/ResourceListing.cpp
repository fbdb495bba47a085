#include "Tessel/Session/Sync/ResourceListing.h"

#include "Tessel/Platform/XML/GDataXMLElement.h"
#include "Tessel/Session/Exchange/AnswerFailure.h"
#include "Tessel/Session/Exchange/DavAnswer.h"
#include "Tessel/Session/Exchange/Href.h"

namespace Tessel {

namespace {

using namespace XMLNamespace;
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

/// Notes what an answer says of each resource.
class ListingReader {
public:
    explicit ListingReader(const std::string& calendar)
        : self_(normalPath(calendar))
    {
    }

    void add(const DavResponse& response);

    ResourceListing listing;

private:
    bool isSelf(const DavResponse& response) const;

    const std::string self_;
};

bool ListingReader::isSelf(const DavResponse& response) const
{
    auto path = normalPath(response.url);
    if (path == self_) return true;
    path += '/';
    return path == self_;
}

void ListingReader::add(const DavResponse& response)
{
    if (response.href.empty()) return;
    if (isSelf(response)) {
        if (response.status == 507) {
            listing.isTruncated = true;
        } else if (response.refusal() == 0 || !response.properties.empty()) {
            listing.hasCalendar = true;
        }
        return;
    }
    if (response.isCollection()) return;
    if (response.status == 404 || response.status == 410) {
        listing.removed.push_back(response.place);
    } else {
        // Announced without a tag: fetched, since nothing tells that it is held.
        listing.present.push_back({response.place, response.token("getetag", dav)});
    }
}

Result<ResourceListing> read(
    const Answer& answer, const Origin& account, const std::string& calendar)
{
    ListingReader reader(calendar);
    const auto token = DavAnswer::visit(
        answer, account, what, [&](const DavResponse& response) { reader.add(response); });
    if (!token) return token.failure();
    reader.listing.token = token.value().value_or(std::string());
    return std::move(reader.listing);
}

Result<ResourceListing> readAll(
    const Answer& answer, const Origin& account, const std::string& calendar)
{
    auto listing = read(answer, account, calendar);
    if (!listing) return listing;
    // A calendar that was emptied still lists itself; what does not is no list of all.
    if (listing.value().hasCalendar && !listing.value().isTruncated) return listing;
    auto failure = failureOf(answer, "");
    failure.kind = FailureKind::malformed;
    failure.reason = std::string(what).append(": the server's list is not whole.");
    return failure;
}

Result<ResourceListing> readChanges(const Answer& answer, const Origin& account,
    const std::string& calendar, const std::string& since)
{
    ResourceListing expired;
    expired.isExpired = true;
    if (speaksOfTheToken(answer)) return expired;
    auto listing = read(answer, account, calendar);
    if (!listing) return listing;
    const auto& [present, removed, token, hasCalendar, isTruncated, isExpired] = listing.value();
    // Without a new token, what was told could be told only once.
    const bool leadsOn = !token.empty() && !(isTruncated && token == since);
    return leadsOn ? listing : expired;
}

} // namespace

void listResources(const std::shared_ptr<Channel>& channel, const std::string& calendar,
    const std::shared_ptr<CallState>& call, ListingRead done)
{
    channel->sendAndRead<ResourceListing>(
        {.method = "PROPFIND",
            .url = calendar,
            .fields = {{"Depth", "1"}, {"Content-Type", davType}},
            .body = allTags,
            .what = std::string(what)},
        call,
        [channel, calendar](
            const Answer& answer) { return readAll(answer, channel->origin(), calendar); },
        std::move(done));
}

void listChanges(const std::shared_ptr<Channel>& channel, const std::string& calendar,
    const std::string& token, const std::shared_ptr<CallState>& call, ListingRead done)
{
    channel->sendAndRead<ResourceListing>(
        {.method = "REPORT",
            .url = calendar,
            .fields = {{"Depth", "0"}, {"Content-Type", davType}},
            .body = changesSince(token),
            .what = std::string(what)},
        call,
        [channel, calendar, token](const Answer& answer) {
            return readChanges(answer, channel->origin(), calendar, token);
        },
        std::move(done));
}

} // namespace Tessel
