#pragma once

#include "CaldavLibrary/MRVClient.h"
#include "CaldavLibrary/Operation/MRVOperation.h"
#include "support/ScriptedTransport.h"
#include "support/TestHost.h"

#include <memory>
#include <string>

namespace Tessel::Test {

/// A client of a known account whose server plays a script.
struct ClientSession {
    explicit ClientSession(Script script)
        : transport(std::make_shared<ScriptedTransport>(std::move(script)))
    {
        client->setSyncDelegate(host);
        client->setDataSource(host);
    }
    explicit ClientSession(const std::string& script)
        : ClientSession(Script::parse(script))
    {
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

    std::shared_ptr<ScriptedTransport> transport;
    UseTransport use {transport};
    std::shared_ptr<TestHost> host = std::make_shared<TestHost>();
    std::shared_ptr<MRVAccount> account = knownAccount();
    std::shared_ptr<MRVClient> client = std::make_shared<MRVClient>(account, host);
};

} // namespace Tessel::Test
