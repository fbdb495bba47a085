#include "Tessel/Session/Sharing/CalendarSharing.h"

#include "Tessel/Session/Exchange/AnswerFailure.h"
#include "Tessel/Session/Sharing/ShareList.h"

#include <algorithm>

namespace Tessel {

namespace {

using namespace XMLNamespace;

void readShares(const std::shared_ptr<Channel>& channel, const std::string& calendar,
    const std::string& what, const std::shared_ptr<CallState>& call,
    std::function<void(Result<ShareList>)> done)
{
    channel->send({.method = "PROPFIND",
                      .url = calendar,
                      .fields = {{"Depth", "0"}, {"Content-Type", "text/xml; charset=utf-8"}},
                      .body = ShareList::propfind,
                      .what = what},
        call, [=](Result<Answer> result) {
            if (!result) return done(result.failure());
            const auto read = DavAnswer::read(result.value(), channel->origin(), what);
            if (!read) return done(read.failure());
            const auto& responses = read.value().responses;
            if (responses.empty()) return done(sharingIsUnsupported(what));
            if (const auto status = responses.front().status; status >= 300)
                return done(failureOf(result.value(), status, responses.front().words, what));
            done(ShareList::read(responses.front()));
        });
}

/// A change on its way: who has the calendar, the request, who has it then.
struct SharesChanging : std::enable_shared_from_this<SharesChanging> {
    std::shared_ptr<Channel> channel;
    std::string calendar;
    ShareChange change;
    std::shared_ptr<PendingCall<ShareeOutcomes>> call;
    std::string what;
    ShareList listedBefore = {};

    void start()
    {
        readShares(
            channel, calendar, what, call, [self = shared_from_this()](Result<ShareList> shares) {
                if (!shares) return self->call->fail(shares.failure());
                if (!shares.value().canBeShared)
                    return self->call->fail(sharingIsUnsupported(self->what));
                self->post(shares.value());
            });
    }

    void post(const ShareList& before)
    {
        if (change.withdrawsAll) {
            for (const auto& sharee : before.sharees)
                change.withdrawn.push_back(sharee.address);
        }
        listedBefore = before;
        const bool hasAny = std::any_of(change.withdrawn.begin(), change.withdrawn.end(),
            [&](const auto& address) { return before.find(address); });
        if (change.invited.empty() && !hasAny) return call->end(outcomes(before, std::nullopt));
        // Cyrus answers 403 to application/xml.
        channel->send({.method = "POST",
                          .url = calendar,
                          .fields = {{"Content-Type", "text/xml; charset=utf-8"}},
                          .body = document(before),
                          .what = what},
            call, [self = shared_from_this()](Result<Answer> result) {
                auto refusal = refusalIn(result, self->channel->origin(), self->what);
                if (refusal && !refusal->isUncertain) return self->call->fail(std::move(*refusal));
                self->look(refusal);
            });
    }

    std::string document(const ShareList& before) const
    {
        auto share = GDataXMLElement::elementWithName("share", calendarServer);
        share.addNamespace("d", dav);
        share.addNamespace("cs", calendarServer);
        for (const auto& invitee : change.invited) {
            auto set = share.addElement("set", calendarServer);
            set.addElement("href", dav, addressURI(invitee.address));
            set.addElement("summary", calendarServer, before.displayName);
            const bool writes = invitee.access == ShareAccess::readWrite;
            set.addElement(writes ? "read-write" : "read", calendarServer);
        }
        for (const auto& address : change.withdrawn)
            share.addElement("remove", calendarServer).addElement("href", dav, addressURI(address));
        return R"(<?xml version="1.0" encoding="utf-8"?>)" + share.XMLString();
    }

    /// What has become of it, whether the answer came or was lost.
    void look(const std::optional<Failure>& lost)
    {
        readShares(channel, calendar, what, call,
            [self = shared_from_this(), lost](Result<ShareList> shares) {
                if (shares) return self->call->end(self->outcomes(shares.value(), lost));
                auto failure = lost ? *lost : shares.failure();
                failure.isUncertain = true;
                self->call->fail(std::move(failure));
            });
    }

    ShareeOutcomes outcomes(const ShareList& after, const std::optional<Failure>& lost) const
    {
        const auto refused = [&](const std::string& why) {
            auto failure = lost.value_or(Failure {.method = "POST", .url = calendar});
            failure.isUncertain = lost && mayStillArrive(*lost);
            if (!lost) failure.reason = what + ": " + why;
            return failure;
        };
        ShareeOutcomes outcomes;
        for (const auto& invitee : change.invited) {
            ShareeOutcome outcome {.address = invitee.address};
            const auto* sharee = after.find(invitee.address);
            if (sharee) outcome.sharee = *sharee;
            if (!sharee) {
                outcome.outcome = refused("the server does not list " + invitee.address + ".");
            } else if (sharee->state == InviteState::invalid) {
                outcome.outcome = refused("the server knows nobody at " + invitee.address + ".");
            } else if (sharee->access != invitee.access) {
                outcome.outcome
                    = refused("the server gives " + invitee.address + " another access.");
            }
            outcomes.push_back(std::move(outcome));
        }
        for (const auto& address : change.withdrawn) {
            ShareeOutcome outcome {.address = address};
            if (const auto* sharee = after.find(address)) {
                outcome.sharee = *sharee;
                outcome.outcome = refused("the server still lists " + address + ".");
            } else if (!listedBefore.find(address)) {
                // Cyrus answers 204 to the removal of an address that it does not list, and does
                // nothing, though it may be another one of somebody who has the calendar.
                outcome.outcome = Failure {.kind = FailureKind::missing,
                    .reason = what + ": the server lists nobody at " + address + "."};
            }
            outcomes.push_back(std::move(outcome));
        }
        return outcomes;
    }
};

} // namespace

bool offersSharing(const AccountPlace& account)
{
    return account.offers("calendarserver-sharing");
}

Failure sharingIsNotOffered(std::string_view what)
{
    return {.kind = FailureKind::unsupported,
        .reason = std::string(what)
            + ": this server offers no sharing (its DAV field lacks calendarserver-sharing)."};
}

Failure sharingIsUnsupported(std::string_view what)
{
    return {.kind = FailureKind::unsupported,
        .reason
        = std::string(what) + ": the server does not offer this user to share this calendar."};
}

void listSharees(const std::shared_ptr<Channel>& channel, const AccountPlace& account,
    const std::string& calendar, std::shared_ptr<PendingCall<std::vector<Sharee>>> call)
{
    const std::string what = "Whom the calendar is shared with could not be read";
    if (!offersSharing(account)) return call->fail(sharingIsNotOffered(what));
    readShares(channel, calendar, what, call, [=](Result<ShareList> shares) {
        if (!shares) return call->fail(shares.failure());
        auto& list = shares.value();
        if (list.sharees.empty() && !list.canBeShared)
            return call->fail(sharingIsUnsupported(what));
        call->end(std::move(list.sharees));
    });
}

void changeSharees(const std::shared_ptr<Channel>& channel, const AccountPlace& account,
    const std::string& calendar, ShareChange change,
    std::shared_ptr<PendingCall<ShareeOutcomes>> call)
{
    const std::string what = change.invited.empty() ? "The shares could not be withdrawn"
                                                    : "The calendar could not be shared";
    if (!offersSharing(account)) return call->fail(sharingIsNotOffered(what));
    const auto changing = std::make_shared<SharesChanging>();
    changing->channel = channel;
    changing->calendar = calendar;
    changing->change = std::move(change);
    changing->call = std::move(call);
    changing->what = what;
    changing->start();
}

} // namespace Tessel
