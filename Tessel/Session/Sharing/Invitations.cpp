#include "Tessel/Session/Sharing/Invitations.h"

#include "Tessel/CaldavLibrary/Extensions/DateExtension.h"
#include "Tessel/Platform/Foundation/Base/Limits.h"
#include "Tessel/Platform/XML/GDataXMLDocument.h"
#include "Tessel/Session/Exchange/AnswerFailure.h"
#include "Tessel/Session/Exchange/DavAnswer.h"
#include "Tessel/Session/Exchange/Href.h"
#include "Tessel/Session/Sharing/CalendarSharing.h"
#include "Tessel/Session/Sharing/ShareList.h"

#include <algorithm>
#include <unordered_set>

namespace Tessel {

namespace {

using namespace XMLNamespace;
constexpr const char* xmlType = "text/xml; charset=utf-8";

constexpr const char* membersBody = R"(<?xml version="1.0" encoding="utf-8"?>
<d:propfind xmlns:d="DAV:"><d:prop><d:resourcetype/></d:prop></d:propfind>)";
constexpr const char* sharedBody = R"(<?xml version="1.0" encoding="utf-8"?>
<d:propfind xmlns:d="DAV:" xmlns:cs="http://calendarserver.org/ns/">
<d:prop><d:resourcetype/><cs:shared-url/></d:prop></d:propfind>)";

std::string textIn(const std::optional<GDataXMLElement>& parent, std::string_view name,
    std::string_view uri = calendarServer)
{
    const auto element = parent ? parent->first(name, uri) : std::nullopt;
    return element ? element->stringValue().value_or(std::string()) : std::string();
}

Invitation readNotification(const std::string& place, const Answer& answer, const Origin& account)
{
    Invitation read {.place = place};
    Error error;
    const auto document = GDataXMLDocument::parse(answer.body.view(), error);
    if (!document) return read;
    const auto& root = document->rootElement();
    read.when = iCalDateTimeIfReadable(textIn(root, "dtstamp"));
    const auto offer = root.first("invite-notification", calendarServer);
    const auto reply = root.first("invite-reply", calendarServer);
    const auto& content = offer ? offer : reply;
    if (!content) return read;
    const auto host = textIn(content->first("hosturl", calendarServer), "href", dav);
    if (host.empty()) return read;
    read.calendar = placeOf(account, resolved(answer.url, host));
    read.calendarName = textIn(content, "summary");
    read.sharee = textIn(content, "href", dav);
    if (reply) {
        read.kind = Invitation::Kind::reply;
        if (reply->first("invite-accepted", calendarServer)) read.state = InviteState::accepted;
        if (reply->first("invite-declined", calendarServer)) read.state = InviteState::declined;
        return read;
    }
    read.uid = textIn(offer, "uid");
    const auto organizer = offer->first("organizer", calendarServer);
    read.owner = textIn(organizer, "href", dav);
    read.ownerName = textIn(organizer, "common-name");
    const auto access = accessIn(*offer);
    const bool isDeleted = offer->first("invite-deleted", calendarServer).has_value();
    read.access = access.value_or(ShareAccess::read);
    read.kind = !access || isDeleted ? Invitation::Kind::withdrawal : Invitation::Kind::offer;
    return read;
}

/// The notifications that are fetched one after another.
struct InvitationListing : std::enable_shared_from_this<InvitationListing> {
    std::shared_ptr<Channel> channel;
    std::shared_ptr<PendingCall<std::vector<Invitation>>> call;
    std::vector<std::string> places = {};
    std::size_t next = 0;
    std::vector<Invitation> invitations = {};

    static constexpr const char* what = "The invitations could not be read";

    void start(const std::string& collection)
    {
        channel->send({.method = "PROPFIND",
                          .url = collection,
                          .fields = {{"Depth", "1"}, {"Content-Type", xmlType}},
                          .body = membersBody,
                          .what = what},
            call, [self = shared_from_this(), collection](Result<Answer> result) {
                if (!result) return self->call->fail(result.failure());
                const auto read = DavAnswer::read(result.value(), self->channel->origin(), what);
                if (!read) return self->call->fail(read.failure());
                std::unordered_set<std::string> known;
                for (const auto& response : read.value().responses) {
                    const bool isOne = !response.isCollection() && response.status < 300
                        && !response.href.empty();
                    if (isOne && known.insert(normalPath(response.place)).second)
                        self->places.push_back(response.place);
                }
                self->limit(collection);
                self->fetchNext();
            });
    }

