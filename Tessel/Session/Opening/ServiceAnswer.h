#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct ares_channeldata;

namespace Tessel {

/// What DNS says about one service of a domain (RFC 2782, RFC 6764, 3 to 5): collected from the
/// answers to two questions, which come one after another while a channel of c-ares is served.
class ServiceAnswer {
public:
    /// Asks for SRV and TXT of a name such as "_caldavs._tcp.example.com". It must outlive the
    /// channel.
    void ask(ares_channeldata* channel, const std::string& name);

    struct Target {
        std::string host;
        std::uint16_t port;
        std::uint16_t priority;
        std::uint16_t weight;
    };
    /// In the order in which they are to be tried; none where the domain says that it has no such
    /// service.
    std::vector<Target> targets() const;
    /// Where to begin; empty where nothing is said.
    const std::string& path() const { return path_; }

private:
    static void readTargets(void* self, int status, int, unsigned char* bytes, int size);
    static void readPath(void* self, int status, int, unsigned char* bytes, int size);

    std::vector<Target> targets_;
    std::string path_;
};

} // namespace Tessel
