#include "Tessel/Session/SessionOpening.h"

#include "Tessel/CaldavLibrary/BearerAuth.h"
#include "Tessel/CaldavLibrary/PasswordAuth.h"
#include "Tessel/Session/Opening/Discovery.h"
#include "Tessel/Session/Opening/ServiceLookup.h"

#include <algorithm>

namespace Tessel {

namespace {

constexpr const char* what = "The account could not be opened: ";

std::shared_ptr<MRVAuthDelegate> signer(
    const Credential& credential, const std::string& user, const std::vector<Origin>& origins)
{
    const std::vector<Origin> others(origins.begin() + 1, origins.end());
    if (const auto* password = std::get_if<Password>(&credential))
        return std::make_shared<PasswordAuth>(origins.front(), user, password->text, others);
    if (const auto* token = std::get_if<Token>(&credential))
        return std::make_shared<BearerAuth>(origins.front(), token->text, others);
    return std::get<std::shared_ptr<MRVAuthDelegate>>(credential);
}

/// Whether the server is one of the domain's own, by its name.
bool liesIn(const std::string& mailDomain, const ServerAddress& server)
{
    const auto domain = Origin::ofServer(mailDomain);
    if (!domain) return false;
    const auto hostOf = [](const Origin& origin) {
        const auto& text = origin.text();
        const auto start = text.find("://") + 3;
        return text.substr(start, text.rfind(':') - start);
    };
    const auto host = hostOf(server.origin);
    const auto own = hostOf(*domain);
    return host == own || host.ends_with("." + own);
}

} // namespace

SessionOpening::SessionOpening(std::string user, Credential credential, SessionSettings settings,
    std::shared_ptr<CallState> call, Done done)
    : user_(std::move(user))
    , credential_(std::move(credential))
    , settings_(std::move(settings))
    , call_(std::move(call))
    , done_(std::move(done))
{
}

void SessionOpening::start(const ServerAddress& address)
{
    servers_ = {address};
    if (address.mailDomain.empty()) return tryNext();
    ServiceLookup::shared().find(address.mailDomain, settings_.allowsPlainHTTP,
        [self = shared_from_this(), domain = address.mailDomain](std::vector<ServerAddress> named) {
            self->leaveOut(domain, named);
            self->servers_.insert(self->servers_.begin(), named.begin(), named.end());
            self->tryNext();
        });
}

/// An answer of DNS is signed by nobody: whoever forges it must not get the credential.
void SessionOpening::leaveOut(const std::string& mailDomain, std::vector<ServerAddress>& servers)
{
    std::erase_if(servers, [&](const ServerAddress& server) {
        const auto& allowed = settings_.otherOrigins;
        const bool isTrusted = liesIn(mailDomain, server)
            || std::find(allowed.begin(), allowed.end(), server.origin) != allowed.end();
        if (!isTrusted) leftOut_ += (leftOut_.empty() ? "" : ", ") + server.base;
        return !isTrusted;
    });
}

void SessionOpening::tryNext()
{
    if (call_->isDone()) return;
    if (servers_.empty()) return end(std::move(*first_));
    const auto address = servers_.front();
    servers_.pop_front();
    tryAt(address);
}

void SessionOpening::tryAt(const ServerAddress& address)
{
    if (address.base.starts_with("http:") && !settings_.allowsPlainHTTP) {
        return end({.kind = FailureKind::notSent,
            .reason = what + address.base
                + " is a server without TLS, on the way to which everybody could read the "
                  "password. Give https, or set SessionSettings::allowsPlainHTTP to allow it."});
    }
    std::vector<Origin> origins {address.origin};
    origins.insert(origins.end(), settings_.otherOrigins.begin(), settings_.otherOrigins.end());
    const auto auth = signer(credential_, user_, origins);
    if (!auth) {
        return end({.kind = FailureKind::notSent,
            .reason = std::string(what) + "there is no credential."});
    }
    const auto channel = std::make_shared<Channel>(auth, std::move(origins), settings_);
    const auto found = std::make_shared<PendingCall<AccountPlace>>(
        [](std::function<void()> work) { work(); },
        [self = shared_from_this(), channel](Result<AccountPlace> place) {
            if (place) return self->done_(Found {channel, std::move(place).value()});

            const auto& failure = place.failure();
            if (!self->first_) self->first_ = failure;
            const bool mayBeElsewhere = failure.kind == FailureKind::unreachable
                || failure.kind == FailureKind::unsupported || failure.kind == FailureKind::missing;
            if (mayBeElsewhere) return self->tryNext();
            self->end(failure);
        });
    call_->whenDone([weak = std::weak_ptr(found)] {
        if (const auto discovery = weak.lock()) discovery->cancel();
    });
    std::make_shared<Discovery>(channel, Discovery::starts(address), found)->start();
}

void SessionOpening::end(Failure failure)
{
    if (!leftOut_.empty()) {
        failure.reason += "\nDNS names " + leftOut_
            + " for the calendars of this address. That lies outside its domain, so the "
              "credential was not sent there. If you trust it, give it as the server, or allow its "
              "origin.";
    }
    done_(std::move(failure));
}

} // namespace Tessel
