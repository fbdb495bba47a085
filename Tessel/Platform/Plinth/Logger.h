#pragma once

#include "Tessel/Platform/Foundation/Base/CallSite.h"
#include "Tessel/Platform/Foundation/Base/Export.h"

#include <concepts>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace Plinth {

/// Severity, most severe first.
enum class Level { error = 0, warning = 1, info = 2, debug = 3 };

/// A level together with the place that logs; made implicitly from a `Level` at that place.
struct LevelAtSite {
    /// The place is that of the call.
    LevelAtSite(Level level, const Tessel::CallSite& site = Tessel::CallSite::current())
        : level(level)
        , site(site)
    {
    }

    Level level; ///< how severe
    Tessel::CallSite site; ///< who logs
};

/// Takes the diagnostic lines of the library. A host replaces it by assigning its own to
/// `Tessel::Configuration`. Both functions are called from any thread, also at the same time.
class TESSEL_EXPORT Logger {
public:
    virtual ~Logger();

    /// Whether anybody would read a line of this level; a line that nobody reads is not built.
    virtual bool isEnabled(Level level) const = 0;
    /// Takes one line, without its end, of an enabled level.
    virtual void write(Level level, std::string_view line, const Tessel::CallSite& site) = 0;

    /// Logs one line made of the items' text: strings, numbers, optionals (absent as "nil"),
    /// everything with a `description()`, and functions that make an item when the line is built.
    template <class... Items> void log(LevelAtSite at, const Items&... items)
    {
        if (!isEnabled(at.level)) return;
        std::string line;
        (append(line, items), ...);
        write(at.level, line, at.site);
    }

private:
    static void append(std::string& line, std::string_view item) { line += item; }
    static void append(std::string& line, std::integral auto item) { line += std::to_string(item); }
    template <class Item> static void append(std::string& line, const std::optional<Item>& item)
    {
        item ? append(line, *item) : append(line, "nil");
    }
    template <class Item>
    requires requires(const Item& item) { item.description(); }
    static void append(std::string& line, const Item& item) { line += item.description(); }
    static void append(std::string& line, const std::invocable auto& makeItem)
    {
        append(line, makeItem());
    }
};

/// The logger of this process, never null. Rooms below `Tessel::Configuration`, where a host sets
/// it, take it from here.
TESSEL_EXPORT std::shared_ptr<Logger> logger();
/// Replaces the logger for lines written from now on; null brings the default one back.
TESSEL_EXPORT void setLogger(std::shared_ptr<Logger> logger);

/// The logger that is used until a host sets its own: spdlog to standard error, silent below
/// errors until `level` is raised.
TESSEL_EXPORT std::shared_ptr<Logger> makeDefaultLogger(Level level = Level::error);

} // namespace Plinth
