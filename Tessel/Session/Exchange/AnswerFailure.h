#pragma once

#include "Tessel/Platform/Foundation/Base/Error.h"
#include "Tessel/Session/Exchange/Answer.h"
#include "Tessel/Session/Outcome/Failure.h"

#include <string>
#include <string_view>

namespace Tessel {

/// What an answer that is no success means: kind, the server's own words, and what to do. `what`
/// says what could not be done, such as "The calendar could not be created".
TESSEL_EXPORT Failure failureOf(const Answer& answer, std::string_view what);

/// The same for one status within a multistatus. `words` are the server's, if it has any.
TESSEL_EXPORT Failure failureOf(
    const Answer& answer, int status, std::string_view words, std::string_view what);

/// The kind that a status means.
TESSEL_EXPORT FailureKind kindOfStatus(int status);

/// Whether a request of the method may change what the server holds (RFC 9110, 9.2.1).
TESSEL_EXPORT bool changesSomething(std::string_view method);

/// Whether a request that was not done when its server was looked at may be done yet: it was given
/// up while it was on its way.
bool mayStillArrive(const Failure& failure);

/// What an error of the transport means.
TESSEL_EXPORT Failure failureOf(
    const Error& error, const std::string& method, const std::string& url, std::string_view what);

} // namespace Tessel
