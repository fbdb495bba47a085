#pragma once

#include "Tessel/Platform/Foundation/Web/HTTPURLResponse.h"
#include "Tessel/Platform/Transport/MCurlNetworkManager.h"
#include "Tessel/Platform/Transport/MNetworkError.h"
#include "tests/support/Callback.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>

namespace Tessel::Test {

/// Answers every GET of "/" with "hello".
inline constexpr auto hello = "== hello\n> GET /\n@ repeat\n< HTTP/1.1 200 OK\n<\n< hello\n";

using Done = Callback<Data, std::shared_ptr<const URLResponse>, std::optional<std::string>,
    std::optional<Error>, int>;

/// How a task ended.
struct Outcome {
    std::string body;
    std::shared_ptr<const HTTPURLResponse> response;
    std::optional<Error> error;

    int status() const { return response ? response->statusCode : -1; }
    std::optional<MNetworkErrorCode> errorCode() const
    {
        if (!error) return std::nullopt;
        EXPECT_EQ(error->domain, MNetworkErrorDomain);
        return static_cast<MNetworkErrorCode>(error->code);
    }
};

inline Outcome outcome(const Done& done)
{
    if (!done.wait()) {
        ADD_FAILURE() << "the completion did not come";
        return {};
    }
    const auto [body, response, text, error, number] = done.arguments();
    EXPECT_GT(number, 0);
    EXPECT_NE(error.has_value(), response != nullptr) << "either an answer or an error";
    return {std::string(body.view()), std::dynamic_pointer_cast<const HTTPURLResponse>(response),
        error};
}

inline URLRequest makeRequest(
    const std::string& method, const std::string& url, const std::string& body = {})
{
    URLRequest request(url);
    request.method = method;
    request.body = body;
    return request;
}

/// Sends the task and waits for its end.
inline Outcome exchange(MNetworkManager& manager, MTask task)
{
    const Done done;
    task.completionHandler = done;
    EXPECT_GT(manager.send(std::move(task)), 0);
    return outcome(done);
}

inline Outcome exchange(MNetworkManager& manager, const URLRequest& request)
{
    return exchange(manager, MTask {.request = request, .completionHandler = {}});
}

inline Outcome get(MNetworkManager& manager, const std::string& url)
{
    return exchange(manager, URLRequest(url));
}

} // namespace Tessel::Test
