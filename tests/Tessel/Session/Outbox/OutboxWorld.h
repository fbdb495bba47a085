#pragma once

#include "Tessel/Session/Outbox/OutboxChange.h"
#include "tests/Tessel/Session/World.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace Tessel::Test {

/// A world with an outbox, whose store holds what the server does.
struct OutboxWorld : World {
    OutboxWorld() { EXPECT_TRUE(wait(session->sync(store))); }

    Sent send() const
    {
        const auto sent = wait(session->sendOutbox(store));
        EXPECT_TRUE(sent) << (sent ? "" : sent.reason());
        return sent ? sent.value() : Sent {};
    }
    std::vector<PendingChange> pending() const { return outbox.pending().value(); }
    Resource held(const std::string& place = "/home/a/one.ics") const
    {
        return store->resource(place.substr(0, place.rfind('/') + 1), place)
            .value()
            .value_or(Resource {});
    }
    std::string there(const std::string& place = "/home/a/one.ics") const
    {
        return server->text(place).value_or("");
    }
    /// All pauses have passed.
    void letTimePass() const
    {
        for (auto change : pending()) {
            change.notBefore = 0;
            EXPECT_TRUE(store->apply({.pending = {change}}));
        }
    }

    /// What a store holds, without stamps, by place; of the outbox as well.
    static std::map<std::string, std::string> content(Store& store)
    {
        std::map<std::string, std::string> content;
        for (const auto& calendar : store.calendars().value()) {
            const auto visited = store.visit(calendar.href, [&](const Resource& resource) {
                content.emplace(resource.href, resource.tag + "\n" + resource.text);
                return true;
            });
            EXPECT_TRUE(visited);
        }
        return content;
    }
    std::map<std::string, std::string> content() const
    {
        MemoryStore fresh;
        EXPECT_TRUE(wait(open("alice")->sync(std::shared_ptr<Store>(&fresh, [](Store*) {}))));
        return content(fresh);
    }

    std::shared_ptr<MemoryStore> store = std::make_shared<MemoryStore>();
    Outbox outbox {store};
};

inline std::string summary(const std::string& text)
{
    const auto event = EventText::read(text);
    return event ? event.value().main().summary().value_or("") : "";
}

} // namespace Tessel::Test
