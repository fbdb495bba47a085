#include <Tessel/Tessel.h>

#include <iostream>

using namespace Tessel;

/// Whether the zone bundle came along.
int main()
{
    const auto zone = TimeZone::withIdentifier("Europe/Berlin");
    if (zone && !MRVUtilities::vTimeZone(*zone).empty()) return 0;
    std::cerr << "zones: no definition of Europe/Berlin\n";
    return 1;
}
