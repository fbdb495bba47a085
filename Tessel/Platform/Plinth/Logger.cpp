#include "Tessel/Platform/Plinth/Logger.h"

#include "Tessel/Platform/Foundation/Base/FatalError.h"

#include <spdlog/sinks/stdout_sinks.h>
#include <spdlog/spdlog.h>

#include <mutex>

namespace Plinth {

namespace {

spdlog::level::level_enum spdlogLevel(Level level)
{
    switch (level) {
    case Level::error:
        return spdlog::level::err;
    case Level::warning:
        return spdlog::level::warn;
    case Level::info:
        return spdlog::level::info;
    case Level::debug:
        break;
    }
    return spdlog::level::debug;
}

class DefaultLogger final : public Logger {
public:
    explicit DefaultLogger(Level level)
        : logger_("tessel", std::make_shared<spdlog::sinks::stderr_sink_mt>())
    {
        logger_.set_level(spdlogLevel(level));
        logger_.set_pattern("%Y-%m-%d %H:%M:%S.%e %l [%s:%#] %v");
    }

    bool isEnabled(Level level) const override { return logger_.should_log(spdlogLevel(level)); }

    void write(Level level, std::string_view line, const Tessel::CallSite& site) override
    {
        logger_.log(spdlog::source_loc {site.file, site.line, site.function}, spdlogLevel(level),
            spdlog::string_view_t(line.data(), line.size()));
    }

private:
    spdlog::logger logger_;
};

/// Never destroyed: worker threads may log while the process exits.
struct Slot {
    std::mutex mutex;
    std::shared_ptr<Logger> logger = makeDefaultLogger();

    static Slot& shared()
    {
        static Slot& slot = *new Slot;
        return slot;
    }
};

[[maybe_unused]] const bool logsFatalErrors = [] {
    Tessel::setFatalErrorLog([](std::string_view message, const Tessel::CallSite& site) {
        logger()->log({Level::error, site}, message);
    });
    return true;
}();

} // namespace

Logger::~Logger() = default;

std::shared_ptr<Logger> logger()
{
    auto& slot = Slot::shared();
    const std::lock_guard lock(slot.mutex);
    return slot.logger;
}

void setLogger(std::shared_ptr<Logger> logger)
{
    if (!logger) logger = makeDefaultLogger();
    auto& slot = Slot::shared();
    const std::lock_guard lock(slot.mutex);
    slot.logger.swap(logger);
}

std::shared_ptr<Logger> makeDefaultLogger(Level level)
{
    return std::make_shared<DefaultLogger>(level);
}

} // namespace Plinth
