#pragma once

#include "Tessel/Session/Exchange/Channel.h"
#include "Tessel/Session/Store/Resource.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace Tessel {

/// Whether a write may be guarded by the tag: a weak one is never the same (RFC 9110, 13.1.1), and
/// "*" would be every one.
bool canGuard(std::string_view tag);

/// Requests on one resource, whose answers are looked into: a success is one that the server means
/// (a 207 that refuses is none), and what was sent is never sent again from here.
struct ResourceAccess {
    std::shared_ptr<Channel> channel;
    std::shared_ptr<CallState> call;
    std::string what; ///< for the reason

    /// Why nothing is sent to the place: it is none, or that of a collection, whose removal would
    /// be that of all that it holds. Every request here is refused for it.
    std::optional<Failure> obstacleAt(const std::string& place) const;

    /// What the server holds there; none where it says that there is nothing. `malformed` where
    /// that is no resource but holds several events.
    using Read = std::function<void(Result<std::optional<Resource>>)>;
    void read(const std::string& place, Read next) const;

    /// The new tag, empty where the answer has none that can be used.
    using Written = std::function<void(Result<std::string>)>;
    /// Writes where there is nothing yet.
    void create(const std::string& place, const std::string& text, Written next) const;
    /// Writes over what still has the tag.
    void replace(const Resource& resource, const std::string& text, Written next) const;

    using Done = std::function<void(Outcome)>;
    /// Removes what still has the tag; `missing` where nothing is there.
    void remove(const Resource& resource, Done next) const;
    /// Moves to a place where there is nothing yet.
    void move(const Resource& resource, const std::string& destination, Done next) const;

private:
    void send(Request request, std::function<void(Result<Answer>)> next) const;
};

} // namespace Tessel
