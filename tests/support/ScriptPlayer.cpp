#include "support/ScriptPlayer.h"

#include "Platform/Transport/MNetworkError.h"

#include <gtest/gtest.h>

namespace Tessel::Test {

namespace {

std::string replaced(std::string text, std::string_view from, std::string_view to)
{
    for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
    return text;
}

void check(const ScriptedExchange& exchange, const URLRequest& request, const std::string& base)
{
    SCOPED_TRACE("exchange: " + exchange.title);
    const auto& expected = exchange.request;
    for (const auto& [name, value] : expected.fields) {
        const auto actual = request.headers.value(name);
        if (!actual) {
            ADD_FAILURE() << "the request has no " << name;
        } else if (value) {
            EXPECT_EQ(*actual, replaced(*value, "{{base}}", base)) << "in " << name;
        }
    }
    for (const auto& name : expected.absentFields) {
        EXPECT_FALSE(request.headers.value(name)) << "the request has " << name;
    }
    const std::string body(request.body.view());
    if (expected.body) {
        EXPECT_EQ(body, replaced(*expected.body, "{{base}}", base));
    }
    for (const auto& part : expected.bodyParts) {
        EXPECT_NE(body.find(replaced(part, "{{base}}", base)), std::string::npos)
            << "the body lacks " << part << ": " << body;
    }
}

} // namespace

std::pair<std::string, std::string> splitURL(const std::string& url)
{
    const auto slashes = url.find("://");
    if (slashes == std::string::npos) return {"", url};
    const auto path = std::min(url.find_first_of("/?#", slashes + 3), url.size());
    return {url.substr(0, path), path < url.size() ? url.substr(path) : "/"};
}

ScriptPlayer::ScriptPlayer(Script script)
    : script_(std::move(script))
    , used_(script_.exchanges.size())
{
}

ScriptedExchange* ScriptPlayer::match(const std::string& method, const std::string& path)
{
    for (std::size_t i = 0; i < used_.size(); ++i) {
        auto& exchange = script_.exchanges[i];
        if (used_[i] && !exchange.repeats) continue;
        const bool fits = exchange.request.method == method && exchange.request.path == path;
        if (fits) {
            used_[i] = true;
            return &exchange;
        }
        if (!script_.isUnordered && !exchange.repeats) return nullptr;
    }
    return nullptr;
}

ScriptedAnswer ScriptPlayer::play(const URLRequest& request)
{
    const std::lock_guard lock(mutex_);
    requests_.push_back(request);
    ++open_;
    const auto [base, path] = splitURL(request.url());
    const auto* exchange = match(request.method, path);
    if (!exchange) {
        ADD_FAILURE() << "not expected here: " << request.method << " " << path;
        return {.error = makeNetworkError(MNetworkErrorCode::other, "not in the script")};
    }
    check(*exchange, request, base);
    auto answer = exchange->answer;
    for (auto& step : answer.steps)
        step.bytes = replaced(std::move(step.bytes), "{{base}}", base);
    return answer;
}

void ScriptPlayer::answered()
{
    const std::lock_guard lock(mutex_);
    --open_;
    changed_.notify_all();
}

std::vector<URLRequest> ScriptPlayer::requests() const
{
    const std::lock_guard lock(mutex_);
    return requests_;
}

bool ScriptPlayer::isPlayed() const
{
    for (std::size_t i = 0; i < used_.size(); ++i) {
        if (!used_[i] && !script_.exchanges[i].repeats) return false;
    }
    return open_ == 0;
}

bool ScriptPlayer::waitUntilPlayed(std::chrono::milliseconds deadline) const
{
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, deadline, [this] { return isPlayed(); });
}

void ScriptPlayer::verify() const
{
    const std::lock_guard lock(mutex_);
    for (std::size_t i = 0; i < used_.size(); ++i) {
        const auto& exchange = script_.exchanges[i];
        if (!used_[i] && !exchange.repeats)
            ADD_FAILURE() << "was not asked for: " << exchange.title;
    }
}

} // namespace Tessel::Test
