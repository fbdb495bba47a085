#include "Tessel/icalendar/CGICalendarContentLine.h"
#include "Tessel/icalendar/CGICalendarObject.h"

#include <gtest/gtest.h>
#include <stdexcept>

namespace Tessel {
namespace {

using Keys = std::vector<std::optional<std::string>>;

TEST(ComponentTests, FactoriesSetTheirPropertiesInOrder)
{
    const auto keys = [](const auto& component) { return component->allPropertyKeys(); };
    using Component = CGICalendarComponent;
    EXPECT_EQ(keys(Component::event()), (Keys {"UID", "DTSTAMP", "SEQUENCE"}));
    EXPECT_EQ(keys(Component::todo()), (Keys {"UID", "DTSTAMP", "SEQUENCE", "CREATED"}));
    EXPECT_EQ(keys(Component::journal()), (Keys {"UID", "DTSTAMP", "SEQUENCE"}));
    EXPECT_EQ(keys(Component::freebusy()), (Keys {"UID", "DTSTAMP"}));
    EXPECT_EQ(keys(Component::timezone()), Keys());
    EXPECT_EQ(keys(Component::alarm()), Keys());
    EXPECT_NE(Component::event()->UID(), Component::event()->UID());
}

TEST(ComponentTests, WritesAWholeCalendar)
{
    const auto object = CGICalendarObject::objectWithProdid("P");
    const auto event = CGICalendarComponent::event();
    event->setUID("u");
    event->setDateTimeStamp(Date::fromSecondsSince1970(1704186000));
    event->properties.push_back(nullptr);
    event->components.push_back(nullptr);
    object->addComponent(event);
    EXPECT_EQ(object->description(),
        "BEGIN:VCALENDAR\nVERSION:2.0\nPRODID:P\nBEGIN:VEVENT\nUID:u\nDTSTAMP:20240102T090000Z\n"
        "SEQUENCE:0\nEND:VEVENT\nEND:VCALENDAR\n");
}

TEST(ComponentTests, WritesContentLinesAndTypesTheirOwnWay)
{
    CGICalendarComponent component("A");
    component.addProperty(CGICalendarContentLine::contentLineWithString("X:a,b"));
    EXPECT_EQ(component.description(), "BEGIN:A\nX:a\\,b\nEND:A\n");
    EXPECT_EQ(CGICalendarComponent().description(), "BEGIN:(null)\nEND:(null)\n");
    EXPECT_EQ(CGICalendarComponent("").description(), "BEGIN:\nEND:\n");
}

TEST(ComponentTests, SetsTheFirstPropertyOfAName)
{
    CGICalendarComponent component("A");
    component.setSummary("one");
    component.setPropertyValue("v", "X", {"1", "2"}, {"P", "Q"});
    component.setPropertyValue("w", "X", {"3", "4"}, {"P"});
    component.setPropertyInteger(-5, "N");
    component.setPropertyFloat(1.5f, "F", {"p"}, {"P"});
    component.setPropertyDate(Date::fromSecondsSince1970(1704186000), "D");
    component.addProperty(std::make_shared<CGICalendarContentLine>("SUMMARY:second"));
    component.setSummary(std::nullopt);
    EXPECT_EQ(component.description(),
        "BEGIN:A\nSUMMARY:\nX;P=1;Q=2:w\nN:-5\nF;P=p:1.5\nD:20240102T090000Z\nSUMMARY:second\n"
        "END:A\n");
    EXPECT_EQ(component.propertyIntegerForName("N"), -5);
    EXPECT_EQ(component.propertyFloatForName("F"), 1.5f);
    EXPECT_EQ(component.propertyFloatForName("missing"), 0);
    EXPECT_THROW(component.propertyAtIndex(6), std::out_of_range);
}

TEST(ComponentTests, AskingForAPropertyRemovesIt)
{
    const auto component = CGICalendarComponent::freebusy();
    EXPECT_TRUE(component->hasPropertyForName("UID"));
    EXPECT_EQ(component->propertyForName("UID"), nullptr);
    EXPECT_FALSE(component->hasPropertyForName("UID"));
    component->removePropertyForName("DTSTAMP");
    component->removePropertyForName("DTSTAMP");
    EXPECT_TRUE(component->properties.empty());
}

TEST(ComponentTests, ReadsAndSetsOnlyWhatIsThere)
{
    CGICalendarComponent component;
    component.setParticipationStatus(2);
    EXPECT_TRUE(component.properties.empty());
    component.setPropertyValue("NEEDS-ACTION", "PARTSTAT");
    component.setParticipationStatus(2);
    EXPECT_EQ(component.propertyValueForName("PARTSTAT"), "ACCEPTED");
    component.setPropertyValue("20240102T090000", "DTSTART");
    EXPECT_EQ(component.dateTimeStart(), std::nullopt);
}

TEST(ComponentTests, CountsTheSequence)
{
    CGICalendarComponent component;
    component.incrementSequenceNumber();
    component.incrementSequenceNumber();
    EXPECT_EQ(component.propertyValueForName("SEQUENCE"), "2");
    component.setPropertyValue("9223372036854775807", "SEQUENCE");
    component.incrementSequenceNumber();
    EXPECT_EQ(component.sequenceNumber(), INT64_MAX);
}

TEST(ComponentTests, KeepsChildrenInOrder)
{
    CGICalendarComponent parent("A");
    const auto first = CGICalendarComponent::componentWithType("1");
    const auto second = CGICalendarComponent::componentWithType("2");
    parent.addComponent(second);
    parent.insertComponent(first, 0);
    parent.insertComponent(first, 2);
    EXPECT_EQ(parent.components, (CGICalendarObject::Components {first, second, first}));
    EXPECT_THROW(parent.insertComponent(first, 4), std::out_of_range);
    EXPECT_THROW(parent.componentAtIndex(3), std::out_of_range);
    EXPECT_THROW(parent.removeComponentAtIndex(3), std::out_of_range);
    parent.removeComponent(*first);
    EXPECT_EQ(parent.components, CGICalendarObject::Components {second});
    EXPECT_EQ(parent.indexOfComponent(*second), 0u);
    EXPECT_EQ(parent.indexOfComponent(*first), std::nullopt);
}

TEST(ObjectTests, SelectsDirectChildrenByType)
{
    const auto object = CGICalendarObject::object();
    for (const auto* type : {"VEVENT", "VTODO", "VEVENT", "VJOURNAL", "VFREEBUSY", "VTIMEZONE"})
        object->addComponent(CGICalendarComponent::componentWithType(type));
    object->components[0]->addComponent(CGICalendarComponent::event());
    const auto& all = object->components;
    using Components = CGICalendarObject::Components;
    EXPECT_EQ(object->events(), (Components {all[0], all[2]}));
    EXPECT_EQ(object->todos(), Components {all[1]});
    EXPECT_EQ(object->journals(), Components {all[3]});
    EXPECT_EQ(object->freebusies(), Components {all[4]});
    EXPECT_EQ(object->timezones(), Components {all[5]});
    EXPECT_TRUE(object->componentsWithType("vevent").empty());
}

} // namespace
} // namespace Tessel
