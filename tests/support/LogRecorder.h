#pragma once

#include "Tessel/Platform/Plinth/Logger.h"

#include <algorithm>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace Tessel::Test {

/// Keeps every log line while it lives.
class LogRecorder {
public:
    LogRecorder() { Plinth::setLogger(logger_); }
    ~LogRecorder() { Plinth::setLogger(nullptr); }
    LogRecorder(const LogRecorder&) = delete;
    LogRecorder& operator=(const LogRecorder&) = delete;

    std::vector<std::string> lines() const
    {
        const std::lock_guard lock(logger_->mutex);
        return logger_->lines;
    }
    bool holds(const std::string& line) const
    {
        const auto all = lines();
        return std::find(all.begin(), all.end(), line) != all.end();
    }

    /// The functions that the lines name.
    std::set<std::string> functions() const
    {
        const std::lock_guard lock(logger_->mutex);
        return logger_->functions;
    }

private:
    struct Recorder final : Plinth::Logger {
        bool isEnabled(Plinth::Level) const override { return true; }
        void write(Plinth::Level, std::string_view line, const CallSite& site) override
        {
            const std::lock_guard lock(mutex);
            lines.emplace_back(line);
            functions.emplace(site.function);
        }

        mutable std::mutex mutex;
        std::vector<std::string> lines;
        std::set<std::string> functions;
    };

    std::shared_ptr<Recorder> logger_ = std::make_shared<Recorder>();
};

} // namespace Tessel::Test
