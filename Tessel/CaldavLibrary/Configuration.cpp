#include "Tessel/CaldavLibrary/Configuration.h"

namespace Tessel {

Configuration& Configuration::shared()
{
    static Configuration configuration;
    return configuration;
}

std::shared_ptr<Plinth::Logger> Configuration::logger() const
{
    return Plinth::logger();
}

void Configuration::setLogger(std::shared_ptr<Plinth::Logger> logger)
{
    Plinth::setLogger(std::move(logger));
}

} // namespace Tessel
