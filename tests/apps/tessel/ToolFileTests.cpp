#include "tests/apps/tessel/ToolWorld.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

using namespace Tessel;
using namespace Tessel::Test;
using Reply = FakeCalendarServer::Reply;

namespace {

constexpr const char* start = "DTSTART:20270301T100000Z\r\n";

/// A file of three events: one, two, three.
std::string threeEvents(const ToolWorld& world)
{
    const auto path = world.folder() + "/three.ics";
    std::ofstream file(path);
    file << "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//a//b//EN\r\n";
    for (const auto* uid : {"one", "two", "three"})
        file << "BEGIN:VEVENT\r\nUID:" << uid << "\r\nDTSTAMP:20240101T000000Z\r\n"
             << start << "SUMMARY:" << uid << "\r\nEND:VEVENT\r\n";
    file << "END:VCALENDAR\r\n";
    return path;
}

std::string contentOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace

TEST(ToolFiles, BringsACalendarThatIsNewerThanTheLastSync)
{
    for (const auto& command : {Words {"export", "/home/c/"}, {"events", "/home/c/"},
             {"agenda", "/home/c/", "--from", "2027-03-01", "--to", "2027-03-01"}}) {
        const ToolWorld world;
        EXPECT_EQ(world.run({"sync"}).status, 0);
        world.server->addCalendar("/home/c/");
        world.server->put(
            "/home/c/one.ics", eventWith("one", start + std::string("SUMMARY:Fresh\r\n")));
        const auto run = world.run(command);
        EXPECT_EQ(run.status, 0) << run.all();
        EXPECT_TRUE(has(run.out, "Fresh")) << run.all();
    }
    // Nor does it take one that could not be brought for empty.
    const ToolWorld broken;
    broken.server->put("/home/a/one.ics", eventWith("one", start));
    broken.server->setFault([](const URLRequest& request, const auto&) {
        return has(request.url(), "/home/a/") ? std::optional(Reply {.status = 500}) : std::nullopt;
    });
    EXPECT_EQ(broken.run({"sync"}).status, 5);
    EXPECT_EQ(broken.run({"export", "a"}).status, 5);
    broken.server->setFault({});
    const auto mended = broken.run({"export", "a"});
    EXPECT_TRUE(mended.status == 0 && has(mended.out, "UID:one")) << mended.all();

    // Neither is what is written there all that it holds.
    const ToolWorld world;
    EXPECT_EQ(world.run({"sync"}).status, 0);
    world.server->addCalendar("/home/c/");
    world.server->put(
        "/home/c/one.ics", eventWith("one", start + std::string("SUMMARY:Fresh\r\n")));
    const auto made
        = world.run({"event", "create", "/home/c/", "--summary", "Own", "--start", "2027-03-02"});
    EXPECT_EQ(made.status, 0) << made.all();
    const auto all = world.run({"events", "/home/c/"}).out;
    EXPECT_TRUE(has(all, "Own") && has(all, "Fresh")) << all;
}

TEST(ToolFiles, KnowsAtOnceTheCalendarsThatItHasMadeOrRenamed)
{
    for (const bool isSynced : {true, false}) {
        const ToolWorld world;
        world.server->put(
            "/home/a/one.ics", eventWith("one", start + std::string("SUMMARY:Old\r\n")));
        if (isSynced) {
            EXPECT_EQ(world.run({"sync"}).status, 0);
        }
        const auto newEvent = [&](const std::string& calendar) {
            return world.run({"--offline", "event", "create", calendar, "--summary", "S", "--start",
                "2027-03-02"});
        };
        const auto make = [&](const std::string& name) {
            const auto made = world.run({"--json", "calendars", "create", "Made"}).out;
            const auto at = made.find("\"href\":\"") + 8;
            const auto place = made.substr(at, made.rfind('"') - at);
            EXPECT_EQ(newEvent(place).status, 0) << made;
            EXPECT_EQ(world.run({"calendars", "set", place, "--name", name}).status, 0);
        };
        make("New one");
        EXPECT_EQ(newEvent("New one").status, 0);
        // What it has made is not all that there is.
        expectParts(world.run({"events"}).out, {"Old", "S (waits"});
        EXPECT_EQ(world.run({"pending", "send"}).status, 0);

        make("New one");
        const auto which = newEvent("New one");
        EXPECT_EQ(which.status, 2) << which.all();
        expectParts(which.err, {"several calendars New one"});
    }
}

TEST(ToolFiles, ImportsInTheQueueWhereNobodyAnswers)
{
    for (const bool listens : {true, false}) {
        ToolWorld world;
        const auto file = threeEvents(world);
        EXPECT_EQ(world.run({"sync"}).status, 0);
        world.environment["TESSEL_PASSWORD"] = "";
        world.server->setFault([](const auto&, const auto&) { return std::optional(Reply {}); });
        const auto before = world.server->asked("PROPFIND");
        if (!listens) world.close();
        const auto run = world.runInTerminal(
            {"--timeout", "1", "import", "a", file}, "Password of alice", "top secret");
        EXPECT_EQ(run.status, 0) << run.out;
        EXPECT_EQ(count(run.out, "Password of alice"), 1U) << run.out;
        EXPECT_EQ(count(run.out, "tessel: The server could not be reached: "), 1U) << run.out;
        EXPECT_EQ(world.server->asked("PROPFIND") - before, listens ? 1U : 0U);
        EXPECT_TRUE(has(run.out, "imported 3 events")) << run.out;
        EXPECT_TRUE(has(run.out, "; all of them wait")) << run.out;
        EXPECT_EQ(count(world.run({"pending"}).out, "waits to be sent"), 3U);
    }
}

TEST(ToolFiles, StopsAnImportThatAServerWantsNoMoreOf)
{
    for (const auto& [answer, command] : {std::pair(Reply {.status = 503}, Words {"import"}),
             {Reply {}, {"--timeout", "1", "import"}}}) {
        const ToolWorld world;
        const auto file = threeEvents(world);
        std::ofstream(world.folder() + "/more.ics") << eventWith("more", start);
        EXPECT_EQ(world.run({"sync"}).status, 0);
        world.server->setFault([&world, reply = answer](const URLRequest& request, const auto&) {
            const bool isLater = world.server->asked("PUT") > 1;
            const bool concernsEvent = request.url().ends_with(".ics");
            return isLater && concernsEvent ? std::optional(reply) : std::nullopt;
        });
        auto words = command;
        words.insert(words.end(), {"a", file, world.folder() + "/more.ics"});
        const auto run = world.run(words);
        EXPECT_EQ(run.status, 5) << run.all();
        EXPECT_EQ(world.server->asked("PUT"), 2U) << run.all();
        for (const auto* part : {"imported 1 event into", "three.ics: two: ",
                 "three.ics: The rest of it was not tried: 1 event.", "more.ics: It was not tried"})
            EXPECT_TRUE(has(run.all(), part)) << part << " in:\n" << run.all();

        // While nothing is done at all, it has failed as its first event has.
        EXPECT_EQ(world.run(words).status, answer.status ? 1 : 3);
    }
}

TEST(ToolFiles, NamesAFolderAndGoesOn)
{
    const ToolWorld world;
    const auto run = world.run({"import", "a", world.folder(), threeEvents(world)});
    EXPECT_EQ(run.status, 5);
    EXPECT_TRUE(has(run.err, world.folder() + ": It cannot be read: Is a directory.")) << run.err;
    EXPECT_TRUE(has(run.out, "imported 3 events")) << run.all();
    EXPECT_EQ(world.run({"export", "a", "--output", world.folder()}).status, 4);

    // What is there stays, and where only files have failed, that says the status.
    const auto again = world.run({"import", "a", threeEvents(world)});
    expectParts(again.err, {": one: It is already there.\n", "!meanwhile"});
    EXPECT_EQ(again.status, 5);
    const auto unread = world.run({"import", "a", world.folder() + "/no.ics", world.folder()});
    EXPECT_EQ(unread.status, 4);
    expectParts(unread.all(), {"/no.ics: It cannot be read", ": Is a directory", "!imported"});
}

TEST(ToolFiles, ReplacesAnExportWholeOrNotAtAll)
{
    const ToolWorld world;
    world.server->put("/home/a/one.ics", eventWith("one", start));
    const auto file = world.folder() + "/a.ics";
    const auto link = world.folder() + "/link.ics";
    std::ofstream(file) << "an older one";
    ::chmod(file.c_str(), 0640);
    std::filesystem::create_symlink("a.ics", link);
    EXPECT_EQ(world.run({"export", "a", "--output", link}).status, 0);
    EXPECT_TRUE(has(contentOf(file), "UID:one"));
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_EQ(std::filesystem::status(file).permissions(), std::filesystem::perms {0640});

    // What cannot be read leaves the last one, and nothing beside it.
    const auto written = contentOf(file);
    SQLite::Database(world.accountFile(".sqlite"), SQLite::OPEN_READWRITE).exec("DROP TABLE texts");
    const auto files
        = [&] { return std::distance(std::filesystem::directory_iterator(world.folder()), {}); };
    const auto before = files();
    EXPECT_EQ(world.run({"export", "a", "--output", file}).status, 4);
    EXPECT_EQ(contentOf(file), written);
    EXPECT_EQ(files(), before);

    const auto device = world.run({"export", "a", "--output", "/dev/full"});
    EXPECT_EQ(device.status, 4);
}

TEST(ToolFiles, ExportsIntoAPipeByItsName)
{
    const ToolWorld world;
    world.server->put("/home/a/one.ics", eventWith("one", start));
    EXPECT_EQ(world.run({"sync"}).status, 0);
    const auto run = world.run({"export", "a", "--output", "/dev/stdout"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, world.run({"export", "a"}).out);
}

TEST(ToolFiles, SaysThatTheServerHasDoneWhatCannotBeHeld)
{
    const ToolWorld world;
    EXPECT_EQ(world.run({"sync"}).status, 0);
    SQLite::Database(world.accountFile(".sqlite"), SQLite::OPEN_READWRITE)
        .exec(
            "CREATE TRIGGER full BEFORE INSERT ON resources BEGIN SELECT RAISE(FAIL, 'full'); END");
    const auto run
        = world.run({"event", "create", "a", "--summary", "Once", "--start", "2027-03-01T10:00"});
    EXPECT_EQ(run.status, 5);
    EXPECT_EQ(world.server->asked("PUT"), 1U);
    expectParts(
        run.all(), {"created Once", "The server has made the change; do not make it again"});
}

TEST(ToolFiles, ExportsWhatWaitsToo)
{
    const ToolWorld world;
    const auto one = eventWith("one", start + std::string("SUMMARY:Before\r\n"));
    world.server->put("/home/a/one.ics", one);
    EXPECT_EQ(world.run({"sync"}).status, 0);
    for (const auto& command : {Words {"edit", "Before", "--summary", "After"},
             {"create", "a", "--summary", "New", "--start", "2027-03-02"},
             {"create", "b", "--summary", "Other", "--start", "2027-03-02"}}) {
        Words words {"--offline", "event"};
        words.insert(words.end(), command.begin(), command.end());
        EXPECT_EQ(world.run(words).status, 0);
    }
    const auto run = world.run({"export", "a"});
    EXPECT_EQ(run.status, 0) << run.all();
    EXPECT_TRUE(has(run.out, "SUMMARY:After") && has(run.out, "SUMMARY:New")) << run.out;
    EXPECT_FALSE(has(run.out, "Before") || has(run.out, "Other")) << run.out;
    EXPECT_TRUE(has(run.err, "2 events")) << run.err;
}

TEST(ToolFiles, KeepsWhatHasFailedOutOfTheResultsWithJSON)
{
    const ToolWorld world;
    world.server->put("/home/a/bad.ics", "BEGIN:VCALENDAR\r\nBEGIN:VEVENT\r\nUID:torn\r\n");
    const auto run = world.run({"--json", "export", "a"});
    EXPECT_EQ(run.status, 5);
    EXPECT_TRUE(has(run.err, "{\"failed\":\"/home/a/bad.ics\"")) << run.err;
    EXPECT_FALSE(has(run.out, "failed")) << run.out;
}