    void limit(const std::string& collection)
    {
        if (places.size() <= Limits::notifications) return;
        invitations.push_back({.place = collection,
            .failure = Failure {.kind = FailureKind::tooLarge,
                .reason = std::string(what) + ": of " + std::to_string(places.size())
                    + " notifications only " + std::to_string(Limits::notifications)
                    + " are fetched."}});
        places.resize(Limits::notifications);
    }

    void fetchNext()
    {
        if (next == places.size()) return end();
        const auto place = places[next++];
        channel->send({.method = "GET", .url = place, .what = what}, call,
            [self = shared_from_this(), place](Result<Answer> result) {
                if (!result) return self->call->fail(result.failure());
                const auto& answer = result.value();
                const auto kind = kindOfStatus(answer.status);
                if (kind == FailureKind::unauthorized)
                    return self->call->fail(failureOf(answer, what));
                if (answer.isSuccess()) {
                    self->invitations.push_back(
                        readNotification(place, answer, self->channel->origin()));
                } else if (kind != FailureKind::missing) {
                    self->invitations.push_back(
                        {.place = place, .failure = failureOf(answer, what)});
                }
                self->fetchNext();
            });
    }

    void end()
    {
        std::stable_sort(invitations.begin(), invitations.end(),
            [](const auto& a, const auto& b) { return a.when < b.when; });
        call->end(std::move(invitations));
    }
};

std::string replyDocument(
    const AccountPlace& account, const Invitation& invitation, bool isAccepted)
{
    auto reply = GDataXMLElement::elementWithName("invite-reply", calendarServer);
    reply.addNamespace("d", dav);
    reply.addNamespace("cs", calendarServer);
    reply.addElement("in-reply-to", calendarServer, invitation.uid);
    reply.addElement(
        "href", dav, account.addresses.empty() ? invitation.sharee : account.addresses.front());
    reply.addElement(isAccepted ? "invite-accepted" : "invite-declined", calendarServer);
    reply.addElement("hosturl", calendarServer).addElement("href", dav, invitation.calendar);
    return R"(<?xml version="1.0" encoding="utf-8"?>)" + reply.XMLString();
}

/// What keeps an invitation from being answered, if anything does.
std::optional<Failure> obstacle(
    const AccountPlace& account, const Invitation& invitation, std::string_view what)
{
    if (!offersSharing(account)) return sharingIsNotOffered(what);
    if (invitation.kind == Invitation::Kind::offer) return std::nullopt;
    return Failure {.kind = FailureKind::malformed,
        .reason = std::string(what) + ": this is no invitation that could be answered."};
}

/// An invitation that is being accepted.
struct Accepting : std::enable_shared_from_this<Accepting> {
    std::shared_ptr<Channel> channel;
    std::vector<std::string> homes;
    Invitation invitation;
    std::shared_ptr<PendingCall<std::string>> call;
    std::size_t next = 0;
    std::string sharedAs = {}; ///< as the answer says
    std::optional<Failure> lost = {};

    static constexpr const char* what = "The invitation could not be accepted";

    void start(const AccountPlace& account)
    {
        channel->send({.method = "POST",
                          .url = homes.front(),
                          .fields = {{"Content-Type", xmlType}},
                          .body = replyDocument(account, invitation, true),
                          .what = what},
            call, [self = shared_from_this()](Result<Answer> result) {
                auto refusal = refusalIn(result, self->channel->origin(), what);
                if (refusal && !refusal->isUncertain) return self->call->fail(std::move(*refusal));
                if (!refusal) self->readAnswer(result.value());
                self->lost = std::move(refusal);
                self->look();
            });
    }

    void readAnswer(const Answer& answer)
    {
        Error error;
        const auto document = GDataXMLDocument::parse(answer.body.view(), error);
        const auto href = document ? textIn(document->rootElement(), "href", dav) : std::string();
        if (!href.empty()) sharedAs = normalPath(resolved(answer.url, href));
    }

