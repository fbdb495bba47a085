#include "Tessel/Session/Opening/ServiceLookup.h"

#include "Tessel/Platform/Foundation/Operations/LibraryThread.h"
#include "Tessel/Session/Opening/ServiceAnswer.h"

#include <ares.h>
#include <poll.h>

#include <array>
#include <chrono>

namespace Tessel {

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto limit = std::chrono::seconds(5);
constexpr int firstTimeout = 1'000; ///< of one question to one server, in milliseconds
constexpr int tries = 2;

/// Serves the channel until all its questions are answered or the time is over.
void serve(ares_channel channel)
{
    const auto end = Clock::now() + limit;
    while (Clock::now() < end) {
        std::array<ares_socket_t, ARES_GETSOCK_MAXNUM> sockets {};
        const auto wanted = static_cast<unsigned>(
            ares_getsock(channel, sockets.data(), static_cast<int>(sockets.size())));
        if (wanted == 0) return;
        std::array<pollfd, ARES_GETSOCK_MAXNUM> files {};
        nfds_t count = 0;
        for (unsigned i = 0; i < sockets.size(); ++i) {
            short events = 0;
            if (ARES_GETSOCK_READABLE(wanted, i)) events |= POLLIN;
            if (ARES_GETSOCK_WRITABLE(wanted, i)) events |= POLLOUT;
            if (events) files[count++] = {sockets[i], events, 0};
        }
        const int ready = poll(files.data(), count, 100);
        if (ready <= 0) ares_process_fd(channel, ARES_SOCKET_BAD, ARES_SOCKET_BAD);
        for (nfds_t i = 0; ready > 0 && i < count; ++i) {
            if (!files[i].revents) continue;
            ares_process_fd(channel, files[i].revents & ~POLLOUT ? files[i].fd : ARES_SOCKET_BAD,
                files[i].revents & POLLOUT ? files[i].fd : ARES_SOCKET_BAD);
        }
    }
}

void append(
    std::vector<ServerAddress>& servers, const ServiceAnswer& answer, const std::string& scheme)
{
    for (const auto& target : answer.targets()) {
        const auto url
            = scheme + "://" + target.host + ":" + std::to_string(target.port) + answer.path();
        // What is no host name is nobody's.
        if (const auto address = ServerAddress::read(url)) servers.push_back(address.value());
    }
}

std::vector<ServerAddress> lookUp(
    const std::string& domain, bool allowsPlainHTTP, const std::string& servers)
{
    static const bool isReady = ares_library_init(ARES_LIB_INIT_ALL) == ARES_SUCCESS;
    ares_options options {};
    options.timeout = firstTimeout;
    options.tries = tries;
    ares_channel channel = nullptr;
    if (!isReady
        || ares_init_options(&channel, &options, ARES_OPT_TIMEOUTMS | ARES_OPT_TRIES)
            != ARES_SUCCESS)
        return {};
    if (!servers.empty()) ares_set_servers_ports_csv(channel, servers.c_str());
    ServiceAnswer secure;
    ServiceAnswer plain;
    secure.ask(channel, "_caldavs._tcp." + domain);
    if (allowsPlainHTTP) plain.ask(channel, "_caldav._tcp." + domain);
    serve(channel);
    ares_destroy(channel);

    std::vector<ServerAddress> found;
    append(found, secure, "https");
    append(found, plain, "http");
    return found;
}

} // namespace

ServiceLookup& ServiceLookup::shared()
{
    static auto& lookup = *new ServiceLookup;
    return lookup;
}

void ServiceLookup::find(const std::string& mailDomain, bool allowsPlainHTTP, Found found)
{
    const std::lock_guard lock(mutex_);
    if (!runs_) {
        LibraryThread::start([this] { run(); }).detach();
        runs_ = true;
    }
    questions_.push_back({mailDomain, allowsPlainHTTP, std::move(found)});
    wake_.notify_one();
}

void ServiceLookup::setServers(const std::string& servers)
{
    const std::lock_guard lock(mutex_);
    servers_ = servers;
}

void ServiceLookup::run()
{
    std::unique_lock lock(mutex_);
    while (true) {
        wake_.wait(lock, [&] { return !questions_.empty(); });
        const auto question = std::move(questions_.front());
        questions_.pop_front();
        const auto servers = servers_;
        lock.unlock();
        question.found(lookUp(question.mailDomain, question.allowsPlainHTTP, servers));
        lock.lock();
    }
}

} // namespace Tessel
