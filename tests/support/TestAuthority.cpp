#include "tests/support/TestAuthority.h"

#include <cstdlib>
#include <stdexcept>

namespace Tessel::Test {

namespace {

void run(const std::string& command)
{
    if (std::system(command.c_str()) != 0)
        throw std::runtime_error("test authority: cannot " + command);
}

} // namespace

TestAuthority::TestAuthority()
{
    make("");
    std::filesystem::create_directory(directory());
    std::filesystem::copy(file(), directory());
    run("openssl rehash '" + directory() + "'");
}

void TestAuthority::make(const std::string& certificate) const
{
    run(TESSEL_SCRIPTS "/lib/make-authority '" + directory_.path().string() + "' " + certificate);
}

Identity TestAuthority::issue(const std::vector<std::string>& names, bool isExpired)
{
    std::string list;
    for (const auto& name : names)
        list += (list.empty() ? "" : ",") + name;
    const auto name = std::to_string(++issued_);
    make(name + " " + list + (isExpired ? " -1" : ""));
    const auto path = (directory_.path() / name).string();
    return {path + ".pem", path + ".key"};
}

} // namespace Tessel::Test
