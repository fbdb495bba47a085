#include "Tessel/CaldavLibrary/Extensions/MemberURL.h"

namespace Tessel {

std::string memberURL(std::string_view collectionURL, std::string_view name)
{
    std::string url(collectionURL);
    if (!url.ends_with('/')) url += '/';
    for (const char c : name) {
        if (c != '/') url += c;
    }
    return url;
}

} // namespace Tessel
