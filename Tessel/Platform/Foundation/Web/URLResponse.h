#pragma once

#include "Tessel/Platform/Foundation/Base/Export.h"

#include <string>

namespace Tessel {

/// An answer of some protocol; `HTTPURLResponse` is the only kind that this library reads.
class TESSEL_EXPORT URLResponse {
public:
    explicit URLResponse(std::string url); ///< for a transport of one's own
    virtual ~URLResponse();

    const std::string url; ///< where the answer came from, after redirects
};

} // namespace Tessel
