#pragma once

#include "Tessel/Platform/Foundation/Base/Error.h"
#include "Tessel/Session/Exchange/Answer.h"

#include <string>
#include <string_view>

namespace Tessel {

/// What one status within a multistatus means. `words` are the server's, if it has any.
Failure failureOf(const Answer& answer, int status, std::string_view words, std::string_view what);

/// The kind that a status means.
FailureKind kindOfStatus(int status);

/// Whether a request of the method may change what the server holds (RFC 9110, 9.2.1).
bool changesSomething(std::string_view method);

/// Whether a request that was not done when its server was looked at may be done yet: it was given
/// up while it was on its way.
bool mayStillArrive(const Failure& failure);

/// What an error of the transport means.
Failure failureOf(
    const Error& error, const std::string& method, const std::string& url, std::string_view what);

} // namespace Tessel
