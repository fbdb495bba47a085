#pragma once

#include "Tessel/Session/Exchange/Channel.h"
#include "Tessel/Session/Exchange/DavAnswer.h"
#include "Tessel/Session/Opening/AccountPlace.h"
#include "Tessel/Session/Opening/ServerAddress.h"

#include <deque>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace Tessel {

/// Finds where an account lives (RFC 6764, 6): at the address itself, at the server's well-known
/// address, at its root. The first that leads to a home ends it. So does a refused credential,
/// since a server may lock an account after several.
class Discovery final : public std::enable_shared_from_this<Discovery> {
public:
    using Found = std::shared_ptr<PendingCall<AccountPlace>>;

    /// `starts` are the URLs to try, in order.
    Discovery(std::shared_ptr<Channel> channel, std::vector<std::string> starts, Found call);

    void start();

    /// The URLs at which an account of this address may be found.
    static std::vector<std::string> starts(const ServerAddress& address);

private:
    void tryNext();
    void ask(const std::string& url, void (Discovery::*next)(const std::string&, Result<Answer>));
    void readStart(const std::string& url, Result<Answer> result);
    void readPrincipal(const std::string& url, Result<Answer> result);
    void lookForCalendarsAt(std::deque<std::string> urls); ///< at the first that has any
    /// Why there are no calendars at the URL, if there are none.
    std::optional<Failure> readCollection(
        const std::string& url, const Result<Answer>& result) const;
    void note(const DavResponse& response);
    void askWhatIsOffered();
    /// Remembers a try that led nowhere; true when no other will do better.
    bool isFinal(const Failure& failure);
    void giveUp();

    const std::shared_ptr<Channel> channel_;
    std::deque<std::string> starts_;
    const Found call_;
    AccountPlace place_;
    std::string collection_; ///< that the last start answered for
    std::vector<Failure> failures_;
    std::set<std::string> asked_;
};

} // namespace Tessel
