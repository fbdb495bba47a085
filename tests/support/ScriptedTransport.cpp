#include "support/ScriptedTransport.h"

#include "Platform/Foundation/HTTPURLResponse.h"
#include "Platform/Transport/MNetworkError.h"
#include "Platform/Transport/Redirect.h"
#include "Platform/Transport/RequestFields.h"
#include "support/ScriptPlayer.h"

#include <gtest/gtest.h>

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <sstream>

namespace Tessel::Test {

namespace {

/// A task with its answer, on its way to the completion handler.
struct Reply {
    MTask task;
    ScriptedAnswer answer;
    int number = 0;
    bool isRedirected = false;
};

std::shared_ptr<const HTTPURLResponse> head(const std::string& url, const std::string& text)
{
    std::istringstream lines(text);
    std::string line;
    std::getline(lines, line);
    const auto status = std::stoi(line.substr(line.find(' ') + 1));
    HTTPHeaders headers;
    while (std::getline(lines, line) && line != "\r") {
        const auto colon = line.find(':');
        const auto start = line.find_first_not_of(' ', colon + 1);
        headers.add(line.substr(0, colon), line.substr(start, line.find('\r', start) - start));
    }
    return std::make_shared<const HTTPURLResponse>(url, status, std::move(headers));
}

void fail(MTask& task, const Error& error, int number)
{
    if (const auto delegate = task.delegate.lock()) {
        delegate->taskDidReceiveError(task.identifier, error.code, error.localizedDescription);
    }
    if (task.completionHandler) task.completionHandler({}, nullptr, std::nullopt, error, number);
}

} // namespace

struct ScriptedTransport::State {
    explicit State(Script script)
        : player(std::move(script))
    {
    }

    void submit(MTask task, int number, bool isRedirected = false);
    void run();
    void deliver(Reply& reply);
    bool redirect(Reply& reply, const HTTPURLResponse& response);

    ScriptPlayer player;
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<Reply> replies;
    std::deque<Reply> held;
    bool stopping = false;
    int lastNumber = 0;
};

void ScriptedTransport::State::submit(MTask task, int number, bool isRedirected)
{
    auto answer = player.play(task.request);
    auto& queue = answer.isHeld ? held : replies;
    const std::lock_guard lock(mutex);
    queue.push_back({std::move(task), std::move(answer), number, isRedirected});
    changed.notify_all();
}

void ScriptedTransport::State::run()
{
    std::unique_lock lock(mutex);
    while (true) {
        changed.wait(lock, [this] { return stopping || !replies.empty(); });
        if (stopping) return;
        auto reply = std::make_unique<Reply>(std::move(replies.front()));
        replies.pop_front();
        lock.unlock();
        deliver(*reply);
        // The task's closures may hold whatever the test waits for the end of.
        reply.reset();
        player.answered();
        lock.lock();
    }
}

void ScriptedTransport::State::deliver(Reply& reply)
{
    auto& [task, answer, number, isRedirected] = reply;
    for (const auto& step : answer.steps) {
        if (step.kind == AnswerStep::Kind::delay) std::this_thread::sleep_for(step.time);
    }
    if (answer.error) return fail(task, *answer.error, number);
    std::shared_ptr<const URLResponse> response;
    Data body;
    if (answer.isNotHTTP) {
        response = std::make_shared<const URLResponse>(task.request.url());
    } else if (!answer.hasNoResponse) {
        const auto bytes = answer.bytes();
        const auto end = bytes.find("\r\n\r\n");
        const auto http = head(task.request.url(), bytes.substr(0, end + 2) + "\r\n");
        if (redirect(reply, *http)) return;
        response = http;
        body = bytes.substr(end + 4);
    }
    if (const auto delegate = task.delegate.lock()) {
        delegate->downloadCompleted(task.identifier, body);
    }
    if (task.completionHandler) {
        task.completionHandler(body, response, std::nullopt, std::nullopt, number);
    }
}

bool ScriptedTransport::State::redirect(Reply& reply, const HTTPURLResponse& response)
{
    auto& task = reply.task;
    auto result = redirected(task.request, response);
    if (const auto* refused = std::get_if<Error>(&result)) {
        fail(task, *refused, reply.number);
        return true;
    }
    auto* const next = std::get_if<URLRequest>(&result);
    if (!next) return false;
    const bool isOffered = !reply.isRedirected && next->url() != task.request.url();
    const auto delegate = std::dynamic_pointer_cast<MTaskRedirectionDelegate>(task.delegate.lock());
    if (isOffered && delegate && delegate->didRequestHTTPRedirection(task.request, *next))
        return true;
    task.request = response.statusCode == 303 ? asRetrieval(*next) : std::move(*next);
    if (task.redirectionHandler) task.redirectionHandler(task.request);
    submit(std::move(task), reply.number, true);
    return true;
}

ScriptedTransport::ScriptedTransport(Script script)
    : state_(std::make_shared<State>(std::move(script)))
    , thread_([state = state_] { state->run(); })
{
}

ScriptedTransport::~ScriptedTransport()
{
    {
        const std::lock_guard lock(state_->mutex);
        state_->stopping = true;
        state_->changed.notify_all();
    }
    // A completion may drop the last owner.
    thread_.get_id() == std::this_thread::get_id() ? thread_.detach() : thread_.join();
    state_->player.verify();
}

int ScriptedTransport::send(MTask task)
{
    mergeIntoRequest(task);
    int number = 0;
    {
        const std::lock_guard lock(state_->mutex);
        number = ++state_->lastNumber;
    }
    if (task.requestDidStartHandler) task.requestDidStartHandler();
    state_->submit(std::move(task), number);
    return number;
}

std::vector<URLRequest> ScriptedTransport::requests() const
{
    return state_->player.requests();
}

bool ScriptedTransport::waitUntilPlayed(std::chrono::milliseconds deadline) const
{
    return state_->player.waitUntilPlayed(deadline);
}

bool ScriptedTransport::waitUntilHeld(std::size_t count, std::chrono::milliseconds deadline) const
{
    std::unique_lock lock(state_->mutex);
    return state_->changed.wait_for(lock, deadline, [&] { return state_->held.size() >= count; });
}

void ScriptedTransport::release()
{
    const std::lock_guard lock(state_->mutex);
    if (state_->held.empty()) {
        ADD_FAILURE() << "no answer is being held";
        return;
    }
    state_->replies.push_back(std::move(state_->held.front()));
    state_->held.pop_front();
    state_->changed.notify_all();
}

} // namespace Tessel::Test
