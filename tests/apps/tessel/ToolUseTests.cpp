#include "tests/apps/tessel/ToolWorld.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <csignal>
#include <filesystem>
#include <fstream>

using namespace Tessel;
using namespace Tessel::Test;

namespace {

mode_t modeOf(const std::string& path)
{
    struct stat status { };
    return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 0777 : 0;
}

/// C1, bidirectional controls, separators of lines: none of them is well in a terminal.
const std::string hostile = "a\xc2\x9b"
                            "b\xe2\x80\xae"
                            "c\xe2\x80\xa8"
                            "d\xe2\x81\xa6"
                            "e\x7f";

constexpr struct {
    const char* typed;
    const char* fits; ///< "files" where none of the tool's words does
} completions[] {
    {"invitations ac", "accept"},
    {"--json event show Lunch --inst", "--instance"},
    {"import Work ma", "files"},
    {"export Work --output ma", "files"},
};

} // namespace

TEST(Tool, KnowsAnAccountHoweverItsServerIsSpelled)
{
    const ToolWorld world(false);
    const auto host = world.address().substr(world.address().find("://") + 3);
    for (const auto& server :
        {"http://" + host, "http://" + host + "/", "HTTP://" + host + "/home/"}) {
        const auto run
            = world.run({"account", "add", "--insecure", "--server", server, "--user", "alice"});
        EXPECT_EQ(run.status, 0) << run.all();
    }
    EXPECT_EQ(world.run({"--json", "account", "list"}).out,
        "{\"account\":\"alice@" + host + "\",\"user\":\"alice\",\"server\":\"HTTP://" + host
            + "/home/\",\"origin\":\"http://" + host + "\",\"number\":1}\n");
    EXPECT_EQ(modeOf(world.folder() + "/config/tessel/accounts.json"), mode_t {0600});
    EXPECT_EQ(modeOf(world.folder() + "/config/tessel"), mode_t {0700});
    EXPECT_EQ(world.run({"account", "test"}).status, 0);
    EXPECT_EQ(world.run({"sync"}).status, 0);
    EXPECT_EQ(modeOf(world.accountFile(".sqlite")), mode_t {0600});
    EXPECT_EQ(world.run({"account", "remove", "1"}).status, 0);
    EXPECT_EQ(world.run({"calendars"}).status, 2);
}

TEST(Tool, SaysWhatCannotBeMeant)
{
    const ToolWorld world;
    const struct {
        Words command;
        std::string says;
    } cases[] {
        {{}, "--help"},
        {{"event"}, "--help"},
        {{"sync", "a", "events"}, "events"},
        {{"bogus"}, "bogus"},
        {{"calendars", "create"}, "NAME"},
        {{"--timeout", "soon", "sync"}, "--timeout"},
        {{"--trace=all", "sync"}, "all"},
        {{"--account", "carol", "sync"}, "no account carol"},
        {{"account", "add", "--server", "localhost"}, "--user"},
        {{"account", "add", "--server", "http://localhost:1", "--user", "u"}, "--insecure"},
        {{"account", "add", "--server", "HTTP://localhost:1", "--user", "u"}, "--insecure"},
        {{"calendars", "set", "a"}, "Nothing to change"},
        {{"calendars", "create", "C", "--color", "red"}, "red"},
        {{"agenda", "--from", "2027-02-30"}, "2027-02-30"},
        {{"agenda", "--from", "2027-02-03", "--to", "2027-02-01"}, "--to"},
        {{"agenda", "--from", "1000-01-01", "--to", "3000-01-01"}, "ten years"},
        {{"event", "create", "a", "--summary", "S"}, "--start"},
        {{"event", "create", "a", "--start", "noon"}, "noon"},
        {{"event", "create", "a", "--start", "2027-01-01T10:00", "--zone", "Moon/Base"}, "Moon"},
        {{"event", "create", "a", "--start", "2027-01-01", "--duration", "-1h"}, "-1h"},
        {{"event", "create", "a", "--start", "2027-01-02", "--end", "2026-01-01"}, "end"},
        {{"event", "create", "a", "--start", "2027-01-02", "--repeat", "often"}, "OFTEN"},
        {{"unshare", "a"}, "--all"},
        {{"--offline", "doctor"}, "--offline"},
    };
    for (const auto& [command, says] : cases) {
        const auto run = world.run(command);
        EXPECT_EQ(run.status, 2) << testing::PrintToString(command) << run.all();
        EXPECT_TRUE(has(run.err, says)) << testing::PrintToString(command) << run.err;
    }
}

