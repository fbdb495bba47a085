#pragma once

#include <string>
#include <vector>

namespace Tessel::App {

/// What every command is told.
struct Options {
    std::string server;
    std::vector<std::string> otherServers; ///< those that may be given the password too
    std::string user;
    std::string email; ///< the user's address; the user's name when empty
    std::string authorityFile;
    std::string storeFile;
    int timeoutSeconds = 60;
    bool json = false;
    bool verbose = false;
};

/// Below XDG_DATA_HOME, or the home directory.
std::string defaultStoreFile();

/// From the variable TESSEL_PASSWORD, or else the first line of standard input. Throws
/// `std::runtime_error` when there is neither.
std::string readPassword();

} // namespace Tessel::App
