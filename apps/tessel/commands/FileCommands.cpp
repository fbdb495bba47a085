#include "apps/tessel/accounts/FileReplacement.h"
#include "apps/tessel/commands/CommandLine.h"
#include "apps/tessel/commands/EventWrites.h"
#include "apps/tessel/output/Wording.h"

#include <fcntl.h>
#include <unistd.h>

#include <span>
#include <vector>

namespace Tessel::App {

namespace {

struct ImportArguments {
    std::string calendar;
    std::vector<std::string> files;
};

Result<std::string> read(const std::string& file)
try {
    constexpr auto name = "It";
    if (file == "-") return OpenFile(::dup(STDIN_FILENO), name).readAll();
    return OpenFile(file, O_RDONLY, 0, name).readAll();
} catch (const Stop& stop) {
    return stop.failure();
}

/// Whether the next event may be tried after a failure.
bool mayGoOn(const Failure& failure)
{
    switch (failure.kind) {
    case FailureKind::unreachable:
    case FailureKind::untrusted:
    case FailureKind::timedOut:
    case FailureKind::unauthorized:
    case FailureKind::busy:
    case FailureKind::notSent:
    case FailureKind::cancelled:
    case FailureKind::storage:
        return false;
    default:
        return true;
    }
}

/// Whether there is an event of this UID already.
bool isThere(const Failure& failure)
{
    return failure.kind == FailureKind::changed || failure.condition == "no-uid-conflict"
        || (failure.kind == FailureKind::conflict && failure.method.empty());
}

/// The events of files on their way into a calendar.
class Import {
public:
    Import(Workspace& workspace, StoredCalendar calendar)
        : workspace_(workspace)
        , calendar_(std::move(calendar))
        , writes_(workspace)
    {
    }

    void take(const std::string& file)
    {
        if (isOver_) return workspace_.leaveOut(file, "It was not tried.");
        const auto text = read(file);
        if (!text) {
            nameUnread();
            unread_ = {file, text.failure()};
            return;
        }
        const auto events = eventsOfFile(text.value());
        if (!events) return workspace_.leaveOut(file, reasonOf(events.failure()));
        const auto count = events.value().size();
        std::size_t next = 0;
        for (; next < count && !isOver_ && !writes_.isOffline(); ++next) {
            workspace_.out().progress(
                file + ": event " + std::to_string(next + 1) + " of " + std::to_string(count));
            write(file, events.value()[next]);
        }
        if (!isOver_ && next < count) next += queue(file, std::span(events.value()).subspan(next));
        if (isOver_ && next < count)
            workspace_.leaveOut(
                file, "The rest of it was not tried: " + counted(count - next, "event") + ".");
    }

    void tell()
    {
        workspace_.out().progress("");
        if (unread_ && count_ == 0)
            throw Stop::storage(unread_->first + ": " + reasonOf(unread_->second));
        nameUnread();
        workspace_.out().line(
            "imported " + counted(count_, "event") + " into " + nameOf(calendar_) + waiting());
    }

private:
    void write(const std::string& file, const FileEvent& each)
    {
        const auto& event = each.event;
        note(file, each.uid, event ? writes_.create(calendar_, event.value()) : event.failure());
    }

    /// All at once, since the outbox is read anew each time; gives how many were tried.
    std::size_t queue(const std::string& file, std::span<const FileEvent> events)
    {
        std::vector<EventText> texts;
        for (const auto& each : events)
            if (each.event) texts.push_back(each.event.value());
        const auto written = writes_.createWaiting(calendar_, texts);
        auto next = written.begin();
        std::size_t tried = 0;
        for (; tried < events.size() && !isOver_; ++tried) {
            const auto& [uid, event] = events[tried];
            note(file, uid, event ? *next++ : event.failure());
        }
        return tried;
    }

