#include "Tessel/Session/Opening/ServerAddress.h"

#include "Tessel/Platform/Foundation/Web/URL.h"
#include "Tessel/Session/Exchange/Href.h"

namespace Tessel {

Result<ServerAddress> ServerAddress::read(std::string_view text)
{
    while (text.starts_with(' '))
        text.remove_prefix(1);
    while (text.ends_with(' '))
        text.remove_suffix(1);

    const auto origin = Origin::ofServer(text);
    if (!origin) {
        return Failure {.kind = FailureKind::malformed,
            .reason = std::string("No server: ").append(text)
                + ". Give a host such as cal.example.com, an address such as "
                  "https://cal.example.com/dav/, or an e-mail address."};
    }
    ServerAddress address {
        .origin = *origin, .base = baseOf(*origin), .path = {}, .mailDomain = {}};
    const auto scheme = text.find("://");
    const auto rest = scheme == text.npos ? text : text.substr(scheme + 3);
    const auto slash = rest.find('/');
    if (slash != rest.npos) {
        address.path = encodedURL(rest.substr(slash, rest.find_first_of("?#") - slash))
                           .value_or(std::string());
        if (address.path == "/") address.path.clear();
    }
    const auto at = rest.find('@');
    if (scheme == text.npos && slash == rest.npos && at != rest.npos)
        address.mailDomain = rest.substr(at + 1);
    return address;
}

} // namespace Tessel
