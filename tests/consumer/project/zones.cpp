#include <Tessel/Tessel.h>

#include <iostream>
#include <string>

using namespace Tessel;

/// Whether the library is the one of these headers, and its zone bundle came along.
int main()
{
    const auto headers = std::to_string(TESSEL_VERSION_MAJOR) + '.'
        + std::to_string(TESSEL_VERSION_MINOR) + '.' + std::to_string(TESSEL_VERSION_PATCH);
    if (libraryVersion() != headers) {
        std::cerr << "zones: headers of " << headers << ", library " << libraryVersion() << '\n';
        return 1;
    }
    const auto zone = TimeZone::withIdentifier("Europe/Berlin");
    if (zone && !MRVUtilities::vTimeZone(*zone).empty()) return 0;
    std::cerr << "zones: no definition of Europe/Berlin\n";
    return 1;
}