    void note(const std::string& file, const std::string& uid,
        const Result<EventWrites::Written>& written)
    {
        if (written) {
            ++count_;
            waiting_ += written.value().waits ? 1 : 0;
            return workspace_.out().object({{"imported", uid},
                {"href", written.value().resource.href}, {"isWaiting", written.value().waits}});
        }
        isOver_ = !mayGoOn(written.failure());
        // While nothing is done, the command has failed as this has.
        if (isOver_ && count_ == 0) {
            nameUnread();
            throw Stop(written.failure());
        }
        workspace_.leaveOut(file + ": " + uid,
            isThere(written.failure()) ? "It is already there." : reasonOf(written.failure()));
    }

    void nameUnread()
    {
        if (unread_) workspace_.leaveOut(unread_->first, reasonOf(unread_->second));
        unread_.reset();
    }

    std::string waiting() const
    {
        if (waiting_ == 0) return {};
        const auto which = waiting_ < count_ ? std::to_string(waiting_)
            : count_ == 1                    ? "it"
                                             : "all of them";
        return "; " + which + (waiting_ == 1 ? " waits" : " wait") + " to be sent (tessel pending)";
    }

    Workspace& workspace_;
    const StoredCalendar calendar_;
    EventWrites writes_;
    std::size_t count_ = 0;
    std::size_t waiting_ = 0; ///< of these, in the outbox
    /// A file of this machine, not named yet: it may be all that there is to say.
    std::optional<std::pair<std::string, Failure>> unread_;
    bool isOver_ = false; ///< the next event would fare no better
};

void import(Workspace& workspace, const ImportArguments& given)
{
    Import import(workspace, workspace.heldCalendar(given.calendar));
    for (const auto& file : given.files)
        import.take(file);
    import.tell();
}

struct ExportArguments {
    std::string calendar;
    std::string file;
};

void exportCalendar(Workspace& workspace, const ExportArguments& given)
{
    const auto calendar = workspace.heldCalendar(given.calendar);
    const auto store = workspace.store();
    std::optional<FileReplacement> file;
    if (!given.file.empty()) file.emplace(given.file, FileReplacement::Readers::asBefore);
    const auto& out = workspace.out();
    JoinedCalendar joined(nameOf(calendar),
        [&](std::string_view text) { file ? file->write(text) : out.text(text); });
    std::size_t count = 0;
    std::size_t waiting = 0;
    const auto view = workspace.got(OutboxView::of(store));
    workspace.got(view.visit(calendar.href, [&](const ExpectedResource& expected) {
        if (const auto added = joined.add(expected.text)) {
            ++count;
            waiting += expected.waits ? 1 : 0;
        } else {
            workspace.leaveOut(expected.place, reasonOf(added.failure()));
        }
        return true;
    }));
    joined.end();
    for (const auto& failed : workspace.got(store->failed(calendar.href)))
        workspace.leaveOut(failed.href, failed.reason);
    if (waiting > 0)
        out.note("What waits to be sent is in it, as it will be: " + counted(waiting, "event")
            + ". See `tessel pending`.");
    if (!file) return;
    file->finish();
    if (file->isStandardOutput()) return;
    out.result(
        "exported " + std::to_string(count) + " of " + nameOf(calendar) + " to " + given.file,
        {{"exported", count}, {"calendar", nameOf(calendar)}, {"file", given.file}});
}

} // namespace

void addFileCommands(CommandLine& line)
{
    addCommand<ImportArguments>(
        line, line.app, "import",
        "Write the events of iCalendar files into a calendar, never over existing ones",
        "tessel import Work conference.ics holidays.ics",
        [](CLI::App& app, ImportArguments& arguments) {
            defineCalendar(app, arguments.calendar);
            app.add_option("FILE", arguments.files, "iCalendar files; - for standard input")
                ->required();
        },
        import);
    addCommand<ExportArguments>(
        line, line.app, "export",
        "Write a calendar as it is held, with what waits to be sent, as one iCalendar text",
        "tessel export Work > work.ics",
        [](CLI::App& app, ExportArguments& arguments) {
            defineCalendar(app, arguments.calendar);
            app.add_option("--output", arguments.file, "to this file")->type_name("FILE");
        },
        exportCalendar);
}

} // namespace Tessel::App
