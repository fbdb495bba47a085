#pragma once

#include "Tessel/Platform/Foundation/Web/HTTPURLResponse.h"
#include "Tessel/Platform/Transport/MNetworkManager.h"
#include "tests/support/Callback.h"

#include <memory>
#include <optional>
#include <string>

namespace Tessel::Test {

/// Gives every request the same answer, on the thread that sends it: a status without a body, or
/// "lost", a transport error, or "other", a response that is not of HTTP.
struct SameAnswer final : MNetworkManager {
    explicit SameAnswer(std::string answer)
        : answer(std::move(answer))
    {
    }

    const std::string answer;
    std::optional<URLRequest> request; ///< the last one; read it once its answer has come
    Callback<> answered;

    int send(MTask task) override
    {
        const auto url = task.request.url();
        request = task.request;
        if (answer == "lost") {
            task.completionHandler({}, nullptr, std::nullopt, Error {"test", 4, "no route"}, 1);
        } else {
            std::shared_ptr<const URLResponse> response = std::make_shared<URLResponse>(url);
            if (answer != "other") {
                response = std::make_shared<HTTPURLResponse>(url, std::stoi(answer), HTTPHeaders());
            }
            task.completionHandler({}, response, std::nullopt, std::nullopt, 1);
        }
        answered();
        return 1;
    }
};

} // namespace Tessel::Test
