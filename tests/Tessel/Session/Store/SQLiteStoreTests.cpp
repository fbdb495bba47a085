#include "tests/Tessel/Session/Store/StoreSnapshot.h"
#include "tests/support/ChildProcess.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <fstream>
#include <functional>
#include <random>
#include <sstream>
#include <sys/resource.h>
#include <sys/stat.h>

using namespace Tessel;
using namespace Tessel::Test;
namespace fs = std::filesystem;

namespace {

constexpr auto home = "/home/work/";

std::string bytesOf(const fs::path& file)
{
    if (!fs::is_regular_file(file)) return {};
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

void execute(const fs::path& file, const std::string& sql)
{
    SQLite::Database(file, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE).exec(sql);
}

unsigned modeOf(const fs::path& path)
{
    struct stat status { };
    return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 0777U : 0;
}

Batch bigBatch(int number)
{
    Batch batch {.calendar = home, .mark = SyncMark {"", std::to_string(number)}};
    for (int i = 0; i < 20; ++i)
        batch.upserts.push_back({std::to_string(i), std::to_string(number),
            std::string(2000, char('a' + number % 26))});
    return batch;
}

/// Each batch replaces what the one before it brought and its change of the outbox; every other
/// one sets a mark.
Batch generation(int number)
{
    const auto name = std::to_string(number);
    Batch batch {.calendar = home, .pending = {{.id = name}}};
    for (int i = 0; i < 5; ++i) {
        batch.upserts.push_back({std::to_string(i) + "/" + name, name, std::string(500, 'x')});
        if (number > 0)
            batch.removed.push_back(std::to_string(i) + "/" + std::to_string(number - 1));
    }
    if (number > 0) batch.settled = {{std::to_string(number - 1), 1}};
    if (number % 2 == 0) batch.mark = SyncMark {"", name};
    return batch;
}

/// The generation that a store is in; fails where it is between two.
int checkedGeneration(Store& store)
{
    const auto tags = store.tags(home).value();
    if (tags.empty()) {
        EXPECT_TRUE(store.pending().value().empty());
        return -1;
    }
    EXPECT_EQ(tags.size(), 5U);
    for (const auto& tag : tags)
        EXPECT_EQ(tag.tag, tags[0].tag);
    const int number = std::stoi(tags[0].tag);
    const auto pending = store.pending().value();
    EXPECT_TRUE(pending.size() == 1 && pending[0].id == tags[0].tag);
    EXPECT_EQ(store.calendars().value()[0].mark.syncToken, std::to_string(number - number % 2));
    return number;
}

} // namespace

TEST(SQLiteStore, IsForItsUserAloneAndServesSeveralAccounts)
{
    const TemporaryDirectory directory;
    const auto file = directory.path() / "new" / "folder" / "store";
    const auto old = ::umask(0);
    const auto alice = openStore(file);
    const auto bob = openStore(file, "bob");
    ::umask(old);
    ASSERT_TRUE(alice && bob);
    ASSERT_TRUE(alice->put({.href = home}));
    ASSERT_TRUE(alice->apply({.calendar = home, .upserts = {{"a", "1", "x"}}, .pending = {{"p"}}}));
    EXPECT_EQ(modeOf(file), 0600U);
    EXPECT_EQ(modeOf(file.string() + "-wal"), 0600U);
    EXPECT_EQ(modeOf(file.parent_path()), 0700U);
    EXPECT_EQ(modeOf(file.parent_path().parent_path()), 0700U);

    EXPECT_EQ(snapshotOf(*bob), "");
    ASSERT_TRUE(bob->put({.href = home}));
    ASSERT_TRUE(bob->apply({.pending = {{"p"}}})) << "ids are unique in their account";
    ASSERT_TRUE(bob->removeCalendar(home));
    EXPECT_EQ(alice->resource(home, "a").value(), (Resource {"a", "1", "x"}));
    EXPECT_EQ(snapshotOf(*openStore(file)), snapshotOf(*alice));
}

TEST(SQLiteStore, LeavesFilesThatAreNotItsOwnAsTheyAre)
{
    const struct {
        const char* name;
        std::function<void(const fs::path&)> make;
        const char* reason;
    } cases[] {
        {"a text", [](const auto& file) { std::ofstream(file) << std::string(5000, 'x'); },
            "is no SQLite file"},
        {"a short text", [](const auto& file) { std::ofstream(file) << "x"; }, "is no SQLite file"},
        {"another program's",
            [](const auto& file) {
                execute(file, "CREATE TABLE event (id); PRAGMA user_version = 1");
            },
            "belongs to another program"},
        {"another program's with a log",
            [](const auto& file) {
                execute(file, "PRAGMA journal_mode = WAL; CREATE TABLE t (id)");
            },
            "belongs to another program"},
        {"a numbered program's",
            [](const auto& file) {
                execute(file, "PRAGMA application_id = 7; CREATE TABLE t (id)");
            },
            "belongs to another program"},
        {"a newer version's",
            [](const auto& file) {
                ASSERT_TRUE(openStore(file));
                execute(file, "PRAGMA user_version = 3");
            },
            "written by a newer version"},
        {"a folder", [](const auto& file) { fs::create_directory(file); }, "cannot be opened"},
        {"below a file", [](const auto& file) { std::ofstream(file.parent_path()) << "x"; },
            "cannot be opened"},
    };
    for (const auto& [name, make, reason] : cases) {
        const TemporaryDirectory directory;
        const auto file
            = directory.path() / (name == std::string("below a file") ? "parent/store" : "store");
        make(file);
        const auto before = bytesOf(file);
        const auto opened
            = SQLiteStore::open(file, {.user = "a", .origin = *Origin::ofServer("example.com")});
        ASSERT_FALSE(opened) << name;
        EXPECT_EQ(opened.failure().kind, FailureKind::storage);
        EXPECT_NE(opened.reason().find(reason), std::string::npos) << name << opened.reason();
        EXPECT_EQ(bytesOf(file), before) << name;
    }
}

TEST(SQLiteStore, SaysThatItCannotWrite)
{
    const TemporaryDirectory directory;
    const auto file = directory.path() / "store";
    openStore(file).reset();
    fs::permissions(directory.path(), fs::perms(0755));
    fs::permissions(file, fs::perms(0444));
    // Root may write everything.
    ChildProcess reader([&] {
        if (::getuid() == 0 && (::setgid(65534) != 0 || ::setuid(65534) != 0)) return 2;
        const auto opened = SQLiteStore::open(
            file, {.user = "alice", .origin = *Origin::ofServer("example.com")});
        return !opened && opened.reason().find("cannot be written") != std::string::npos ? 0 : 1;
    });
    EXPECT_EQ(reader.wait(), 0);
}

TEST(SQLiteStore, IsAsItWasWhenTheDiskIsFullAndGoesOnWhenThereIsRoom)
{
    const TemporaryDirectory directory;
    ChildProcess writer([&] {
        ::signal(SIGXFSZ, SIG_IGN);
        const auto store = openStore(directory.path() / "store");
        if (!store->put({.href = home}) || !store->apply(bigBatch(0))) return 2;
        rlimit limit {};
        ::getrlimit(RLIMIT_FSIZE, &limit);
        const auto none = std::exchange(limit.rlim_cur, 300'000);
        ::setrlimit(RLIMIT_FSIZE, &limit);
        int number = 1;
        auto outcome = store->apply(bigBatch(number));
        for (; outcome && number < 1000; ++number)
            outcome = store->apply(bigBatch(number + 1));
        if (outcome || outcome.failure().kind != FailureKind::storage) return 3;
        const auto tags = store->tags(home).value();
        const auto mark = store->calendars().value()[0].mark.syncToken;
        for (const auto& tag : tags)
            if (tag.tag != mark || mark != std::to_string(number - 1)) return 4;
        limit.rlim_cur = none;
        ::setrlimit(RLIMIT_FSIZE, &limit);
        return store->apply(bigBatch(number)) && store->tags(home).value().size() == 20 ? 0 : 5;
    });
    EXPECT_EQ(writer.wait(), 0);
}

TEST(SQLiteStore, ServesTwoProcessesAtOnce)
{
    for (int round = 0; round < 10; ++round) {
        const TemporaryDirectory directory;
        const auto file = directory.path() / "store";
        const auto work = [&](const std::string& name) {
            const auto store = openStore(file); // both make it
            if (!store || !store->put({.href = home})) return 1;
            if (name == "a" && !store->apply({.pending = {{.id = "counter"}}})) return 2;
            for (int i = 0; i < 20; ++i) {
                if (!store->apply(
                        {.calendar = home, .upserts = {{name + std::to_string(i), "", ""}}}))
                    return 3;
                for (bool isCounted = false; !isCounted;) {
                    auto pending = store->pending().value();
                    if (pending.empty()) continue;
                    ++pending[0].attempts;
                    isCounted = bool(store->apply({.pending = std::move(pending)}));
                }
            }
            return 0;
        };
        ChildProcess first([&] { return work("a"); });
        ChildProcess second([&] { return work("b"); });
        EXPECT_EQ(first.wait(), 0);
        EXPECT_EQ(second.wait(), 0);
        const auto store = openStore(file);
        EXPECT_EQ(store->tags(home).value().size(), 40U);
        EXPECT_EQ(store->pending().value()[0].attempts, 40);
    }
}

TEST(SQLiteStore, IsConsistentHoweverOftenItsProcessIsKilled)
{
    const TemporaryDirectory directory;
    const auto file = directory.path() / "store";
    std::mt19937 random(7);
    int reached = -1;
    int grown = 0;
    double longest = 15'000; // follows what a step takes on this machine
    for (int kill = 0; kill < 200; ++kill) {
        ChildProcess writer([&] {
            const auto store = openStore(file);
            if (!store || !store->put({.href = home})) return 1;
            for (int number = checkedGeneration(*store) + 1;; ++number)
                if (!store->apply(generation(number))) return 2;
        });
        writer.killAfter(std::chrono::microseconds(random() % int(longest)));
        const auto store = openStore(file);
        ASSERT_TRUE(store);
        const bool isNew = store->calendars().value().empty();
        const int number = isNew ? reached : checkedGeneration(*store);
        ASSERT_FALSE(HasFailure()) << "after kill " << kill;
        ASSERT_GE(number, reached) << "a step that was there is gone";
        grown += number > reached;
        longest *= number > reached ? 0.95 : 1.1;
        reached = number;
    }
    EXPECT_GT(grown, 50) << "the kills came before anything was done";
}

TEST(SQLiteStore, TakesOverTheStoreOfTheCommandLineHost)
{
    const TemporaryDirectory directory;
    const auto file = directory.path() / "store";
    execute(file, bytesOf(fs::path(TESSEL_TEST_DATA) / "predecessor.sql"));
    const auto store = openStore(file, "alice@example.com");
    ASSERT_TRUE(store);
    EXPECT_EQ(store->calendars().value(),
        (std::vector<StoredCalendar> {{.href = "/c/work/",
                                          .displayName = "Work",
                                          .color = "#00FF00",
                                          .order = "1",
                                          .components = {"VEVENT", "VTODO"}},
            {.href = "/c/empty/", .displayName = "Empty", .description = "none"}}))
        << "without marks, which were set where texts were missing";
    EXPECT_EQ(store->tags("/c/work/").value(),
        (std::vector<HeldTag> {{"/c/work/1.ics", "\"1\""}, {"/c/work/2.ics", "\"2\""}}));
    std::vector<std::string> hrefs;
    ASSERT_TRUE(store->visit("/c/work/", 1'704'099'600'000, 1'704'186'000'000,
        [&](const Resource& resource) { return hrefs.push_back(resource.href), true; }));
    EXPECT_EQ(hrefs, std::vector<std::string> {"/c/work/1.ics"}) << "they are found by their days";
    EXPECT_EQ(openStore(file, "bob")->calendars().value().size(), 1U);
    EXPECT_EQ(SQLite::Database(file).execAndGet("SELECT count(*) FROM notification").getInt(), 1)
        << "what no store of a session holds stays";
}
