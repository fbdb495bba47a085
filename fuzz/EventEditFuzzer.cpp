#include "Tessel/Session/Text/MergeEdit.h"
#include "Tessel/Session/Text/TextPatch.h"
#include "fuzz/FuzzTarget.h"

namespace Tessel::Fuzz {

namespace {

const auto now = Date::fromSecondsSince1970(1'767'268'800);

/// The same lines, but for those of the edited kind and the stamps.
std::string others(const EventText& event, std::string_view edited)
{
    std::string lines;
    const auto& index = event.tree().index();
    for (std::uint32_t i = 0; i < index.lines.size(); ++i) {
        const auto line = index.line(i);
        if (line.is(edited) || line.is("DTSTAMP") || line.is("LAST-MODIFIED")) continue;
        lines += line.raw();
    }
    return lines;
}

void readAll(const EventText& event)
{
    auto parts = event.overrides();
    parts.push_back(event.main());
    for (const auto& part : parts) {
        const auto values = part.recurrence();
        for (const auto& moment : values.exceptions)
            event.dateOf(moment);
        part.attendees();
        part.organizer();
        part.alarms();
        part.categories();
        event.end(part);
    }
}

void requireEdited(const EventText& event, const EventEdit& edit)
{
    const auto edited = event.apply(edit, now);
    if (!edited) return require(!edited.reason().empty(), "a failure without a reason");
    const auto again = EventText::read(edited.value().event.text());
    require(bool(again), "an edited text cannot be read");
    readAll(again.value());
    if (edited.value().following) readAll(*edited.value().following);
    mergeEdit(event, edit, again.value(), now);
}

/// A text and, behind a line "---", an edit of it. The untouched comes back; an edit leaves alone
/// what it does not name, and nothing stops or hangs.
const Target eventEdit("event-edit", [](std::string_view input) {
    const auto cut = input.find("\n---\n");
    const std::string text(input.substr(0, cut == input.npos ? cut : cut + 1));
    const auto read = EventText::read(text);
    if (cut != input.npos) {
        const auto edit = EventEdit::read(std::string(input.substr(cut + 5)));
        if (edit) {
            const auto stored = EventEdit::read(edit.value().text());
            require(bool(stored), "an edit that was stored cannot be read");
            require(
                stored.value().text() == edit.value().text(), "an edit changes when it is stored");
            EventText::make(edit.value(), now);
            if (read) requireEdited(read.value(), edit.value());
        }
    }
    if (!read) return;
    const auto& event = read.value();
    require(event.text() == text && TextPatch(event.tree()).apply() == text, "a byte is lost");
    readAll(event);
    const auto edited = event.apply({.location = "Here, and there"}, now);
    require(bool(edited), "a location cannot be set");
    const auto& result = edited.value().event;
    require(result.main().location() == "Here, and there", "a location is lost");
    require(others(result, "LOCATION") == others(event, "LOCATION"), "another line changes");
    const auto start = event.main().start();
    if (!start) return;
    auto later = *start;
    later.local += std::chrono::days(1);
    requireEdited(event, {.start = later});
    requireEdited(
        event, {.start = EventMoment::day(std::chrono::floor<std::chrono::days>(later.local))});
    requireEdited(event, {.instance = start, .summary = "Once"});
    requireEdited(event, {.instance = later, .andFollowing = true, .summary = "From here"});
    requireEdited(event, {.instance = later, .isRemoval = true});
});

} // namespace

} // namespace Tessel::Fuzz
