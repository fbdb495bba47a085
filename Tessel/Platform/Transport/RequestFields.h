#pragma once

#include "Tessel/Platform/Foundation/Base/Error.h"
#include "Tessel/Platform/Transport/MTask.h"

#include <optional>

namespace Tessel {

/// Moves what a task holds beside its request into the request: query items, further fields and
/// the authorization.
void mergeIntoRequest(MTask& task);

/// Why the request must not go on the wire: a method or name that is no token (RFC 9110, 5.6.2), a
/// value that holds a line end or NUL, a URL that is not http or https with a host.
std::optional<Error> refusal(const URLRequest& request);

} // namespace Tessel
