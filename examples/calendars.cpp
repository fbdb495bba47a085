#include <Tessel/Tessel.h>

#include <chrono>
#include <cstdlib>
#include <future>
#include <iostream>

using namespace Tessel;

int main(int argc, char** argv)
{
    const auto* const password = std::getenv("PASSWORD");
    const auto origin = argc == 3 ? Origin::ofServer(argv[1]) : std::nullopt;
    if (!origin || !password) return 2;
    if (const auto* const authority = std::getenv("AUTHORITY")) // whom to trust, if not the system
        MNetworkManager::setSharedInstance(std::make_shared<MCurlNetworkManager>(
            MNetworkConfiguration {.authorityFile = authority}));
    const auto login = std::make_shared<PasswordAuth>(*origin, argv[2], password);
    const auto account = std::make_shared<MRVAccount>(
        MRVAccount {.identifier = "1", .email = argv[2], .serverURL = argv[1]});
    const auto listed = std::make_shared<std::promise<void>>();

    std::make_shared<MRVAccountInfoProvider>(account, login)->getAccountInfo([=](auto) {
        std::make_shared<MRVClient>(account, login)->getCalendars([=](auto calendars, auto) {
            if (calendars)
                for (const auto& calendar : *calendars)
                    std::cout << calendar->displayName << '\n';
            listed->set_value();
        });
    });
    // Some calls never answer.
    const auto end = listed->get_future().wait_for(std::chrono::seconds(30));
    if (end == std::future_status::ready) return 0;
    std::cerr << "No answer came. Is there a CalDAV server, and does it speak TLS?\n";
    return 1;
}
