#include "Tessel/icalendar/CGICalendar.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <stdexcept>
#include <utility>

namespace Tessel {
namespace {

using Keys = std::vector<std::optional<std::string>>;
using Nodes = CGICalendarNodes<CGICalendarProperty>;

/// Blank lines before, between and behind two properties.
std::shared_ptr<CGICalendarComponent> component()
{
    return CGICalendar::initWithString("BEGIN:A\n\nX:1\n\n\nY:2\n\nEND:A\n")->objects[0];
}

TEST(NodesTests, BlankNodesKeepTheirPlaces)
{
    const Keys keys {std::nullopt, "X", std::nullopt, std::nullopt, "Y", std::nullopt};
    const auto all = component();
    EXPECT_EQ(all->allPropertyKeys(), keys);
    EXPECT_EQ(all->properties.filled().size(), 2u);
    EXPECT_EQ(all->properties.size(), 6u);
    all->properties[2]->setName("N"); // from here on each is a node of its own
    EXPECT_EQ(all->description(), "BEGIN:A\n:\nX:1\nN:\n:\nY:2\n:\nEND:A\n");
    EXPECT_NE(all->properties[3], all->properties[5]);
    EXPECT_EQ(all->propertyForName("N"), all->properties.at(2));
    EXPECT_THROW(all->propertyAtIndex(6), std::out_of_range);
}

TEST(NodesTests, ChangesCountBlankNodes)
{
    const auto removed = component();
    removed->addProperty(std::make_shared<CGICalendarProperty>());
    removed->setPropertyValue("3", "Z");
    EXPECT_TRUE(removed->hasPropertyForName("X"));
    EXPECT_FALSE(removed->hasPropertyForName("X"));
    EXPECT_EQ(removed->description(), "BEGIN:A\n:\n:\n:\nY:2\n:\n:\nZ:3\nEND:A\n");

    auto& properties = removed->properties;
    properties.erase(properties.begin(), properties.begin() + 3);
    properties.insert(properties.begin() + 1, properties.back());
    properties.pop_back();
    EXPECT_EQ(removed->description(), "BEGIN:A\nY:2\nZ:3\n:\n:\nEND:A\n");
    properties.clear();
    EXPECT_TRUE(properties.empty());
}

TEST(NodesTests, ACopyHoldsTheSameNodes)
{
    const auto original = component();
    const auto copy = original->properties;
    EXPECT_EQ(copy, original->properties);
    EXPECT_EQ(copy.front(), original->properties.front());
    const std::vector<std::shared_ptr<CGICalendarProperty>>& vector = original->properties;
    EXPECT_TRUE(std::equal(copy.begin(), copy.end(), vector.begin(), vector.end()));

    auto moved = std::move(component()->properties);
    EXPECT_EQ(moved.size(), 6u);
    moved = {nullptr, copy[1]};
    EXPECT_EQ(moved, (Nodes {nullptr, copy[1]}));
}

} // namespace
} // namespace Tessel