    void look()
    {
        if (next == homes.size()) return giveUp();
        channel->send({.method = "PROPFIND",
                          .url = homes[next++],
                          .fields = {{"Depth", "1"}, {"Content-Type", xmlType}},
                          .body = sharedBody,
                          .what = what},
            call, [self = shared_from_this()](Result<Answer> result) {
                const auto read = result
                    ? DavAnswer::read(result.value(), self->channel->origin(), what)
                    : Result<DavAnswer>(result.failure());
                if (!read) {
                    auto failure = self->lost.value_or(read.failure());
                    failure.isUncertain = true;
                    return self->call->fail(std::move(failure));
                }
                for (const auto& response : read.value().responses) {
                    if (self->isIt(response)) return self->call->end(response.place);
                }
                self->look();
            });
    }

    bool isIt(const DavResponse& response) const
    {
        if (!sharedAs.empty() && normalPath(response.url) == sharedAs) return true;
        const auto owners = response.hrefIn("shared-url", calendarServer);
        return owners
            && normalPath(resolved(response.url, *owners)) == normalPath(invitation.calendar);
    }

    void giveUp()
    {
        auto failure = lost.value_or(Failure {.method = "POST", .url = homes.front()});
        failure.isUncertain = lost && mayStillArrive(*lost);
        if (!lost) {
            failure.reason = std::string(what)
                + ": the server took the answer, but the calendar is not among the user's.";
        }
        call->fail(std::move(failure));
    }
};

} // namespace

void listInvitations(const std::shared_ptr<Channel>& channel, const AccountPlace& account,
    std::shared_ptr<PendingCall<std::vector<Invitation>>> call)
{
    if (!offersSharing(account)) return call->fail(sharingIsNotOffered(InvitationListing::what));
    if (!account.notifications) {
        return call->fail({.kind = FailureKind::unsupported,
            .reason = std::string(InvitationListing::what)
                + ": the server names no place where this user's invitations are."});
    }
    const auto listing = std::make_shared<InvitationListing>();
    listing->channel = channel;
    listing->call = std::move(call);
    listing->start(*account.notifications);
}

void acceptInvitation(const std::shared_ptr<Channel>& channel, const AccountPlace& account,
    const Invitation& invitation, std::shared_ptr<PendingCall<std::string>> call)
{
    if (auto failure = obstacle(account, invitation, Accepting::what))
        return call->fail(std::move(*failure));
    const auto accepting = std::make_shared<Accepting>();
    accepting->channel = channel;
    accepting->homes = account.homes;
    accepting->invitation = invitation;
    accepting->call = std::move(call);
    accepting->start(account);
}

void declineInvitation(const std::shared_ptr<Channel>& channel, const AccountPlace& account,
    const Invitation& invitation, std::shared_ptr<PendingCall<void>> call)
{
    constexpr std::string_view what = "The invitation could not be declined";
    if (auto failure = obstacle(account, invitation, what)) return call->fail(std::move(*failure));
    channel->send({.method = "POST",
                      .url = account.homes.front(),
                      .fields = {{"Content-Type", xmlType}},
                      .body = replyDocument(account, invitation, false),
                      .what = std::string(what)},
        call, [=](Result<Answer> result) {
            // Nothing that the user may read shows whether a lost answer was taken.
            if (auto refusal = refusalIn(result, channel->origin(), what))
                return call->fail(std::move(*refusal));
            call->end({});
        });
}

void dismissInvitation(const std::shared_ptr<Channel>& channel, const Invitation& invitation,
    std::shared_ptr<PendingCall<void>> call)
{
    constexpr std::string_view what = "The invitation could not be dismissed";
    const auto isGone
        = [](const Answer& answer) { return kindOfStatus(answer.status) == FailureKind::missing; };
    channel->send({.method = "DELETE", .url = invitation.place, .what = std::string(what)}, call,
        [=](Result<Answer> result) {
            if (result && isGone(result.value())) return call->end({});
            const auto refusal = refusalIn(result, channel->origin(), what);
            if (!refusal) return call->end({});
            if (!refusal->isUncertain) return call->fail(*refusal);
            channel->send({.method = "GET", .url = invitation.place, .what = std::string(what)},
                call, [=, lost = *refusal](Result<Answer> found) {
                    if (found && isGone(found.value())) return call->end({});
                    call->fail(lost);
                });
        });
}

} // namespace Tessel
