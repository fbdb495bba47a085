#include "apps/tessel/Options.h"

#include <cstdlib>
#include <iostream>
#include <stdexcept>

#include <unistd.h>

namespace Tessel::App {

namespace {

std::string environment(const char* name)
{
    const char* value = std::getenv(name);
    return value ? value : "";
}

} // namespace

std::string defaultStoreFile()
{
    auto base = environment("XDG_DATA_HOME");
    if (base.empty()) base = environment("HOME") + "/.local/share";
    return base + "/tessel/store.sqlite";
}

std::string readPassword()
{
    auto password = environment("TESSEL_PASSWORD");
    if (!password.empty()) return password;
    if (isatty(STDIN_FILENO)) std::cerr << "Password: " << std::flush;
    if (!std::getline(std::cin, password) || password.empty()) {
        throw std::runtime_error("no password: set TESSEL_PASSWORD or give it on standard input");
    }
    if (password.ends_with('\r')) password.pop_back();
    return password;
}

} // namespace Tessel::App
