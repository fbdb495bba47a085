#include "integration/ServerProcess.h"

#include "support/Callback.h"

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Tessel::Test {

namespace fs = std::filesystem;

std::string ServerProcess::whyUnavailable(const std::string& name)
{
    const auto program = name == "cyrus" ? "/usr/sbin/cyrmaster" : "/usr/bin/radicale";
    if (!fs::exists(program)) return std::string(program) + " is not installed";
    if (name == "cyrus" && geteuid() != 0) return "Cyrus is started by root only";
    return "";
}

ServerProcess::ServerProcess(const std::string& name)
{
    auto pattern = (fs::temp_directory_path() / "tessel-server-XXXXXX").string();
    if (!mkdtemp(pattern.data())) throw std::runtime_error("no temporary directory");
    directory_ = pattern;
    fs::permissions(directory_, fs::perms(0755)); // a server may run as a user of its own

    const auto identity = authority_.issue({"DNS:localhost", "IP:127.0.0.1"});
    const auto script = std::string(TESSEL_SCRIPTS) + "/lib/serve-" + name;
    const auto data = (directory_ / "data").string();
    process_ = fork();
    if (process_ == 0) {
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        execl(script.c_str(), script.c_str(), data.c_str(), identity.certificateFile.c_str(),
            identity.keyFile.c_str(), nullptr);
        _exit(127);
    }
    if (process_ < 0) throw std::runtime_error("cannot start a process");
    try {
        waitUntilReady();
    } catch (...) {
        stop();
        throw;
    }
}

ServerProcess::~ServerProcess()
{
    stop();
}

void ServerProcess::waitUntilReady()
{
    const auto portFile = directory_ / "data" / "port";
    bool hasEnded = false;
    waitFor([&] {
        hasEnded = waitpid(process_, nullptr, WNOHANG) != 0;
        return hasEnded || fs::exists(portFile);
    });
    if (hasEnded) process_ = -1;
    std::ifstream(portFile) >> port_;
    if (port_.empty()) throw std::runtime_error("the server did not start");
}

void ServerProcess::stop()
{
    if (process_ > 0) {
        kill(process_, SIGTERM);
        waitpid(process_, nullptr, 0);
    }
    std::error_code ignored;
    fs::remove_all(directory_, ignored);
}

} // namespace Tessel::Test