TEST(Tool, EndsWith3And4WhereNobodyAnswersOrAFileIsBroken)
{
    ToolWorld world;
    EXPECT_EQ(
        world.run({"account", "add", "--insecure", "--server", "http://127.0.0.1:1", "--user", "u"})
            .status,
        3);
    auto other = world.environment;
    std::ofstream(world.folder() + "/file") << "no folder";
    world.environment["XDG_DATA_HOME"] = world.folder() + "/file";
    EXPECT_EQ(world.run({"sync"}).status, 4);
    world.environment = other;
    std::ofstream(world.folder() + "/config/tessel/accounts.json")
        << R"({"accounts":[{"server":"x","user":"a","origin":"a"}]})";
    const auto run = world.run({"sync"});
    EXPECT_EQ(run.status, 4);
    EXPECT_TRUE(has(run.err, "accounts.json")) << run.err;
    std::filesystem::remove(world.folder() + "/config/tessel/accounts.json");
    std::filesystem::create_directory(world.folder() + "/config/tessel/accounts.json");
    EXPECT_EQ(world.run({"sync"}).status, 4);
}

TEST(Tool, LetsNoServersTextSteerATerminal)
{
    const ToolWorld world;
    world.server->put(
        "/home/a/x.ics", eventWith("x", "DTSTART:20270301T100000Z\r\nSUMMARY:" + hostile + "\r\n"));
    const auto safe = "a\\u{9b}b\\u{202e}c\\u{2028}d\\u{2066}e\\u{7f}";
    for (const auto& command : {Words {"sync"}, {"events"}, {"agenda", "--from", "2027-03-01"},
             {"event", "show", "x"}, {"calendars", "set", "b", "--name", hostile}, {"calendars"}}) {
        const auto run = world.run(command);
        EXPECT_EQ(run.status, 0) << run.all();
        EXPECT_TRUE(has(run.out, safe)) << run.out;
    }
    const auto failed = world.runInTerminal({"event", "show", hostile + "?"});
    EXPECT_EQ(failed.status, 1);
    EXPECT_TRUE(has(failed.out, std::string("no event ") + safe)) << failed.out;
    EXPECT_TRUE(
        has(world.run({"--json", "events"}).out, "a\\u009bb\\u202ec\\u2028d\\u2066e\\u007f"));
    // Into a file the text goes as it is, on a terminal it is shown.
    EXPECT_TRUE(has(world.run({"export", "a"}).out, hostile));
    EXPECT_TRUE(has(world.runInTerminal({"export", "a"}).out, safe));
}

TEST(Tool, AsksForAPasswordThatNobodySees)
{
    ToolWorld world(false);
    world.environment["TESSEL_PASSWORD"] = "";
    const Words add {
        "account", "add", "--insecure", "--server", world.address(), "--user", "alice"};
    const auto without = world.run(add);
    EXPECT_EQ(without.status, 2);
    EXPECT_TRUE(has(without.err, "TESSEL_PASSWORD")) << without.err;
    // Nor is anybody asked for one that would not be sent.
    const auto refused = world.runInTerminal(
        {"account", "add", "--server", world.address(), "--user", "alice"}, "Password", "sesame");
    EXPECT_EQ(refused.status, 2);
    expectParts(refused.out, {"Give https, or --insecure", "!Password"});
    const auto run = world.runInTerminal(add, "Password of alice", "open sesame");
    EXPECT_EQ(run.status, 0) << run.out;
    EXPECT_FALSE(has(run.out, "sesame")) << run.out;
    EXPECT_TRUE(has(run.out, "added alice@")) << run.out;
}

