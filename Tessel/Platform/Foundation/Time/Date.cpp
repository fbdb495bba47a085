#include "Tessel/Platform/Foundation/Time/Date.h"

#include <chrono>

namespace Tessel {

Date::Date()
    : milliseconds_(std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::system_clock::now().time_since_epoch())
                        .count())
{
}

} // namespace Tessel
