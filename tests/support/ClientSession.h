#pragma once

#include "Tessel/CaldavLibrary/MRVClient.h"
#include "Tessel/CaldavLibrary/Operation/MRVOperation.h"
#include "tests/support/ScriptedTransport.h"
#include "tests/support/TestHost.h"

#include <memory>
#include <string>
#include <utility>

namespace Tessel::Test {

/// A script of the test's own folder.
inline Script loadScript(const std::string& name)
{
    return Script::load(std::string(TESSEL_TEST_DATA) + "/scripts/" + name);
}

/// A client of a known account on a transport of the test.
struct HostSession {
    explicit HostSession(std::shared_ptr<MNetworkManager> transport)
        : use(std::move(transport))
    {
        client->setSyncDelegate(host);
        client->setDataSource(host);
    }

    /// Runs an operation of the client until it has finished.
    template <class SomeOperation>
    void finish(const std::shared_ptr<SomeOperation>& operation) const
    {
        operation->client = client;
        OperationQueue queue;
        queue.addOperation(operation);
        queue.waitUntilAllOperationsAreFinished();
    }

    /// Lets go of the client; true once none of its calls holds it any more.
    bool ends()
    {
        const std::weak_ptr left(std::exchange(client, nullptr));
        return waitFor([&left] { return left.expired(); });
    }

    UseTransport use;
    std::shared_ptr<TestHost> host = std::make_shared<TestHost>();
    std::shared_ptr<MRVAccount> account = knownAccount();
    std::shared_ptr<MRVClient> client = std::make_shared<MRVClient>(account, host);
    std::shared_ptr<MRVCalendar> calendar = calendarAt("/cal/", account);
};

/// The same with a server that plays a script.
struct ClientSession : HostSession {
    explicit ClientSession(Script script)
        : ClientSession(std::make_shared<ScriptedTransport>(std::move(script)))
    {
    }
    explicit ClientSession(const std::string& script)
        : ClientSession(Script::parse(script))
    {
    }

    const std::shared_ptr<ScriptedTransport> transport;

private:
    explicit ClientSession(const std::shared_ptr<ScriptedTransport>& playing)
        : HostSession(playing)
        , transport(playing)
    {
    }
};

} // namespace Tessel::Test
