#pragma once

#include "Tessel/Platform/Foundation/Base/Error.h"
#include "Tessel/Platform/Foundation/Web/HTTPURLResponse.h"
#include "Tessel/Platform/Transport/AnswerCollector.h"
#include "Tessel/Platform/Transport/FieldList.h"
#include "Tessel/Platform/Transport/SentTask.h"

#include <curl/curl.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>

namespace Tessel {

/// One libcurl handle, used for one exchange after the other.
class Transfer {
public:
    using Clock = std::chrono::steady_clock;

    Transfer();
    ~Transfer();
    Transfer(const Transfer&) = delete;
    Transfer& operator=(const Transfer&) = delete;

    CURL* handle() const { return handle_; }
    /// Of the exchange's task.
    int number() const { return exchange_->number; }

    /// Makes the handle ready for the exchange's request. An error when the request cannot go on
    /// the wire; the exchange has been taken all the same.
    std::optional<Error> prepare(std::unique_ptr<SentTask> exchange);

    /// The next moment at which `isStalled` has something new to say.
    Clock::time_point nextCheck() const { return nextCheck_; }
    /// Whether nothing has moved in either direction for the request's `timeoutInterval`.
    bool isStalled(Clock::time_point now);

    /// Why the exchange ended with `code`; none when an answer is there.
    std::optional<Error> failure(CURLcode code) const;
    /// The answer's head, to be asked once.
    std::shared_ptr<const HTTPURLResponse> takeResponse();
    /// The answer's body, to be asked once.
    Data takeBody() { return Data(std::move(answer_.body)); }
    /// Hands the exchange back; the handle is free for the next.
    std::unique_ptr<SentTask> release();

private:
    static std::size_t onHeader(char* bytes, std::size_t size, std::size_t count, void* self);
    static std::size_t onBody(char* bytes, std::size_t size, std::size_t count, void* self);
    static int onSending(void* self, char*, char*, int, int);
    static CURLcode onTLSContext(CURL*, void* context, void*);
    void setMethodAndBody(const URLRequest& request);
    void setConfiguration(const std::shared_ptr<const MNetworkConfiguration>& configuration);
    curl_off_t bytesMoved() const;

    CURL* handle_;
    FieldList fields_;
    std::unique_ptr<SentTask> exchange_;
    std::shared_ptr<const MNetworkConfiguration> configuration_;
    AnswerCollector answer_ {0};
    char errorText_[CURL_ERROR_SIZE] = {};
    bool mayBeSentAgain_ = false;
    bool hasBeenSent_ = false;

    Clock::duration interval_ {};
    Clock::time_point movedAt_;
    Clock::time_point nextCheck_;
    curl_off_t moved_ = 0;
};

} // namespace Tessel