TEST(Tool, TracesExchangesWithoutTheCredential)
{
    const ToolWorld world;
    const std::string basic = "YWxpY2U6dG9wIHNlY3JldA==";
    world.server->setFault([&](const URLRequest& request, const auto&) {
        // A server in trouble shows what it was sent.
        const auto said = request.headers.value("Authorization").value_or("") + " top secret";
        return request.method == "OPTIONS"
            ? std::optional(FakeCalendarServer::Reply {.status = 200, .body = "I got " + said})
            : std::nullopt;
    });
    const auto run = world.run({"--trace=body", "calendars"});
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(has(run.err, "[1] PROPFIND http://")) << run.err;
    EXPECT_TRUE(has(run.err, ": 207, ")) << run.err;
    EXPECT_TRUE(has(run.err, "I got Basic *** ***")) << run.err;
    EXPECT_FALSE(has(run.err, basic) || has(run.err, "top secret")) << run.err;
    EXPECT_FALSE(has(world.run({"--trace", "calendars"}).err, "multistatus"));
}

TEST(Tool, EndsSoonWhenItIsInterrupted)
{
    for (const auto number : {SIGINT, SIGTERM}) {
        const ToolWorld world;
        world.server->setFault([](const URLRequest& request, const auto&) {
            return request.method == "REPORT" ? std::optional(FakeCalendarServer::Reply {})
                                              : std::nullopt;
        });
        world.server->put("/home/a/x.ics", eventWith("x", "DTSTART:20270301T100000Z\r\n"));
        std::chrono::milliseconds lived {};
        const auto run = world.interrupt({"sync"}, number, lived);
        EXPECT_EQ(run.status, 128 + number) << run.all();
        EXPECT_LT(lived.count(), 1500);
    }
}

TEST(Tool, SaysWhatAnInterruptedWriteMayHaveDone)
{
    const ToolWorld world;
    EXPECT_EQ(world.run({"sync"}).status, 0);
    world.server->setFault([](const URLRequest& request, const auto&) {
        return request.method == "PUT" ? std::optional(FakeCalendarServer::Reply {}) : std::nullopt;
    });
    std::chrono::milliseconds lived {};
    const auto run = world.interrupt(
        {"event", "create", "a", "--summary", "S", "--start", "2027-03-01"}, SIGINT, lived);
    EXPECT_EQ(run.status, 128 + SIGINT);
    EXPECT_TRUE(has(run.err, "may have done")) << run.err;
}

TEST(Tool, TakesItsProgressAway)
{
    ToolWorld world;
    const std::string progress = "calendar 1 of 2: ";
    const std::string away = "\r\x1b[K";
    for (int i = 0; i < 30; ++i)
        world.server->put("/home/a/" + std::to_string(i) + ".ics",
            eventWith(std::to_string(i), "DTSTART:20270301T100000Z\r\n"));
    const auto synced = world.runInTerminal({"sync"});
    EXPECT_EQ(synced.status, 0);
    EXPECT_TRUE(has(synced.out, away + progress)) << synced.out;
    EXPECT_FALSE(has(synced.out.substr(synced.out.rfind(away)), progress)) << synced.out;

    // A line that were wider than the terminal would stay.
    const auto file = world.folder() + "/" + std::string(60, 'n') + ".ics";
    std::ofstream(file) << eventWith("new", "DTSTART:20270301T100000Z\r\n");
    const auto run = world.runInTerminal({"import", "b", file});
    const auto at = run.out.find(away + world.folder());
    ASSERT_NE(at, run.out.npos) << run.out;
    const auto line = run.out.substr(at + away.size());
    EXPECT_LT(line.find(away), 60U) << run.out;

    world.environment["TERM"] = "dumb";
    EXPECT_FALSE(has(world.runInTerminal({"sync"}).out, "\x1b"));
    std::filesystem::remove(world.accountFile(".sqlite"));
    EXPECT_FALSE(has(world.runInTerminal({"sync"}).out, "\x1b"));
}

