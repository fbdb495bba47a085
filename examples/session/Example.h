#pragma once

#include <Tessel/TesselSession.h>

#include <cstdlib>
#include <iostream>
#include <utility>

// What the examples begin with: an account whose password is in $PASSWORD, and an end with a
// reason.
namespace Example {

/// What a call gave, or the end of the program with the reason.
template <class T> T got(Tessel::Result<T> result)
{
    if (!result) {
        std::cerr << result.reason() << '\n';
        std::exit(1);
    }
    if constexpr (!std::is_void_v<T>) return std::move(result).value();
}

/// libcurl's transport, which trusts the authorities in the file $AUTHORITY in place of the
/// system's.
inline std::shared_ptr<Tessel::MNetworkManager> transport()
{
    const auto* const authority = std::getenv("AUTHORITY");
    return std::make_shared<Tessel::MCurlNetworkManager>(
        Tessel::MNetworkConfiguration {.authorityFile = authority ? authority : ""});
}

/// The account of the arguments SERVER USER.
inline Tessel::Session::Opened open(
    int argc, char** argv, std::shared_ptr<Tessel::MNetworkManager> through = transport())
{
    const auto* const password = std::getenv("PASSWORD");
    if (argc < 3 || !password) {
        std::cerr << "usage: PASSWORD=... " << argv[0] << " SERVER USER [MORE]\n";
        std::exit(2);
    }
    Tessel::MNetworkManager::setSharedInstance(std::move(through));
    return got(wait(
        Tessel::Session::open({.server = argv[1], .user = argv[2]}, Tessel::Password {password})));
}

} // namespace Example
