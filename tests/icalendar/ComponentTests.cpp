#include "icalendar/CGICalendarContentLine.h"
#include "icalendar/CGICalendarObject.h"

#include <gtest/gtest.h>
#include <stdexcept>

namespace Tessel {
namespace {

using Keys = std::vector<std::optional<std::string>>;

TEST(ComponentTests, FactoriesSetTheirPropertiesInOrder)
{
    EXPECT_EQ(
        CGICalendarComponent::event()->allPropertyKeys(), (Keys {"UID", "DTSTAMP", "SEQUENCE"}));
    EXPECT_EQ(CGICalendarComponent::todo()->allPropertyKeys(),
        (Keys {"UID", "DTSTAMP", "SEQUENCE", "CREATED"}));
    EXPECT_EQ(
        CGICalendarComponent::journal()->allPropertyKeys(), (Keys {"UID", "DTSTAMP", "SEQUENCE"}));
    EXPECT_EQ(CGICalendarComponent::freebusy()->allPropertyKeys(), (Keys {"UID", "DTSTAMP"}));
    EXPECT_TRUE(CGICalendarComponent::timezone()->properties.empty());
    EXPECT_TRUE(CGICalendarComponent::alarm()->isAlarm());
    EXPECT_NE(CGICalendarComponent::event()->UID(), CGICalendarComponent::event()->UID());
    EXPECT_EQ(CGICalendarComponent::todo()->propertyValueForName("SEQUENCE"), "0");
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
    EXPECT_EQ(CGICalendarObject("Q", "1").description(),
        "BEGIN:VCALENDAR\nVERSION:1\nPRODID:Q\nEND:VCALENDAR\n");
    EXPECT_EQ(CGICalendarComponent().description(), "BEGIN:(null)\nEND:(null)\n");
    EXPECT_EQ(CGICalendarComponent("").description(), "BEGIN:\nEND:\n");
}

TEST(ComponentTests, ContentLinesAmongPropertiesAreWrittenTheirOwnWay)
{
    CGICalendarComponent component("A");
    component.addProperty(CGICalendarContentLine::contentLineWithString("X:a,b"));
    EXPECT_EQ(component.description(), "BEGIN:A\nX:a\\,b\nEND:A\n");
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

TEST(ComponentTests, NamedAccessorsUseTheirProperties)
{
    CGICalendarComponent component;
    component.setNotes("n");
    component.setPriority(3);
    component.setSummary("s");
    const auto moment = Date::fromSecondsSince1970(1704186000);
    component.setCompleted(moment);
    component.setDateTimeEnd(moment);
    component.setDue(moment);
    component.setDateTimeStart(moment);
    component.setRecurrenceID(moment);
    component.setUID("u");
    component.setCreated(moment);
    component.setDateTimeStamp(moment);
    component.setLastModified(moment);
    component.setSequenceNumber(7);
    EXPECT_EQ(component.allPropertyKeys(),
        (Keys {"DESCRIPTION", "PRIORITY", "SUMMARY", "COMPLETED", "DTEND", "DUE", "DTSTART",
            "RECURRENCE-ID", "UID", "CREATED", "DTSTAMP", "LAST-MODIFIED", "SEQUENCE"}));

    EXPECT_EQ(component.notes(), "n");
    EXPECT_EQ(component.priority(), 3);
    EXPECT_EQ(component.summary(), "s");
    EXPECT_EQ(component.UID(), "u");
    EXPECT_EQ(component.sequenceNumber(), 7);
    for (const auto& date : {component.completed(), component.dateTimeEnd(), component.due(),
             component.dateTimeStart(), component.recurrenceID(), component.created(),
             component.dateTimeStamp(), component.lastModified()}) {
        EXPECT_EQ(date, moment);
    }
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

TEST(ComponentTests, ParticipationStatusIsThatOfItsProperty)
{
    CGICalendarComponent component;
    component.setParticipationStatus(2);
    EXPECT_TRUE(component.properties.empty());
    EXPECT_EQ(component.participationStatus(), 0);
    component.setPropertyValue("DECLINED", "PARTSTAT");
    EXPECT_EQ(component.participationStatus(), 3);
    component.setParticipationStatus(2);
    EXPECT_EQ(component.propertyValueForName("PARTSTAT"), "ACCEPTED");
}

TEST(ComponentTests, KeepsChildrenInOrder)
{
    CGICalendarComponent parent("A");
    const auto first = CGICalendarComponent::componentWithType("1");
    const auto second = CGICalendarComponent::componentWithType("2");
    parent.addComponent(second);
    parent.insertComponent(first, 0);
    parent.insertComponent(first, 2);
    EXPECT_EQ(parent.componentAtIndex(0), first);
    EXPECT_EQ(parent.indexOfComponent(*second), 1u);
    EXPECT_THROW(parent.insertComponent(first, 4), std::out_of_range);
    EXPECT_THROW(parent.componentAtIndex(3), std::out_of_range);
    EXPECT_THROW(parent.removeComponentAtIndex(3), std::out_of_range);
    parent.removeComponent(*first);
    EXPECT_EQ(parent.components.size(), 1u);
    EXPECT_EQ(parent.indexOfComponent(*first), std::nullopt);
    parent.removeComponentAtIndex(0);
    EXPECT_TRUE(parent.components.empty());
}

TEST(ObjectTests, SelectsDirectChildrenByType)
{
    const auto object = CGICalendarObject::object();
    for (const auto* type : {"VEVENT", "VTODO", "VEVENT", "VJOURNAL", "VFREEBUSY", "VTIMEZONE"}) {
        object->addComponent(CGICalendarComponent::componentWithType(type));
    }
    object->components[0]->addComponent(CGICalendarComponent::event());
    EXPECT_EQ(object->events(),
        (CGICalendarObject::Components {object->components[0], object->components[2]}));
    EXPECT_EQ(object->todos().size() + object->journals().size() + object->freebusies().size(), 3u);
    EXPECT_TRUE(object->timezones().at(0)->isTimezone());
    EXPECT_TRUE(object->componentsWithType("vevent").empty());
    object->setProdid("P");
    object->setVersion("2.0");
    EXPECT_EQ(object->prodid(), "P");
    EXPECT_EQ(object->version(), "2.0");
}

} // namespace
} // namespace Tessel
