#pragma once

#include "apps/tessel/output/Json.h"

#include <string>

namespace Tessel::App {

/// Passwords and tokens, which a server may repeat and nothing may show. From any thread.
class Secrets {
public:
    Secrets() = delete;

    /// One that is masked from now on, as it is and as servers write it: any of its characters
    /// escaped for XML, HTML, URLs or JSON, in UTF-8 or Latin-1, and wherever in Base64 it stands.
    static void add(const std::string& secret);
    /// The text with "***" for each.
    static std::string masked(std::string text);
    /// The same of every text in it.
    static Json masked(Json json);
};

} // namespace Tessel::App
