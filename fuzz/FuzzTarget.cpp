#include "fuzz/FuzzTarget.h"

#include "Tessel/Platform/Foundation/Base/FatalError.h"
#include "Tessel/Platform/Plinth/Logger.h"

#include <algorithm>
#include <memory>

namespace Tessel::Fuzz {

namespace {

/// Has every line written, to nowhere: server texts pass through the log as well.
struct Silence final : Plinth::Logger {
    bool isEnabled(Plinth::Level) const override { return true; }
    void write(Plinth::Level, std::string_view, const CallSite&) override { }
};

/// Thrown in place of the end of the process; a finding unless somebody expects it.
struct Stop : Finding {
    explicit Stop(std::string_view message)
        : Finding("the process stops: " + std::string(message))
        , message(message)
    {
    }
    std::string message;
};

std::vector<Target>& registered()
{
    static std::vector<Target> targets;
    return targets;
}

} // namespace

bool endsOrStopsFor(
    std::initializer_list<std::string_view> reasons, const std::function<void()>& read)
{
    try {
        read();
        return true;
    } catch (const Stop& stop) {
        if (std::none_of(reasons.begin(), reasons.end(),
                [&](std::string_view reason) { return stop.message.starts_with(reason); })) {
            throw;
        }
        return false;
    }
}

Target::Target(std::string_view name, Take take)
    : name(name)
    , take(take)
{
    registered().push_back(*this);
}

const std::vector<Target>& Target::all()
{
    static const bool prepared = [] {
        Plinth::setLogger(std::make_shared<Silence>());
        setFatalErrorLog([](std::string_view message, const CallSite&) { throw Stop(message); });
        return true;
    }();
    static_cast<void>(prepared);
    return registered();
}

} // namespace Tessel::Fuzz
