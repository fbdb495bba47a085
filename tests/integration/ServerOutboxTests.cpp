#include "Tessel/Session/Session.h"
#include "tests/integration/ServerTest.h"
#include "tests/support/TemporaryDirectory.h"

#include <spawn.h>
#include <sys/wait.h>

#include <array>
#include <csignal>
#include <map>
#include <random>
#include <thread>

using namespace Tessel;
using namespace Tessel::Test;
using namespace std::chrono_literals;

namespace {

class ServerOutboxTest : public ServerTest {
protected:
    pid_t spawnSender() const
    {
        std::string program = OUTBOX_SENDER;
        std::string address = server().address();
        std::string authority = server().authorityFile();
        auto file = storeFile().string();
        std::array<char*, 5> arguments {
            program.data(), address.data(), authority.data(), file.data(), nullptr};
        pid_t process = -1;
        EXPECT_EQ(
            posix_spawn(&process, program.c_str(), nullptr, nullptr, arguments.data(), environ), 0);
        return process;
    }
    std::filesystem::path storeFile() const { return directory_.path() / "store.db"; }

private:
    TemporaryDirectory directory_;
};

EventText newEvent(const std::string& summary)
{
    return EventText::make({.summary = summary,
                               .start = EventMoment::utc(Date::fromSecondsSince1970(1'700'000'000)),
                               .end = EventMoment::utc(Date::fromSecondsSince1970(1'700'003'600))})
        .value();
}

/// What a calendar holds by summary, and how often.
std::map<std::string, int> summaries(Store& store, const std::string& calendar)
{
    std::map<std::string, int> found;
    EXPECT_TRUE(store.visit(calendar, [&](const Resource& resource) {
        const auto event = EventText::read(resource.text).value();
        ++found[event.main().summary().value_or("") + ", "
            + std::to_string(event.main().alarms().size())];
        return true;
    }));
    return found;
}

} // namespace

/// A process that sends is killed at random moments; the next one goes on.
TEST_P(ServerOutboxTest, NothingIsLostOrDoubledByAKill)
{
    const auto session
        = wait(Session::open({.server = server().address(), .user = "alice"}, Password {"secret"}))
              .value();
    const auto here = wait(session->createCalendar({.displayName = "Here"})).value();
    const auto there = wait(session->createCalendar({.displayName = "There"})).value();
    const auto opened = SQLiteStore::open(
        storeFile(), {.user = "alice", .origin = Origin::ofServer(server().address()).value()});
    ASSERT_TRUE(opened) << opened.reason();
    const auto store = opened.value();
    std::vector<Resource> old;
    for (int i = 0; i < 60; ++i)
        old.push_back(wait(session->create(here, newEvent("old " + std::to_string(i)))).value());
    ASSERT_TRUE(wait(session->sync(store)));

    Outbox outbox(store);
    std::map<std::string, int> expectedHere;
    std::map<std::string, int> expectedThere;
    std::mt19937 random(1);
    int kills = 0;
    for (int i = 0; i < 60; ++i) {
        const auto name = std::to_string(i);
        EXPECT_TRUE(outbox.create(here, newEvent("new " + name)));
        ++expectedHere["new " + name + ", 0"];
        const auto edited
            = outbox.change(old[i], {.summary = "edited " + name, .addedAlarms = {{15min}}});
        ASSERT_TRUE(edited) << edited.reason();
        if (i % 3 == 0) {
            EXPECT_TRUE(outbox.move(edited.value(), there));
            ++expectedThere["edited " + name + ", 1"];
        } else if (i % 3 == 1) {
            EXPECT_TRUE(outbox.remove(edited.value()));
        } else {
            ++expectedHere["edited " + name + ", 1"];
        }
        const auto sender = spawnSender();
        // Nearly all of the runs last longer than this, also in a release.
        std::this_thread::sleep_for(std::chrono::milliseconds(random() % 100));
        kill(sender, SIGKILL);
        int status = 0;
        waitpid(sender, &status, 0);
        if (WIFSIGNALED(status)) ++kills;
    }
    for (int i = 0; i < 120 && !outbox.pending().value().empty(); ++i) {
        int status = 0;
        waitpid(spawnSender(), &status, 0);
        ASSERT_EQ(status, 0);
        std::this_thread::sleep_for(500ms);
    }
    for (const auto& change : outbox.pending().value())
        ADD_FAILURE() << "left: " << change.reason;
    EXPECT_GE(kills, 20);

    MemoryStore fresh;
    ASSERT_TRUE(wait(session->sync(std::shared_ptr<Store>(&fresh, [](Store*) {}))));
    EXPECT_EQ(summaries(fresh, here), expectedHere);
    EXPECT_EQ(summaries(fresh, there), expectedThere);
    EXPECT_EQ(store->tags(here).value(), fresh.tags(here).value());
    EXPECT_EQ(store->tags(there).value(), fresh.tags(there).value());
}

TESSEL_ON_SERVERS(ServerOutboxTest, "radicale");
