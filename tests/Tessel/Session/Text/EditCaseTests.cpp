#include "Tessel/Session/Text/MergeEdit.h"
#include "tests/Tessel/Session/Text/LibicalCheck.h"
#include "tests/support/CaseFile.h"

#include <gtest/gtest.h>

namespace Tessel {
namespace {

const auto now = Date::fromSecondsSince1970(1'767'268'800); // 2026-01-01T12:00:00Z
const std::string head = "BEGIN:VCALENDAR\nVERSION:2.0\nPRODID:-//Example//EN\n"
                         "BEGIN:VTIMEZONE\nTZID:Europe/Berlin\n"
                         "BEGIN:STANDARD\nDTSTART:19701025T030000\n"
                         "RRULE:FREQ=YEARLY;BYMONTH=10;BYDAY=-1SU\n"
                         "TZOFFSETFROM:+0200\nTZOFFSETTO:+0100\nEND:STANDARD\n"
                         "BEGIN:DAYLIGHT\nDTSTART:19700329T020000\n"
                         "RRULE:FREQ=YEARLY;BYMONTH=3;BYDAY=-1SU\n"
                         "TZOFFSETFROM:+0100\nTZOFFSETTO:+0200\nEND:DAYLIGHT\nEND:VTIMEZONE\n";
const std::string tail = "END:VCALENDAR\n";

class EditCaseTests : public testing::TestWithParam<Case> {
protected:
    std::string section(const std::string& name) const { return GetParam().sections.at(name); }
    bool has(const std::string& name) const { return GetParam().sections.contains(name); }
    static std::string inner(const EventText& event)
    {
        const auto& text = event.text();
        return text.substr(head.size(), text.size() - head.size() - tail.size());
    }
    static EventText textOf(const std::string& events)
    {
        return EventText::read(head + events + tail).value();
    }
};

TEST_P(EditCaseTests, GivesTheText)
{
    const auto base = textOf(section("input"));
    const auto edit
        = EventEdit::read("BEGIN:X-EVENT-EDIT\n" + section("edit") + "END:X-EVENT-EDIT\n").value();
    const auto stored = EventEdit::read(edit.text());
    ASSERT_TRUE(stored);
    EXPECT_EQ(stored.value(), edit) << edit.text();

    const auto result = has("theirs") ? mergeEdit(base, edit, textOf(section("theirs")), now)
                                      : base.apply(edit, now);
    if (has("failure")) {
        ASSERT_FALSE(result) << inner(result.value().event);
        EXPECT_EQ(std::string(nameOf(result.failure().kind)) + "\n", section("failure"))
            << result.reason();
        EXPECT_EQ(result.failure().texts != nullptr, result.failure().kind == FailureKind::changed);
        return;
    }
    ASSERT_TRUE(result) << result.reason();
    EXPECT_EQ(inner(result.value().event), section("output"));
    EXPECT_EQ(libicalErrors(result.value().event.text()), 0);
    ASSERT_EQ(result.value().following.has_value(), has("following"));
    if (!has("following")) return;
    const auto& following = *result.value().following;
    EXPECT_NE(following.uid(), base.uid());
    auto text = inner(following);
    for (auto place = text.find(following.uid()); place != text.npos;
         place = text.find(following.uid()))
        text.replace(place, following.uid().size(), "NEW");
    EXPECT_EQ(text, section("following"));
    EXPECT_EQ(libicalErrors(following.text()), 0);
}

INSTANTIATE_TEST_SUITE_P(Cases, EditCaseTests,
    testing::ValuesIn(readCases(TESSEL_TEST_DATA "/cases")),
    [](const auto& info) { return info.param.name; });

} // namespace
} // namespace Tessel
