#include "tests/support/ScriptedTransport.h"

#include "Tessel/Platform/Transport/RequestFields.h"
#include "Tessel/Platform/Transport/SentTask.h"
#include "tests/support/Message.h"
#include "tests/support/ScriptPlayer.h"

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>

namespace Tessel::Test {

namespace {

/// An exchange with its answer, on its way to the completion handler.
struct Reply {
    std::unique_ptr<SentTask> exchange;
    ScriptedAnswer answer;
};

} // namespace

struct ScriptedTransport::State {
    explicit State(Script script)
        : player(std::move(script))
    {
    }

    void submit(std::unique_ptr<SentTask> exchange);
    void run();
    void deliver(Reply& reply);

    ScriptPlayer player;
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<URLRequest> requests;
    std::deque<Reply> replies;
    bool isDelivering = false;
    bool stopping = false;
    int lastNumber = 0;
};

void ScriptedTransport::State::submit(std::unique_ptr<SentTask> exchange)
{
    const std::lock_guard lock(mutex);
    requests.push_back(exchange->task.request);
    auto answer = player.play(exchange->task.request);
    replies.push_back({std::move(exchange), std::move(answer)});
    changed.notify_all();
}

void ScriptedTransport::State::run()
{
    std::unique_lock lock(mutex);
    while (true) {
        changed.wait(lock, [this] { return stopping || !replies.empty(); });
        if (stopping) return;
        // The task's closures may hold whatever the test waits for the end of.
        std::optional<Reply> reply(std::move(replies.front()));
        replies.pop_front();
        isDelivering = true;
        lock.unlock();
        deliver(*reply);
        reply.reset();
        lock.lock();
        isDelivering = false;
        changed.notify_all();
    }
}

void ScriptedTransport::State::deliver(Reply& reply)
{
    auto& [exchange, answer] = reply;
    if (answer.error) return exchange->fail(*answer.error);
    const auto& task = exchange->task;
    if (answer.isNotHTTP || answer.hasNoResponse) {
        const auto response
            = answer.isNotHTTP ? std::make_shared<const URLResponse>(task.request.url()) : nullptr;
        return task.completionHandler({}, response, std::nullopt, std::nullopt, exchange->number);
    }
    auto [response, body] = parseAnswer(task.request.url(), answer.bytes);
    if (exchange->settle(std::move(response), std::move(body))) submit(std::move(exchange));
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
    state_->submit(
        std::make_unique<SentTask>(SentTask {.task = std::move(task), .number = number}));
    return number;
}

std::vector<URLRequest> ScriptedTransport::requests() const
{
    const std::lock_guard lock(state_->mutex);
    return state_->requests;
}

bool ScriptedTransport::waitUntilPlayed(std::chrono::milliseconds deadline) const
{
    std::unique_lock lock(state_->mutex);
    return state_->changed.wait_for(lock, deadline, [this] {
        return state_->replies.empty() && !state_->isDelivering
            && state_->player.unplayed().empty();
    });
}

} // namespace Tessel::Test