TEST(Tool, HelpsWithEveryCommand)
{
    const ToolWorld world(false);
    const Words commands {"account add", "account list", "account remove", "account test",
        "calendars list", "calendars create", "calendars set", "calendars delete", "sync", "agenda",
        "events", "event show", "event create", "event edit", "event move", "event delete",
        "import", "export", "share", "unshare", "sharees", "invitations list", "invitations accept",
        "invitations decline", "invitations dismiss", "pending list", "pending show",
        "pending send", "pending drop", "pending keep", "doctor"};
    std::ifstream page(TESSEL_PAGES "/tessel.1");
    const std::string manual((std::istreambuf_iterator<char>(page)), {});
    for (const auto& command : commands) {
        Words words;
        std::istringstream stream(command);
        for (std::string word; stream >> word;)
            words.push_back(word);
        words.push_back("--help");
        const auto run = world.run(words);
        EXPECT_EQ(run.status, 0);
        expectParts(run.out, {"Example:\n  tessel ", "!REQUIRED", "!:{"});
        EXPECT_TRUE(has(manual, ".SS \"tessel " + command)) << command;
    }
    expectParts(manual, {"\\-\\-timeout SECONDS\n", "!:INT"});
    expectParts(world.run({"--help"}).out, {"--timeout SECONDS ", "1 to 86400", "!:INT"});
    EXPECT_TRUE(has(world.run({"--version"}).out, "tessel "));
}

TEST(Tool, CompletesInBash)
{
    for (const auto& [typed, fits] : completions) {
        const auto complete
            = std::string("bash -c 'COMP_WORDS=(tessel \"$@\"); COMP_CWORD=$#; . " TESSEL_PAGES
                          "/tessel.bash; _tessel; test \"${COMPREPLY[*]-files}\" = ")
            + fits + "' - " + typed;
        EXPECT_EQ(std::system(complete.c_str()), 0) << typed;
    }
}

TEST(Tool, CompletesInZsh)
{
    if (std::system("command -v zsh >/dev/null") != 0) GTEST_SKIP() << "there is no zsh";
    const TemporaryDirectory folder;
    std::ofstream(folder.path() / "many.ics") << "";
    std::vector<std::pair<std::string, std::string>> cases {
        {"pending ", "drop  -- Give a change up;"},
        {"event create Work --sta", "--start   -- a date for all day, or date and time: 2027-"},
        {"--off", "{tessel --offline }"},
    };
    for (const auto& [typed, fits] : completions) {
        const std::string before = typed;
        const std::string word = fits == std::string("files") ? "many.ics" : fits;
        cases.emplace_back(
            before, "{tessel " + before.substr(0, before.rfind(' ') + 1) + word + " }");
    }
    for (const auto& [typed, shown] : cases) {
        const auto complete = "cd " + folder.path().string() + " && timeout 60 zsh -f "
            + TESSEL_TEST_DATA "/complete-in-zsh " TESSEL_PAGES " 'tessel " + typed + "' '" + shown
            + "' >/dev/null";
        EXPECT_EQ(std::system(complete.c_str()), 0) << typed;
    }
}

TEST(Tool, LetsTheDesktopKeepThePassword)
{
    ToolWorld world(false);
    const auto command = "dbus-run-session -- sh " TESSEL_TEST_DATA "/with-keyring " TESSEL_TOOL " "
        + world.address();
    if (std::system("command -v dbus-run-session >/dev/null && "
                    "command -v gnome-keyring-daemon >/dev/null")
            != 0
        || !TESSEL_KEEPS_SECRETS)
        GTEST_SKIP() << "needs libsecret, dbus-run-session and gnome-keyring-daemon";
    for (const auto* name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME"})
        ::setenv(name, world.environment[name].c_str(), 1);
    EXPECT_EQ(std::system(command.c_str()), 0);
    for (const auto* name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME"})
        ::unsetenv(name);
}
