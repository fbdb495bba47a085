#pragma once

#include "Tessel/CaldavLibrary/OriginAuth.h"

#include <string_view>

namespace Tessel {

/// Signs requests with a bearer token (RFC 6750, 2.1), those to the given origins only.
class TESSEL_EXPORT BearerAuth final : public OriginAuth {
public:
    /// `others` are further origins that get the token.
    BearerAuth(Origin origin, std::string_view token, std::vector<Origin> others = {});
    ~BearerAuth() override;

    /// Replaces a token that ends, for requests from now on; from any thread.
    void setToken(std::string_view token);
};

} // namespace Tessel
