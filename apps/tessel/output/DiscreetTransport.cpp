#include "apps/tessel/output/DiscreetTransport.h"

#include "apps/tessel/output/Secrets.h"

#include <Tessel/Platform/Foundation/Web/HTTPURLResponse.h>

#include <optional>
#include <string>

namespace Tessel::App {

namespace {

/// "Basic YWJj" is worth what its second word is.
void hide(const std::optional<std::string>& field)
{
    if (!field) return;
    const auto blank = field->rfind(' ');
    Secrets::add(blank == field->npos ? *field : field->substr(blank + 1));
}

} // namespace

DiscreetTransport::DiscreetTransport(std::shared_ptr<MNetworkManager> actual)
    : actual_(std::move(actual))
{
}

int DiscreetTransport::send(MTask task)
{
    hide(task.authorization);
    hide(task.request.headers.value("Authorization"));
    task.completionHandler = [complete = std::move(task.completionHandler)](Data data,
                                 auto response, auto text, std::optional<Error> error, int number) {
        const auto* const http = dynamic_cast<const HTTPURLResponse*>(response.get());
        const bool isAsAsked = !http || (http->statusCode >= 200 && http->statusCode < 300);
        if (!isAsAsked) data = Data(Secrets::masked(std::string(data.view())));
        complete(std::move(data), std::move(response), std::move(text), std::move(error), number);
    };
    return actual_->send(std::move(task));
}

void DiscreetTransport::cancel(int number)
{
    actual_->cancel(number);
}

} // namespace Tessel::App
