#pragma once

#include "Tessel/Platform/Foundation/Web/Origin.h"
#include "Tessel/Session/Outcome/Result.h"

#include <string>
#include <string_view>

namespace Tessel {

/// What a person gives for a server, taken apart.
struct ServerAddress {
    Origin origin;
    std::string base; ///< "https://host:port", without a final slash
    std::string path; ///< begins with "/"; empty where none was given
    std::string mailDomain; ///< of an e-mail address, whose services DNS may name; empty otherwise

    /// Reads a host, host and port, a URL with or without a path, or an e-mail address.
    static Result<ServerAddress> read(std::string_view text);
};

} // namespace Tessel
