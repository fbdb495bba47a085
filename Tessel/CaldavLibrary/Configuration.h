#pragma once

#include "Tessel/Platform/Foundation/Base/Export.h"
#include "Tessel/Platform/Plinth/Logger.h"

#include <memory>

namespace Tessel {

/// What a host can set for the whole process. Safe from any thread.
class TESSEL_EXPORT Configuration {
public:
    static Configuration& shared(); ///< the one of the process

    /// Takes every diagnostic line of the library; never null. The default one writes errors to
    /// standard error and nothing else.
    std::shared_ptr<Plinth::Logger> logger() const;
    void setLogger(std::shared_ptr<Plinth::Logger> logger); ///< null brings the default one back

private:
    Configuration() = default;
};

} // namespace Tessel
