#pragma once

#include "benchmarks/LoopbackServer.h"
#include "benchmarks/PlainClient.h"

#include <map>
#include <string>

namespace Tessel::Benchmarks {

struct PlainResource {
    std::string tag;
    std::string text;
};

/// A first sync with the least that it needs: the list of calendars, the tags of one, and its
/// resources by the hundred, each answer read into libxml2's tree and held in a tree of strings.
class PlainSync {
public:
    /// Of a `CannedCalendar`.
    explicit PlainSync(const LoopbackServer& server);

    /// The list of calendars alone, unread.
    void ask();
    std::map<std::string, PlainResource> sync();

private:
    PlainClient client_;
    const std::string home_;
    const std::string calendar_;
};

} // namespace Tessel::Benchmarks
