#include "Tessel/CaldavLibrary/Extensions/Mailto.h"

namespace Tessel {

std::string withoutMailto(std::string_view address)
{
    constexpr std::string_view scheme = "mailto:";
    std::string bare;
    for (auto found = address.find(scheme); found != std::string_view::npos;
         found = address.find(scheme)) {
        bare += address.substr(0, found);
        address.remove_prefix(found + scheme.size());
    }
    return bare.append(address);
}

} // namespace Tessel
