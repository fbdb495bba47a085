#pragma once

#include "Tessel/Platform/Foundation/Web/URLRequest.h"

#include <curl/curl.h>

#include <string>
#include <string_view>
#include <vector>

namespace Tessel {

/// The header fields of a request as libcurl takes them. It keeps its memory from one request to
/// the next.
class FieldList {
public:
    /// Valid until the next call.
    curl_slist* assign(const URLRequest& request);

private:
    void add(std::string_view name, std::string_view separator, std::string_view value);

    std::string lines_; ///< each with a NUL at its end
    std::vector<curl_slist> nodes_;
};

} // namespace Tessel
