#pragma once

#include "Tessel/CaldavLibrary/OriginAuth.h"

#include <string_view>

namespace Tessel {

/// Signs requests with a user's name and password (RFC 7617), those to the given origins only:
///
///     const auto origin = Origin::ofServer("cal.example.com");
///     const auto auth = std::make_shared<PasswordAuth>(*origin, "alice", password);
class TESSEL_EXPORT PasswordAuth final : public OriginAuth {
public:
    /// `others` are further origins that get the password.
    PasswordAuth(Origin origin, std::string_view user, std::string_view password,
        std::vector<Origin> others = {});
    ~PasswordAuth() override;
};

} // namespace Tessel
