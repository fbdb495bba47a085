#include "support/ScriptPlayer.h"

#include "Platform/Transport/MNetworkError.h"
#include "support/Message.h"

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
        } else if (value != "*") {
            EXPECT_EQ(*actual, replaced(value, "{{base}}", base)) << "in " << name;
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

ScriptPlayer::ScriptPlayer(Script script)
    : script_(std::move(script))
    , used_(script_.exchanges.size())
{
}

const ScriptedExchange* ScriptPlayer::match(const std::string& method, const std::string& path)
{
    for (std::size_t i = 0; i < used_.size(); ++i) {
        const auto& exchange = script_.exchanges[i];
        if (used_[i] && !exchange.repeats) continue;
        if (exchange.request.method == method && exchange.request.path == path) {
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
    const auto [base, path] = splitURL(request.url());
    const auto* const exchange = match(request.method, path);
    if (!exchange) {
        ADD_FAILURE() << "not expected here: " << request.method << " " << path;
        return {.error = makeNetworkError(MNetworkErrorCode::other, "not in the script")};
    }
    check(*exchange, request, base);
    auto answer = exchange->answer;
    answer.bytes = replaced(std::move(answer.bytes), "{{base}}", base);
    return answer;
}

std::vector<std::string> ScriptPlayer::unplayed() const
{
    const std::lock_guard lock(mutex_);
    std::vector<std::string> titles;
    for (std::size_t i = 0; i < used_.size(); ++i) {
        const auto& exchange = script_.exchanges[i];
        if (!used_[i] && !exchange.repeats) titles.push_back(exchange.title);
    }
    return titles;
}

void ScriptPlayer::verify() const
{
    for (const auto& title : unplayed())
        ADD_FAILURE() << "was not asked for: " << title;
}

} // namespace Tessel::Test
