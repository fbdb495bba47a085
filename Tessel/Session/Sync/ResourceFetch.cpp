#include "Tessel/Session/Sync/ResourceFetch.h"

#include "Tessel/Platform/XML/GDataXMLElement.h"
#include "Tessel/Session/Exchange/AnswerFailure.h"
#include "Tessel/Session/Exchange/DavAnswer.h"
#include "Tessel/Session/Exchange/Href.h"
#include "Tessel/Session/Store/CalendarText.h"

#include <algorithm>
#include <unordered_map>

namespace Tessel {

namespace {

constexpr std::string_view dav = "DAV:";
constexpr std::string_view caldav = "urn:ietf:params:xml:ns:caldav";
constexpr std::string_view what = "The calendar's events could not be fetched";
constexpr std::size_t batchSize = 100;
constexpr std::size_t requestsAtOnce = 3;

std::string multiget(const std::vector<std::string>& places)
{
    auto root = GDataXMLElement::elementWithName("calendar-multiget", caldav);
    root.addNamespace("d", dav);
    root.addNamespace("c", caldav);
    auto prop = root.addElement("prop", dav);
    prop.addElement("getetag", dav);
    prop.addElement("calendar-data", caldav);
    for (const auto& place : places)
        root.addElement("href", dav, place);
    return R"(<?xml version="1.0" encoding="utf-8"?>)" + root.XMLString();
}

/// Whether one resource may have spoilt the answer for all that were asked for with it: a control
/// character in a text makes the whole no XML, and some servers fail over a text that they hold.
bool isOfOneResource(const Failure& failure)
{
    return failure.status != 0
        && (failure.kind == FailureKind::malformed || failure.kind == FailureKind::serverFault
            || failure.kind == FailureKind::tooLarge);
}

std::string whyMissing(const DavResponse& response)
{
    if (const auto status = response.refusal()) {
        return "the server answered " + std::to_string(status)
            + (response.words.empty() ? std::string() : " (" + response.words + ")");
    }
    return "the server sent no text for it";
}

FetchedBatch collect(const std::vector<std::string>& asked, const DavAnswer& answer)
{
    std::unordered_map<std::string, std::size_t> wanted;
    for (std::size_t i = 0; i < asked.size(); ++i)
        wanted.emplace(normalPath(asked[i]), i);

    FetchedBatch batch;
    std::vector<std::string> reasons(asked.size(), "the server did not answer for it");
    std::vector<bool> has(asked.size());
    for (const auto& response : answer.responses) {
        const auto found = wanted.find(normalPath(response.url));
        if (found == wanted.end() || has[found->second]) continue;
        const auto index = found->second;
        auto text = response.text("calendar-data", caldav);
        if (!text || text->empty()) {
            reasons[index] = whyMissing(response);
        } else if (!isCalendarText(*text)) {
            reasons[index] = "its text is no calendar";
        } else {
            has[index] = true;
            batch.resources.push_back(
                {asked[index], response.token("getetag", dav), std::move(*text)});
        }
    }
    for (std::size_t i = 0; i < asked.size(); ++i) {
        if (!has[i]) batch.failed.push_back({asked[i], reasons[i]});
    }
    return batch;
}

} // namespace

ResourceFetch::ResourceFetch(std::shared_ptr<Channel> channel, std::string calendar,
    std::vector<std::string> places, std::shared_ptr<CallState> call, Arrived arrived, Done done)
    : channel_(std::move(channel))
    , calendar_(std::move(calendar))
    , places_(std::move(places))
    , call_(std::move(call))
    , arrived_(std::move(arrived))
    , done_(std::move(done))
{
}

void ResourceFetch::start()
{
    if (places_.empty()) return done_(std::nullopt);
    for (std::size_t i = 0; i < requestsAtOnce; ++i)
        sendNext();
}

void ResourceFetch::sendNext()
{
    if (next_ == places_.size()) return;
    const auto end = std::min(next_ + batchSize, places_.size());
    const std::vector<std::string> asked(
        places_.begin() + std::ptrdiff_t(next_), places_.begin() + std::ptrdiff_t(end));
    next_ = end;
    ask(asked);
}

void ResourceFetch::ask(const std::vector<std::string>& asked)
{
    ++underWay_;
    channel_->send(
        {.method = "REPORT",
            .url = calendar_,
            .fields = {{"Depth", "1"}, {"Content-Type", "application/xml; charset=utf-8"}},
            .body = multiget(asked),
            .what = std::string(what)},
        call_,
        [self = shared_from_this(), asked](Result<Answer> result) { self->read(asked, result); });
}

void ResourceFetch::read(const std::vector<std::string>& asked, const Result<Answer>& result)
{
    --underWay_;
    if (isOver_) return;
    const auto fail = [&](const Failure& failure) {
        isOver_ = true;
        done_(failure);
    };
    const auto answer = result ? DavAnswer::read(result.value(), channel_->origin(), what)
                               : Result<DavAnswer>(result.failure());
    if (!answer && !isOfOneResource(answer.failure())) return fail(answer.failure());
    if (!answer && asked.size() > 1) {
        const auto half = asked.begin() + std::ptrdiff_t(asked.size() / 2);
        ask({asked.begin(), half});
        return ask({half, asked.end()});
    }
    sendNext();
    auto batch = answer ? collect(asked, answer.value())
                        : FetchedBatch {{}, {{asked.front(), answer.failure().reason}}};
    if (!arrived_(std::move(batch))) {
        isOver_ = true;
        return;
    }
    if (underWay_ > 0 || next_ < places_.size()) return;
    isOver_ = true;
    done_(std::nullopt);
}

} // namespace Tessel
