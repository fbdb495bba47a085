#include "tests/support/ScriptedServer.h"

#include "tests/support/Message.h"

#include <sys/socket.h>

#include <csignal>
#include <stdexcept>

namespace Tessel::Test {

namespace {

std::shared_ptr<SSL_CTX> makeContext(const std::optional<ScriptedServer::Security>& security)
{
    if (!security) return nullptr;
    const std::shared_ptr<SSL_CTX> context(SSL_CTX_new(TLS_server_method()), SSL_CTX_free);
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

ScriptedServer::ScriptedServer(Script script, const std::optional<Security>& security)
    : player_(std::make_unique<ScriptPlayer>(std::move(script)))
    , answering_([this](const URLRequest& request) { return player_->play(request); })
    , tls_(makeContext(security))
    , acceptor_([this] { accept(); })
{
}

ScriptedServer::ScriptedServer(Answering answering, const std::optional<Security>& security)
    : answering_(std::move(answering))
    , tls_(makeContext(security))
    , acceptor_([this] { accept(); })
{
}

ScriptedServer::~ScriptedServer()
{
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
        for (const auto& connection : open_)
            connection->interrupt();
    }
    shutdown(listener_.socket, SHUT_RDWR);
    acceptor_.join();
    for (auto& thread : threads_)
        thread.join();
    if (player_) player_->verify();
}

void ScriptedServer::accept()
{
    // A client that goes away must not end the test; the threads below inherit this.
    sigset_t pipe;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe, nullptr);

    while (true) {
        const int client = accept4(listener_.socket, nullptr, nullptr, SOCK_CLOEXEC);
        if (client < 0) return;
        auto connection = std::make_shared<Connection>(client, tls_.get());
        const std::lock_guard lock(mutex_);
        if (stopping_) return;
        open_.push_back(connection);
        threads_.emplace_back([this, connection = std::move(connection)]() mutable {
            serve(*connection);
            const std::lock_guard ending(mutex_);
            open_.remove(connection);
            connection.reset();
        });
    }
}

void ScriptedServer::serve(Connection& connection)
{
    if (!connection.handshake()) return;
    while (const auto bytes = connection.readRequest()) {
        {
            const std::lock_guard lock(mutex_);
            rawRequests_.push_back(*bytes);
        }
        const auto answer = answering_(parseRequest(tls_ ? "https" : "http", *bytes));
        if (answer.error || !perform(answer, connection)) return;
    }
}

std::string ScriptedServer::url(const std::string& path, const std::string& host) const
{
    return (tls_ ? "https://" : "http://") + host + ":" + std::to_string(listener_.port) + path;
}

std::vector<std::string> ScriptedServer::rawRequests() const
{
    const std::lock_guard lock(mutex_);
    return rawRequests_;
}

std::size_t ScriptedServer::connectionCount() const
{
    const std::lock_guard lock(mutex_);
    return threads_.size();
}

std::size_t ScriptedServer::openConnectionCount() const
{
    const std::lock_guard lock(mutex_);
    return open_.size();
}

} // namespace Tessel::Test
