#include "tests/support/ScriptedTransport.h"

#include "Tessel/Platform/Transport/MNetworkError.h"
#include "Tessel/Platform/Transport/Redirect.h"
#include "Tessel/Platform/Transport/RequestFields.h"
#include "tests/support/Message.h"
#include "tests/support/ScriptPlayer.h"

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>

namespace Tessel::Test {

namespace {

/// A task with its answer, on its way to the completion handler.
struct Reply {
    MTask task;
    ScriptedAnswer answer;
    int number = 0;
    bool isRedirected = false;
};

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
    std::vector<URLRequest> requests;
    std::deque<Reply> replies;
    bool isDelivering = false;
    bool stopping = false;
    int lastNumber = 0;
};

void ScriptedTransport::State::submit(MTask task, int number, bool isRedirected)
{
    const std::lock_guard lock(mutex);
    requests.push_back(task.request);
    auto answer = player.play(task.request);
    replies.push_back({std::move(task), std::move(answer), number, isRedirected});
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
    auto& [task, answer, number, isRedirected] = reply;
    if (answer.error) return fail(task, *answer.error, number);
    std::shared_ptr<const URLResponse> response;
    Data body;
    if (answer.isNotHTTP) {
        response = std::make_shared<const URLResponse>(task.request.url());
    } else if (!answer.hasNoResponse) {
        const auto parsed = parseAnswer(task.request.url(), answer.bytes);
        if (redirect(reply, *parsed.first)) return;
        std::tie(response, body) = parsed;
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
