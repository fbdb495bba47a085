#include "Tessel/Platform/Transport/SentTask.h"

#include "Tessel/Platform/Foundation/Base/Limits.h"
#include "Tessel/Platform/Transport/MNetworkError.h"
#include "Tessel/Platform/Transport/MTaskRedirectionDelegate.h"
#include "Tessel/Platform/Transport/Redirect.h"

#include <variant>

namespace Tessel {

void SentTask::fail(const Error& error) const
{
    if (const auto delegate = task.delegate.lock())
        delegate->taskDidReceiveError(task.identifier, error.code, error.localizedDescription);
    if (task.completionHandler) task.completionHandler({}, nullptr, std::nullopt, error, number);
}

void SentTask::complete(std::shared_ptr<const HTTPURLResponse> response, Data body) const
{
    if (const auto delegate = task.delegate.lock())
        delegate->downloadCompleted(task.identifier, body);
    if (!task.completionHandler) return;
    task.completionHandler(
        std::move(body), std::move(response), std::nullopt, std::nullopt, number);
}

bool SentTask::settle(std::shared_ptr<const HTTPURLResponse> response, Data body)
{
    auto redirect = redirected(task.request, *response);
    if (auto* const next = std::get_if<URLRequest>(&redirect)) {
        const auto status = response->statusCode;
        const auto allows
            = [&] { return task.mayFollow(status == 303 ? asRetrieval(*next) : *next); };
        if (!task.mayFollow || allows()) return follow(std::move(*next), status);
    }
    if (const auto* const refused = std::get_if<Error>(&redirect)) {
        fail(*refused);
    } else {
        complete(std::move(response), std::move(body));
    }
    return false;
}

bool SentTask::follow(URLRequest next, int status)
{
    // Only the first redirect is offered, and none to the same place, so that a loop of redirects
    // ends by the limit whatever the delegate does.
    if (redirects == 0 && next.url() != task.request.url()) {
        const auto delegate
            = std::dynamic_pointer_cast<MTaskRedirectionDelegate>(task.delegate.lock());
        if (delegate && delegate->didRequestHTTPRedirection(task.request, next)) return false;
    }
    if (++redirects > Limits::redirects) {
        fail(makeNetworkError(
            MNetworkErrorCode::tooManyRedirects, "The server redirects too often."));
        return false;
    }
    task.request = status == 303 ? asRetrieval(next) : std::move(next);
    if (task.redirectionHandler) task.redirectionHandler(task.request);
    return true;
}

} // namespace Tessel
