#pragma once

#include "Tessel/Session/Outcome/Call.h"
#include "Tessel/Session/Outcome/CallState.h"

#include <memory>
#include <optional>
#include <utility>

namespace Tessel {

/// The working side of a call: what a session's code ends.
template <class T> class PendingCall final : public CallState {
public:
    PendingCall(Executor executor, Continuation<T> continuation)
        : CallState(std::move(executor))
        , isTold_(continuation != nullptr)
        , continuation_(std::move(continuation))
    {
    }

    void end(Result<T> result)
    {
        const auto self = own(); // whoever waits may be the last to hold it
        std::function<void()> tell;
        if (isTold_) {
            tell = [self] {
                const auto continuation = std::exchange(self->continuation_, nullptr);
                continuation(*self->result_);
            };
        }
        finish([&] { result_ = std::move(result); }, std::move(tell));
    }
    void fail(Failure failure) override { end(std::move(failure)); }

    Call<T> call()
    {
        const auto self = own();
        return {self, {self, &self->result_}};
    }

private:
    std::shared_ptr<PendingCall> own()
    {
        return std::static_pointer_cast<PendingCall>(shared_from_this());
    }

    std::optional<Result<T>> result_;
    const bool isTold_;
    Continuation<T> continuation_;
};

} // namespace Tessel
