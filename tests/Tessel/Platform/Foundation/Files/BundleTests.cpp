#include "Tessel/Platform/Foundation/Files/Bundle.h"

#include <gtest/gtest.h>

using namespace Tessel;

TEST(Bundle, FindsFilesOfItsOwnDirectoryOnly)
{
    const auto zones = Bundle::library().bundle("ZoneinfoBundle.bundle");
    EXPECT_TRUE(zones.pathForResource("Berlin", "ics").has_value());
    EXPECT_FALSE(zones.pathForResource("Berlin", "txt").has_value());
    EXPECT_FALSE(zones.pathForResource("../ZoneinfoBundle.bundle/Berlin", "ics").has_value());
    EXPECT_FALSE(zones.pathForResource(std::string("Berlin\0", 7), "ics").has_value());
    EXPECT_FALSE(zones.pathForResource(std::string(10'000, 'x'), "ics").has_value());
    EXPECT_FALSE(Bundle("/nowhere").pathForResource("Berlin", "ics").has_value());
}
