// Brings an account's calendars into a file and says what is new. The password is in $PASSWORD.
// usage: sync SERVER USER
#include <Tessel/TesselSession.h>

#include <cstdlib>
#include <iostream>

using namespace Tessel;

namespace {

int failed(const std::string& reason)
{
    std::cerr << reason << '\n';
    return 1;
}

} // namespace

int main(int argc, char** argv)
{
    const auto* const password = std::getenv("PASSWORD");
    if (argc != 3 || !password) return 2;
    if (const auto* const authority = std::getenv("AUTHORITY")) // whom to trust, if not the system
        MNetworkManager::setSharedInstance(std::make_shared<MCurlNetworkManager>(
            MNetworkConfiguration {.authorityFile = authority}));

    const auto session
        = wait(Session::open({.server = argv[1], .user = argv[2]}, Password {password}));
    if (!session) return failed(session.reason());
    const auto store = SQLiteStore::open("calendars.db", {argv[2], session.value()->origin()});
    if (!store) return failed(store.reason());
    const auto synced = wait(session.value()->sync(store.value()));
    if (!synced) return failed(synced.reason());

    for (const auto& calendar : synced.value().calendars) {
        std::cout << calendar.displayName << ": " << calendar.added.size() << " new, "
                  << calendar.edited.size() << " changed, " << calendar.deleted.size() << " gone\n";
        for (const auto& resource : calendar.failed)
            std::cout << "  not brought: " << resource.href << ": " << resource.reason << '\n';
        if (calendar.failure) std::cout << "  stopped: " << calendar.failure->reason << '\n';
    }
    return synced.value().isComplete() ? 0 : 1;
}
