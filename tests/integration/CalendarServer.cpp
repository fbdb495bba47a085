#include "tests/integration/CalendarServer.h"

#include <map>
#include <sstream>

namespace Tessel::Test {

const CalendarServer& CalendarServer::named(const std::string& name)
{
    static std::map<std::string, CalendarServer> servers;
    return servers.try_emplace(name, name).first->second;
}

CalendarServer::CalendarServer(const std::string& name)
    : keeper_({TESSEL_TEST_DATA "/keep-server", name})
{
    std::istringstream line(keeper_.line());
    std::string verdict;
    std::string port;
    line >> verdict >> std::ws;
    if (verdict == "ready" && line >> port >> authorityFile_) address_ = "127.0.0.1:" + port;
    if (verdict == "absent") std::getline(line, absence_);
}

} // namespace Tessel::Test
