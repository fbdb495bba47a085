#pragma once

#include "Tessel/CaldavLibrary/Models/MRVNotification.h"
#include "Tessel/CaldavLibrary/Operation/MRVWriteOperation.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace Tessel {

/// Accepts or declines an invitation with one POST to the account's calendar home, which must be
/// known (else a programming error that stops the process). A notification that is a reply itself
/// makes an empty document, which is sent as it is.
///
/// The handler of the kind of answer is called once, on the transport's callback thread: without an
/// error when the server took the answer, else with the transport's error or one that says what was
/// wrong with the server's answer (domain "HTTP" with the status as code, or "Tessel"). Without the
/// client's auth delegate nothing is sent and the handler hears that on a worker thread. It is
/// never called when the auth delegate never answers.
///
/// An answer whose status has no `MRVStatusCode` case (such as 400, 405 or 500) STOPS THE PROCESS.
class MRVInvitationReplyOperation final : public MRVWriteOperation {
public:
    std::shared_ptr<MRVNotification> notification;
    /// Gets the shared calendar's href in the user's own home when the server answers 200 with one;
    /// neither href nor error when its "shared-as" document names none.
    std::function<void(std::optional<std::string>, std::optional<Error>)> acceptHandler;
    /// Succeeds with 200, 201 and 204.
    std::function<void(std::optional<Error>)> declineHandler;
    bool accept = false;

    void main() override;

protected:
    void read(const Data& data, const std::optional<Error>& error,
        std::optional<int> statusCode) override;
    void notSent() override;

private:
    std::string body() const;
    void readStatus(MRVStatusCode status, const Data& data);
    void readSharedAs(const Data& data);
    void fail(const Error& error) const;
};

} // namespace Tessel
