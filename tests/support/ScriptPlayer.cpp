#include "tests/support/ScriptPlayer.h"

#include "Tessel/Platform/Transport/MNetworkError.h"
#include "tests/support/Message.h"

#include <gtest/gtest.h>

#include <algorithm>

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

std::vector<std::size_t> ScriptPlayer::candidates(
    const std::string& method, const std::string& path) const
{
    std::vector<std::size_t> indexes;
    for (std::size_t i = 0; i < used_.size(); ++i) {
        const auto& exchange = script_.exchanges[i];
        if (used_[i] && !exchange.repeats) continue;
        const bool fits = exchange.request.method == method && exchange.request.path == path;
        if (fits) indexes.push_back(i);
        if (!script_.isUnordered && (fits || !exchange.repeats)) break;
    }
    return indexes;
}

const ScriptedExchange* ScriptPlayer::match(
    const URLRequest& request, const std::string& base, const std::string& path)
{
    const auto fitting = candidates(request.method, path);
    if (fitting.empty()) return nullptr;
    // Of requests that run side by side the body tells which is which.
    const auto exact = std::find_if(fitting.begin(), fitting.end(), [&](std::size_t i) {
        const auto& body = script_.exchanges[i].request.body;
        return body && request.body.view() == replaced(*body, "{{base}}", base);
    });
    const auto chosen = exact == fitting.end() ? fitting.front() : *exact;
    used_[chosen] = true;
    return &script_.exchanges[chosen];
}

ScriptedAnswer ScriptPlayer::play(const URLRequest& request)
{
    const std::lock_guard lock(mutex_);
    const auto [base, path] = splitURL(request.url());
    const auto* const exchange = match(request, base, path);
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
