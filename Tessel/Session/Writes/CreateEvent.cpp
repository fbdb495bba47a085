#include "Tessel/Session/Writes/CreateEvent.h"

#include "Tessel/Platform/Foundation/Base/Limits.h"
#include "Tessel/Platform/Foundation/Text/UTF8.h"
#include "Tessel/Session/Exchange/AnswerFailure.h"
#include "Tessel/Session/Exchange/Href.h"
#include "Tessel/Session/Text/SameMeaning.h"

#include <cstdint>

namespace Tessel {

namespace {

void appendHexadecimal(std::string& text, std::uint64_t number, int digits)
{
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4)
        text += "0123456789abcdef"[number >> shift & 15];
}

/// The same for the same text wherever it is made (FNV-1a).
std::uint64_t hashOf(std::string_view text)
{
    std::uint64_t hash = 0xCBF29CE484222325;
    for (const char c : text)
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3;
    return hash;
}

/// A name for the event's resource, out of its UID. Others choose UIDs, and servers take "%2F" for
/// a slash (Radicale) or write names as files: what could mean a path is written otherwise.
std::string nameOf(std::string_view uid)
{
    std::string name;
    if (uid.size() > Limits::nameBytes) {
        name = "uid_";
        appendHexadecimal(name, hashOf(uid), 16);
        return name;
    }
    for (const char c : uid) {
        const auto byte = static_cast<unsigned char>(c);
        const bool mayBePath = c == '/' || c == '\\' || c == '%' || byte < 0x20 || byte == 0x7F
            || (c == '.' && name.empty());
        name += mayBePath ? '_' : c;
        if (mayBePath) appendHexadecimal(name, byte, 2);
    }
    return encodedSegment(name);
}

} // namespace

std::string placeOfEvent(const std::string& calendar, const EventText& event)
{
    return (calendar.ends_with('/') ? calendar : calendar + "/") + nameOf(event.uid()) + ".ics";
}

std::optional<Failure> faultOfNew(
    const std::string& what, const std::string& calendar, const EventText& event)
{
    if (calendar.empty()) return noCalendarGiven(what);
    const auto fault = !isValidUTF8(event.text()) ? "its text is not UTF-8"
        : event.uid().empty()                     ? "it has no UID"
        : !event.main().start()                   ? "it has no DTSTART that can be read"
                                                  : nullptr;
    if (!fault) return std::nullopt;
    return Failure {.kind = FailureKind::malformed, .reason = what + ": " + fault + "."};
}

Failure noCalendarGiven(const std::string& what)
{
    return {.kind = FailureKind::malformed, .reason = what + ": no calendar was given."};
}

void confirm(const ResourceAccess& access, Resource written, const std::string& before,
    std::function<void(Result<Resource>)> done)
{
    if (!written.tag.empty()) return done(std::move(written));
    // Cyrus gives no tag for what it has changed while it stored it.
    access.read(written.href, [=](Result<std::optional<Resource>> found) {
        // Without a tag, the next change looks first.
        if (!found) return done(written);
        const auto& there = found.value();
        const bool isAsBefore = there && there->tag == before && canGuard(before);
        if (there && (!isAsBefore || meanTheSame(there->text, written.text))) return done(*there);
        done(Failure {.kind = FailureKind::refused,
            .reason = access.what + ": the server says that it has written it, but at "
                + written.href + (there ? " is what was there before." : " there is nothing."),
            .method = "PUT",
            .url = written.href,
            .isUncertain = true});
    });
}

void createEvent(const ResourceAccess& access, const std::string& calendar, const EventText& event,
    std::function<void(Result<Resource>)> done)
{
    createEventAt(access, placeOfEvent(calendar, event), event, std::move(done));
}

void createEventAt(const ResourceAccess& access, const std::string& place, const EventText& event,
    std::function<void(Result<Resource>)> done)
{
    access.create(place, event.text(), [=](Result<std::string> written) {
        if (written) return confirm(access, {place, written.value(), event.text()}, {}, done);
        auto failure = written.failure();
        if (!failure.isUncertain) return done(std::move(failure));
        access.read(place, [=](Result<std::optional<Resource>> found) mutable {
            if (!found) return done(failure);
            failure.isUncertain = mayStillArrive(failure);
            if (!found.value()) return done(failure);
            const auto theirs = EventText::read(found.value()->text);
            if (theirs && theirs.value().uid() == event.uid())
                return done(std::move(*found.value()));
            done(failure);
        });
    });
}

} // namespace Tessel
