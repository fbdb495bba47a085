#include "Tessel/Session/Opening/ServiceLookup.h"
#include "tests/Tessel/Session/World.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <netinet/in.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <future>
#include <thread>

using namespace Tessel;
using namespace Tessel::Test;
using namespace std::chrono_literals;

namespace {

using Names = std::vector<std::string>;

Names find(const std::string& domain, bool allowsPlainHTTP = false)
{
    std::promise<Names> promise;
    ServiceLookup::shared().find(domain, allowsPlainHTTP, [&](auto servers) {
        Names names;
        for (const auto& server : servers)
            names.push_back(server.base + server.path);
        promise.set_value(std::move(names));
    });
    return promise.get_future().get();
}

std::string freePort()
{
    const int file = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_in address {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    bind(file, reinterpret_cast<sockaddr*>(&address), size);
    getsockname(file, reinterpret_cast<sockaddr*>(&address), &size);
    close(file);
    return std::to_string(ntohs(address.sin_port));
}

/// A name server on the loopback interface, which the lookup asks.
class NameServer {
public:
    explicit NameServer(const Names& records)
    {
        // Another program may take a free port meanwhile, and be a name server of its own.
        for (int i = 0; i < 10 && !isReady_ && !isAbsent_; ++i)
            start(records, "ready-" + std::to_string(getpid()) + ".example");
    }
    ~NameServer()
    {
        ServiceLookup::shared().setServers("");
        if (isReady_) stop();
    }
    NameServer(const NameServer&) = delete;
    NameServer& operator=(const NameServer&) = delete;

    bool isAbsent() const { return isAbsent_; }

private:
    void start(const Names& records, const std::string& readyDomain)
    {
        const auto port = freePort();
        Names words {"dnsmasq", "--keep-in-foreground", "--conf-file=/dev/null", "--no-resolv",
            "--no-hosts", "--no-daemon", "--bind-interfaces", "--listen-address=127.0.0.1",
            "--pid-file", "--user=root", "--local=/example/", "--port=" + port,
            "--srv-host=_caldavs._tcp." + readyDomain + ",ready.example,1"};
        words.insert(words.end(), records.begin(), records.end());
        std::vector<char*> arguments;
        for (auto& word : words)
            arguments.push_back(word.data());
        arguments.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        isAbsent_ = posix_spawn(&process_, "/usr/sbin/dnsmasq", &actions, nullptr, arguments.data(),
                        environ)
            != 0;
        posix_spawn_file_actions_destroy(&actions);
        if (isAbsent_) return;
        ServiceLookup::shared().setServers("127.0.0.1:" + port);
        for (int i = 0; i < 500 && !isReady_; ++i) {
            if (waitpid(process_, nullptr, WNOHANG) == process_) return; // the port was taken
            isReady_ = !find(readyDomain).empty();
            if (!isReady_) std::this_thread::sleep_for(20ms);
        }
        if (!isReady_) stop();
    }
    void stop()
    {
        kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
    }

    pid_t process_ = -1;
    bool isAbsent_ = false;
    bool isReady_ = false;
};

Result<Session::Opened> open(const std::string& address, SessionSettings settings = {})
{
    return wait(Session::open(
        {.server = address, .user = "alice"}, Password {"secret"}, {}, std::move(settings)));
}

} // namespace

TEST(ServiceLookup, GivesWhatDNSNamesInItsOrder)
{
    const NameServer names({"--srv-host=_caldavs._tcp.a.example,second.a.example,8443,20",
        "--srv-host=_caldavs._tcp.a.example,first.a.example,443,10",
        "--txt-record=_caldavs._tcp.a.example,unread,path=/dav/",
        "--srv-host=_caldav._tcp.a.example,plain.a.example,80",
        "--srv-host=_caldavs._tcp.none.example,.,0"});
    if (names.isAbsent()) GTEST_SKIP() << "there is no dnsmasq";
    const Names secure {"https://first.a.example/dav/", "https://second.a.example:8443/dav/"};
    EXPECT_EQ(find("a.example"), secure);
    auto all = secure;
    all.push_back("http://plain.a.example");
    EXPECT_EQ(find("a.example", true), all);
    EXPECT_EQ(find("none.example"), Names {});
    EXPECT_EQ(find("nothing.example"), Names {});
    EXPECT_EQ(find("not a domain..\xFF"), Names {});
    EXPECT_EQ(find(std::string(5000, 'a')), Names {});
}

TEST(ServiceLookup, GivesUpWhereNobodyAnswers)
{
    const int silent = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_in address {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    ASSERT_EQ(bind(silent, reinterpret_cast<sockaddr*>(&address), size), 0);
    getsockname(silent, reinterpret_cast<sockaddr*>(&address), &size);
    ServiceLookup::shared().setServers("127.0.0.1:" + std::to_string(ntohs(address.sin_port)));
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(find("a.example"), Names {});
    EXPECT_LT(std::chrono::steady_clock::now() - start, 8s);
    ServiceLookup::shared().setServers("");
    close(silent);
}

/// The fake server is https://server.example.
TEST(ServiceLookup, OpensAnAccountByItsEMailAddress)
{
    const NameServer names({"--srv-host=_caldavs._tcp.server.example,server.example,443",
        "--txt-record=_caldavs._tcp.server.example,path=/home/",
        "--srv-host=_caldavs._tcp.mail.example,server.example,443",
        "--txt-record=_caldavs._tcp.mail.example,path=/home/"});
    if (names.isAbsent()) GTEST_SKIP() << "there is no dnsmasq";
    const World world;
    const auto own = open("alice@server.example");
    ASSERT_TRUE(own) << own.reason();
    EXPECT_EQ(own.value()->origin().text(), "https://server.example:443");

    // What is outside the domain gets no password unless it is allowed.
    world.server->setFault([](const URLRequest& request, const auto&) {
        EXPECT_FALSE(request.url().starts_with(FakeCalendarServer::address)) << request.url();
        return std::optional(FakeCalendarServer::Reply {.status = 404});
    });
    const auto outside = open("alice@mail.example");
    ASSERT_FALSE(outside);
    EXPECT_NE(outside.reason().find("https://server.example"), std::string::npos)
        << outside.reason();
    // The tool puts this into words of its own.
    EXPECT_TRUE(outside.reason().ends_with("give it as the server, or allow its origin."))
        << outside.reason();
    world.server->setFault({});
    const auto allowed = open(
        "alice@mail.example", {.otherOrigins = {Origin::of(FakeCalendarServer::address).value()}});
    ASSERT_TRUE(allowed) << allowed.reason();
    EXPECT_EQ(allowed.value()->origin().text(), "https://server.example:443");
}
