#pragma once

#include "Tessel/Platform/Foundation/Web/Origin.h"
#include "Tessel/Session/Outcome/Continuation.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

namespace Tessel {

/// What a host may choose about a session; the defaults are safe.
struct SessionSettings {
    /// Where continuations, progress and `freshCredential` run; a thread of the library without it.
    Executor executor = {};
    /// How long one request may go without progress.
    std::chrono::milliseconds patience {60'000};
    /// How long one request may take in all. Without it a server that sends a byte now and then
    /// keeps a call for as long as it likes, up to the transport's limit on an answer's size.
    std::optional<std::chrono::milliseconds> limit = std::chrono::minutes(10);
    /// Further origins that requests may go to with the credential, such as the one that the
    /// well-known address redirects to. The auth delegate decides for itself: give it the same.
    std::vector<Origin> otherOrigins = {};
    /// Whether the account's server may be one without TLS, which sends the credential and all data
    /// readable for everybody on the way.
    bool allowsPlainHTTP = false;
    /// Asked when the server does not accept the credential: gives the auth delegate a fresh one,
    /// then calls back once with true, or with false to leave it. Requests that fail meanwhile wait
    /// for the same answer; each is sent once more.
    std::function<void(std::function<void(bool)>)> freshCredential = {};
    /// Requests on their way at the same time.
    std::size_t exchangesAtOnce = 8;
};

} // namespace Tessel
