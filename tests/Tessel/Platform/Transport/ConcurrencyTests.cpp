#include "Tessel/Platform/Foundation/Base/Limits.h"
#include "tests/Tessel/Platform/Transport/Exchanges.h"

#include "tests/support/ScriptedServer.h"

#include <openssl/crypto.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <thread>

namespace Tessel::Test {

namespace {

using namespace std::chrono_literals;

/// A server that never answers, without a thread of its own.
struct SilentServer {
    const Listener listener;
    const std::string url = "http://127.0.0.1:" + std::to_string(listener.port) + "/";
};

/// How many threads ("task") or open descriptors ("fd") the process has.
std::size_t count(const std::string& what)
{
    const std::filesystem::directory_iterator all("/proc/self/" + what);
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

TEST(Concurrency, EachOfManyThreadsGetsEachAnswerOnce)
{
    ScriptedServer server(Script::parse(hello));
    MCurlNetworkManager manager({.maximumExchangesPerHost = 4});
    constexpr int senders = 4;
    constexpr int each = 100;
    std::vector<Done> done(senders * each);
    std::vector<std::thread> threads;
    for (int sender = 0; sender < senders; ++sender) {
        threads.emplace_back([&, sender] {
            for (int i = 0; i < each; ++i) {
                manager.send({.request = URLRequest(server.url("/")),
                    .completionHandler = done[sender * each + i]});
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    for (const auto& one : done)
        EXPECT_EQ(outcome(one).body, "hello");
    for (const auto& one : done)
        EXPECT_EQ(one.count(), 1u);
    EXPECT_LE(server.connectionCount(), 4u);
}

TEST(Concurrency, CompletionMaySendAndDropTheManager)
{
    ScriptedServer server(Script::parse(hello));
    const Callback<> ended;
    auto manager = std::make_shared<MCurlNetworkManager>();
    std::function<void(std::shared_ptr<MNetworkManager>, int)> again
        = [&](std::shared_ptr<MNetworkManager> own, int left) {
              MTask task {.request = URLRequest(server.url("/")), .completionHandler = {}};
              auto* const sender = own.get();
              task.completionHandler = [&, own = std::move(own), left](
                                           auto...) { left > 0 ? again(own, left - 1) : ended(); };
              sender->send(std::move(task));
          };
    again(std::move(manager), 20);
    EXPECT_TRUE(ended.wait());
    EXPECT_EQ(server.connectionCount(), 1u);
}

TEST(Concurrency, OneThreadServesAnyNumberOfTasks)
{
    const SilentServer silent;
    MCurlNetworkManager manager({.maximumExchangesPerHost = 10});
    get(manager, "http://127.0.0.1:1/");
    const auto before = count("task");
    const Done done;
    const Callback<> started;
    auto request = URLRequest(silent.url);
    request.timeoutInterval = 200ms;
    for (int i = 0; i < 1000; ++i) {
        if (i == 10) request.timeoutInterval = 1ms;
        manager.send(
            {.request = request, .requestDidStartHandler = started, .completionHandler = done});
    }
    ASSERT_TRUE(started.wait(10));
    EXPECT_EQ(count("task"), before);
    EXPECT_TRUE(done.wait(1000));
    for (std::size_t i = 0; i < 1000; ++i)
        EXPECT_TRUE(std::get<3>(done.arguments(i)));
}

TEST(Concurrency, WaitingTasksGoByPriority)
{
    std::string script;
    for (const std::string path : {"/first", "/urgent", "/one", "/two", "/some-day"})
        script += "== " + path + "\n> GET " + path + "\n@ trickle 2\n< HTTP/1.1 200 OK\n";
    ScriptedServer server(Script::parse(script));
    MCurlNetworkManager manager({.maximumExchangesPerHost = 1});
    const Done done;
    const Callback<> started;
    const auto send = [&](const char* path, MTaskPriority priority) {
        manager.send({.request = URLRequest(server.url(path)),
            .priority = priority,
            .requestDidStartHandler = started,
            .completionHandler = done});
    };
    send("/first", MTaskPriority::low);
    ASSERT_TRUE(started.wait());
    send("/some-day", MTaskPriority::low);
    send("/one", MTaskPriority::normal);
    send("/two", MTaskPriority::normal);
    send("/urgent", MTaskPriority::high);
    EXPECT_TRUE(done.wait(5));
    EXPECT_EQ(started.count(), 5u);
}

TEST(Concurrency, SilentServerHoldsUpNoOther)
{
    const SilentServer silent;
    ScriptedServer server(Script::parse(hello));
    MCurlNetworkManager manager({.maximumExchangesPerHost = 1});
    const Done late;
    auto request = URLRequest(silent.url);
    request.timeoutInterval = 300ms;
    manager.send({.request = request, .completionHandler = late});
    EXPECT_EQ(get(manager, server.url("/")).body, "hello");
    EXPECT_EQ(late.count(), 0u);
    EXPECT_EQ(outcome(late).errorCode(), MNetworkErrorCode::timedOut);
}

TEST(Concurrency, UserInformationMakesNoOtherHost)
{
    const SilentServer silent;
    MCurlNetworkManager manager({.maximumExchangesPerHost = 2});
    const Done done;
    const Callback<> started;
    for (int i = 0; i < 20; ++i) {
        auto request = URLRequest("http://user" + std::to_string(i) + ":p@" + silent.url.substr(7));
        request.timeoutInterval = 400ms;
        manager.send(
            {.request = request, .requestDidStartHandler = started, .completionHandler = done});
        if (i == 10) get(manager, "http://127.0.0.1:1/"); // by then some have started
    }
    EXPECT_EQ(started.count(), 2u);
    EXPECT_TRUE(done.wait(20));
}

TEST(Concurrency, ManyHostsTakeFewThreadsAndDescriptors)
{
    MCurlNetworkManager manager;
    get(manager, "http://127.0.0.1:1/");
    const auto threads = count("task");
    const auto descriptors = count("fd");
    // Names are looked up, which takes long; at the addresses nobody listens.
    constexpr int names = Limits::exchangesWithStrangers + 8;
    constexpr int hosts = 3000;
    std::atomic<std::size_t> mostThreads = 0;
    std::atomic<std::size_t> mostDescriptors = 0;
    const Done done;
    for (int i = 0; i < hosts; ++i) {
        const auto number = std::to_string(i % 250 + 1);
        const auto host = i < names ? "h" + number + ".invalid"
                                    : "127.1." + std::to_string(i / 250) + "." + number + ":1";
        manager.send({.request = URLRequest("http://" + host + "/"),
            .requestDidStartHandler =
                [&] {
                    mostThreads = std::max(mostThreads.load(), count("task"));
                    mostDescriptors = std::max(mostDescriptors.load(), count("fd"));
                },
            .completionHandler = done});
    }
    EXPECT_TRUE(done.wait(hosts, 100s));
    EXPECT_LE(mostThreads, threads + Limits::exchangesWithStrangers);
    EXPECT_LE(mostDescriptors, descriptors + 4 * Limits::exchangesWithStrangers);
}

TEST(Concurrency, ManySilentHostsKeepNobodyFromAHostThatAnswers)
{
    const std::vector<SilentServer> silent(3 * Limits::exchangesWithStrangers);
    ScriptedServer server(Script::parse(hello));
    MCurlNetworkManager manager;
    EXPECT_EQ(get(manager, server.url("/")).body, "hello");
    const Done late;
    const Callback<> started;
    for (const auto& each : silent) {
        auto request = URLRequest(each.url);
        request.timeoutInterval = 400ms;
        manager.send(
            {.request = request, .requestDidStartHandler = started, .completionHandler = late});
    }
    ASSERT_TRUE(started.wait(Limits::exchangesWithStrangers));
    EXPECT_EQ(get(manager, server.url("/")).body, "hello");
    EXPECT_EQ(late.count(), 0u);
    EXPECT_EQ(started.count(), Limits::exchangesWithStrangers);
    EXPECT_TRUE(late.wait(silent.size()));
}

/// Of ten tasks two are under way; the others wait.
TEST(Concurrency, CancelledTaskEndsAndItsConnectionGoes)
{
    ScriptedServer server(Script::parse("== silent\n> GET /\n@ repeat\n@ stall\n"));
    MCurlNetworkManager manager({.maximumExchangesPerHost = 2});
    const Callback<> started;
    const Done done;
    std::vector<int> numbers;
    for (int i = 0; i < 10; ++i) {
        numbers.push_back(manager.send({.request = URLRequest(server.url("/")),
            .requestDidStartHandler = started,
            .completionHandler = done}));
    }
    ASSERT_TRUE(started.wait(2));
    manager.cancel(numbers[9]);
    EXPECT_EQ(outcome(done).errorCode(), MNetworkErrorCode::cancelled);
    // The last first, so that none finds room.
    for (auto number = numbers.rbegin(); number != numbers.rend(); ++number)
        manager.cancel(*number);
    manager.cancel(0);
    ASSERT_TRUE(done.wait(10));
    EXPECT_TRUE(waitFor([&] { return server.openConnectionCount() == 0; }));
    EXPECT_EQ(started.count(), 2u) << "what waits is not sent any more";
    get(manager, "http://127.0.0.1:1/");
    EXPECT_EQ(done.count(), 10u);
}

TEST(Concurrency, ConnectionThatTheServerClosedIsReplaced)
{
    ScriptedServer server(Script::parse(
        "== kept, then closed without a word\n> GET /\n< HTTP/1.1 200 OK\n<\n< one\n@ close\n"
        "== on a new connection\n> PUT /\n< HTTP/1.1 201 Created\n"));
    MCurlNetworkManager manager;
    EXPECT_EQ(get(manager, server.url("/")).body, "one");
    while (server.openConnectionCount() > 0)
        std::this_thread::yield();
    EXPECT_EQ(exchange(manager, makeRequest("PUT", server.url("/"), "x")).status(), 201);
    EXPECT_EQ(server.connectionCount(), 2u);
}

TEST(Concurrency, ReadingAndSettingTheSharedInstanceIsSafe)
{
    const auto standard = MNetworkManager::sharedInstance();
    std::atomic<bool> ended {false};
    std::thread setter([&] {
        for (int i = 0; i < 1000; ++i)
            MNetworkManager::setSharedInstance(std::make_shared<MCurlNetworkManager>());
        MNetworkManager::setSharedInstance(nullptr);
        ended = true;
    });
    while (!ended)
        EXPECT_NE(MNetworkManager::sharedInstance(), nullptr);
    setter.join();
    EXPECT_EQ(MNetworkManager::sharedInstance(), standard);
}

/// How the process ends is seen from outside: a test of the exit status of a child.
TEST(ExitDeathTest, IsCleanWithExchangesUnderWayAndFromACompletion)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto exitsAmongExchanges = [] {
        const SilentServer silent;
        const Callback<> started;
        for (int i = 0; i < 40; ++i) {
            MNetworkManager::sharedInstance()->send({.request = URLRequest(silent.url),
                .requestDidStartHandler = started,
                .completionHandler = [](auto...) { std::_Exit(3); }});
        }
        started.wait(16);
        std::exit(6);
    };
    EXPECT_EXIT(exitsAmongExchanges(), testing::ExitedWithCode(6), "^$");
    const auto sendInVain = [](auto completion) {
        MNetworkManager::sharedInstance()->send({.request = URLRequest("http://127.0.0.1:1/"),
            .completionHandler = std::move(completion)});
    };
    const auto exitsFromCompletion = [&] {
        sendInVain([](auto...) { std::exit(7); });
        std::this_thread::sleep_for(60s);
    };
    EXPECT_EXIT(exitsFromCompletion(), testing::ExitedWithCode(7), "^$");
    const auto exitsWhileOneNeverReturns = [&] {
        const Callback<> called;
        sendInVain([called](auto...) {
            called();
            std::this_thread::sleep_for(60s);
        });
        called.wait();
        std::exit(8);
    };
    EXPECT_EXIT(exitsWhileOneNeverReturns(), testing::ExitedWithCode(8), "");
}

/// A worker may still be setting the TLS library up when the process exits.
TEST(ExitDeathTest, LeavesTheTLSLibraryUsable)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto exitsAfterAnExchange = [] {
        std::atexit([] { std::_Exit(OPENSSL_init_crypto(0, nullptr) ? 9 : 3); });
        const Callback<> called;
        MCurlNetworkManager().send({.request = URLRequest("http://127.0.0.1:1/"),
            .completionHandler = [called](auto...) { called(); }});
        called.wait();
        std::exit(4);
    };
    EXPECT_EXIT(exitsAfterAnExchange(), testing::ExitedWithCode(9), "^$");
}

} // namespace

} // namespace Tessel::Test
