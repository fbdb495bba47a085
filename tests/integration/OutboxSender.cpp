#include "Tessel/Platform/Transport/MCurlNetworkManager.h"
#include "Tessel/Session/Session.h"

#include <iostream>

// Sends the outbox of a store until nothing waits that may be sent by now. It is killed meanwhile.
// usage: OutboxSender SERVER AUTHORITY-FILE STORE-FILE

using namespace Tessel;

int main(int count, char** arguments)
{
    if (count != 4) return 2;
    MNetworkManager::setSharedInstance(std::make_shared<MCurlNetworkManager>(
        MNetworkConfiguration {.authorityFile = arguments[2]}));
    const auto opened = wait(Session::open({.server = arguments[1], .user = "alice"},
        Password {"secret"}, {}, {.patience = std::chrono::milliseconds(1500)}));
    const auto store = SQLiteStore::open(
        arguments[3], {.user = "alice", .origin = Origin::ofServer(arguments[1]).value()});
    if (!opened || !store) {
        std::cerr << (opened ? store.reason() : opened.reason()) << "\n";
        return 1;
    }
    const auto sent = wait(opened.value()->sendOutbox(store.value()));
    return sent && sent.value().parked.empty() ? 0 : 1;
}
