#include "Tessel/Session/Opening/ServiceAnswer.h"

#include <ares.h>

#include <algorithm>
#include <memory>
#include <random>

namespace Tessel {

namespace {

constexpr int internet = 1;
constexpr int typeTXT = 16;
constexpr int typeSRV = 33;

} // namespace

void ServiceAnswer::ask(ares_channeldata* channel, const std::string& name)
{
    ares_query(channel, name.c_str(), internet, typeSRV, readTargets, this);
    ares_query(channel, name.c_str(), internet, typeTXT, readPath, this);
}

void ServiceAnswer::readTargets(void* self, int status, int, unsigned char* bytes, int size)
{
    ares_srv_reply* replies = nullptr;
    if (status != ARES_SUCCESS || ares_parse_srv_reply(bytes, size, &replies) != ARES_SUCCESS)
        return;
    const std::unique_ptr<ares_srv_reply, decltype(&ares_free_data)> owner(replies, ares_free_data);
    for (const auto* each = replies; each; each = each->next) {
        static_cast<ServiceAnswer*>(self)->targets_.push_back(
            {each->host, each->port, each->priority, each->weight});
    }
}

void ServiceAnswer::readPath(void* self, int status, int, unsigned char* bytes, int size)
{
    ares_txt_ext* replies = nullptr;
    if (status != ARES_SUCCESS || ares_parse_txt_reply_ext(bytes, size, &replies) != ARES_SUCCESS)
        return;
    const std::unique_ptr<ares_txt_ext, decltype(&ares_free_data)> owner(replies, ares_free_data);
    constexpr std::string_view key = "path=/";
    for (const auto* each = replies; each; each = each->next) {
        const std::string_view text(reinterpret_cast<const char*>(each->txt), each->length);
        if (text.starts_with(key))
            static_cast<ServiceAnswer*>(self)->path_ = text.substr(key.size() - 1);
    }
}

std::vector<ServiceAnswer::Target> ServiceAnswer::targets() const
{
    // Within a priority by chance, in proportion to the weights.
    std::mt19937 random(std::random_device {}());
    std::vector<std::pair<double, Target>> ranked;
    for (const auto& target : targets_) {
        // A sole "." says that there is no such service (RFC 2782).
        if (target.host.empty() || target.host == ".") continue;
        std::exponential_distribution<double> chance(std::max<double>(target.weight, 0.01));
        ranked.emplace_back(chance(random), target);
    }
    std::sort(ranked.begin(), ranked.end(), [](const auto& a, const auto& b) {
        return std::pair(a.second.priority, a.first) < std::pair(b.second.priority, b.first);
    });
    std::vector<Target> targets;
    targets.reserve(ranked.size());
    for (auto& [rank, target] : ranked)
        targets.push_back(std::move(target));
    return targets;
}

} // namespace Tessel
