#pragma once

#include "Tessel/Platform/Transport/MNetworkConfiguration.h"
#include "Tessel/Platform/Transport/MNetworkManager.h"

#include <memory>
#include <mutex>

namespace Tessel {

/// The transport on libcurl.
///
/// One thread serves every exchange of the process; it starts with the first and every completion,
/// delegate and handler is called on it, so one that works long delays all other answers. They may
/// send further tasks, and drop the manager. Connections are kept and reused; HTTP/2 is spoken
/// where a TLS server offers it.
///
/// - Content-Length, Transfer-Encoding, Host and Expect are the transport's own: what a request
///   says there is not sent. A name, value, method or URL that would break out of its line ends the
///   task as `invalidRequest`.
/// - 301, 302, 303, 307 and 308 with a Location are redirects. A redirect from https to http, or
///   to something else than http and https, is an error. The first redirect of a task is offered
///   to a delegate that is an `MTaskRedirectionDelegate`, unless it leads back to the same URL.
///   The others are followed, at most ten in a row, with method and body, after
///   `redirectionHandler` was told; a 303 turns into a GET without a body. Authorization and
///   Cookie go to the same scheme, host and port only.
/// - When a kept connection ends before a byte of the answer, GET, HEAD, OPTIONS, PROPFIND and
///   REPORT are sent again on a new one. Any other request ends as `connectionLost`, because the
///   server may have carried it out: look before you send it again.
/// - A task that is cancelled ends as `cancelled`, with its connection unless that speaks HTTP/2.
/// - User information in a URL is not sent: credentials are header fields.
/// - A failed task has no response and no body. `text` is never set; `number` is the task's number.
/// - The process may exit at any time: what is under way then gets no completion.
class TESSEL_EXPORT MCurlNetworkManager final : public MNetworkManager {
public:
    /// Sends nothing before the first task.
    explicit MCurlNetworkManager(MNetworkConfiguration configuration = {});

    /// Read and set from any thread; tasks keep the configuration with which they were sent.
    MNetworkConfiguration configuration() const;
    /// For tasks that are sent from now on.
    void setConfiguration(MNetworkConfiguration configuration);

    int send(MTask task) override;
    void cancel(int number) override;

private:
    mutable std::mutex mutex_;
    std::shared_ptr<const MNetworkConfiguration> configuration_;
};

} // namespace Tessel
