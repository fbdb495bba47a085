#include "support/ScriptedServer.h"

#include "support/Connection.h"
#include "support/Message.h"
#include "support/ScriptPlayer.h"

#include <netinet/in.h>
#include <openssl/ssl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <csignal>
#include <list>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <thread>

namespace Tessel::Test {

namespace {

using TLSContext = std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)>;

TLSContext makeContext(const std::optional<ScriptedServer::Security>& security)
{
    TLSContext context(nullptr, SSL_CTX_free);
    if (!security) return context;
    context.reset(SSL_CTX_new(TLS_server_method()));
    const auto& identity = security->identity;
    if (SSL_CTX_use_certificate_chain_file(context.get(), identity.certificateFile.c_str()) != 1
        || SSL_CTX_use_PrivateKey_file(context.get(), identity.keyFile.c_str(), SSL_FILETYPE_PEM)
            != 1) {
        throw std::runtime_error("scripted server: cannot use its certificate");
    }
    if (!security->clientAuthorityFile.empty()) {
        SSL_CTX_load_verify_locations(
            context.get(), security->clientAuthorityFile.c_str(), nullptr);
        SSL_CTX_set_verify(
            context.get(), SSL_VERIFY_PEER | SSL_VERIFY_FAIL_IF_NO_PEER_CERT, nullptr);
    }
    if (security->isOutdated) {
        SSL_CTX_set_security_level(context.get(), 0);
        SSL_CTX_set_max_proto_version(context.get(), TLS1_1_VERSION);
    }
    return context;
}

/// Gives the answer; false when the connection is over.
bool perform(const ScriptedAnswer& answer, Connection& connection)
{
    const std::size_t size = answer.pause.count() > 0 ? 1 : answer.bytes.size();
    for (std::string_view rest = answer.bytes; !rest.empty(); rest.remove_prefix(size)) {
        if (!connection.write(rest.substr(0, size))) return false;
        std::this_thread::sleep_for(answer.pause);
    }
    if (answer.end == ScriptedAnswer::End::reset) connection.reset();
    if (answer.end == ScriptedAnswer::End::stall) connection.waitForEnd();
    return answer.end == ScriptedAnswer::End::keep;
}

} // namespace

struct ScriptedServer::State {
    State(Script script, const std::optional<Security>& security)
        : player(std::move(script))
        , tls(makeContext(security))
    {
        sockaddr_in address {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto* const generic = reinterpret_cast<sockaddr*>(&address);
        if (bind(listener, generic, size) != 0 || listen(listener, 128) != 0
            || getsockname(listener, generic, &size) != 0) {
            throw std::runtime_error("scripted server: no port");
        }
        port = ntohs(address.sin_port);
        acceptor = std::thread([this] { accept(); });
    }

    ~State()
    {
        {
            const std::lock_guard lock(mutex);
            stopping = true;
            for (const auto& connection : open)
                connection->interrupt();
        }
        shutdown(listener, SHUT_RDWR);
        acceptor.join();
        for (auto& thread : threads)
            thread.join();
        close(listener);
        player.verify();
    }

    const char* scheme() const { return tls ? "https" : "http"; }
    void accept();
    void serve(Connection& connection);

    ScriptPlayer player;
    const TLSContext tls;
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    int port = 0;
    std::thread acceptor;

    mutable std::mutex mutex;
    std::list<std::shared_ptr<Connection>> open;
    std::vector<std::thread> threads;
    std::vector<std::string> raw;
    int connections = 0;
    bool stopping = false;
};

void ScriptedServer::State::accept()
{
    // A client that goes away must not end the test; the threads below inherit this.
    sigset_t pipe;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe, nullptr);

    while (true) {
        const int client = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (client < 0) return;
        auto connection = std::make_shared<Connection>(client, tls.get());
        const std::lock_guard lock(mutex);
        if (stopping) return;
        ++connections;
        open.push_back(connection);
        threads.emplace_back([this, connection = std::move(connection)]() mutable {
            serve(*connection);
            const std::lock_guard ending(mutex);
            open.remove(connection);
            connection.reset();
        });
    }
}

void ScriptedServer::State::serve(Connection& connection)
{
    if (!connection.handshake()) return;
    while (const auto bytes = connection.readRequest()) {
        {
            const std::lock_guard lock(mutex);
            raw.push_back(*bytes);
        }
        const auto answer = player.play(parseRequest(scheme(), *bytes));
        if (answer.error || !perform(answer, connection)) return;
    }
}

ScriptedServer::ScriptedServer(Script script, std::optional<Security> security)
    : state_(std::make_unique<State>(std::move(script), security))
{
}

ScriptedServer::~ScriptedServer() = default;

std::string ScriptedServer::url(const std::string& path, const std::string& host) const
{
    return std::string(state_->scheme()) + "://" + host + ":" + std::to_string(state_->port) + path;
}

std::vector<std::string> ScriptedServer::rawRequests() const
{
    const std::lock_guard lock(state_->mutex);
    return state_->raw;
}

int ScriptedServer::connectionCount() const
{
    const std::lock_guard lock(state_->mutex);
    return state_->connections;
}

} // namespace Tessel::Test
