#include "Tessel/Session/Sync/ResourceFetch.h"

#include "Tessel/Platform/XML/GDataXMLElement.h"
#include "Tessel/Session/Exchange/AnswerFailure.h"
#include "Tessel/Session/Exchange/DavAnswer.h"
#include "Tessel/Session/Exchange/Href.h"
#include "Tessel/Session/Store/CalendarText.h"

#include <algorithm>
#include <iterator>
#include <unordered_map>

namespace Tessel {

namespace {

using namespace XMLNamespace;
std::string whatFails(std::size_t asked)
{
    return asked == 1 ? "The event could not be fetched"
                      : "The calendar's events could not be fetched";
}

constexpr std::size_t batchSize = 100;
constexpr std::size_t requestsAtOnce = 3;
/// After so many refusals in a row it is not the resources that are at fault.
constexpr int mostFailuresInARow = 50;

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
    const bool isOfGateway = failure.status == 502 || failure.status == 504;
    return failure.status != 0 && !isOfGateway
        && (failure.kind == FailureKind::malformed || failure.kind == FailureKind::serverFault
            || failure.kind == FailureKind::tooLarge);
}

/// Readers of XML make a line feed of each line end (XML 1.0, 2.11): where a server has not written
/// "&#13;" (Radicale, DAViCal, Xandikos), none is as RFC 5545, 3.1, wants it any more.
std::string withLineEnds(std::string text)
{
    if (text.find('\r') != text.npos) return text;
    std::string whole;
    whole.reserve(text.size() + std::size_t(std::count(text.begin(), text.end(), '\n')));
    for (std::size_t start = 0; start < text.size();) {
        const auto end = std::min(text.find('\n', start), text.size());
        whole.append(text, start, end - start);
        if (end < text.size()) whole += "\r\n";
        start = end + 1;
    }
    return whole;
}

std::string whyMissing(const DavResponse& response)
{
    if (const auto status = response.refusal()) {
        return "the server answered " + std::to_string(status)
            + (response.words.empty() ? std::string() : " (" + response.words + ")");
    }
    return "the server sent no text for it";
}

/// Puts the answer to one request together.
class Collector {
public:
    explicit Collector(const std::vector<std::string>& asked)
        : asked_(asked)
        , reasons_(asked.size(), "the server did not answer for it")
        , has_(asked.size())
    {
        for (std::size_t i = 0; i < asked.size(); ++i)
            numbers_.emplace(normalPath(asked[i]), i);
        batch_.resources.reserve(asked.size());
    }

    void add(const DavResponse& response);
    FetchedBatch take();

private:
    const std::vector<std::string>& asked_;
    std::unordered_map<std::string, std::size_t> numbers_;
    std::vector<std::string> reasons_;
    std::vector<bool> has_;
    FetchedBatch batch_;
};

void Collector::add(const DavResponse& response)
{
    const auto found = numbers_.find(normalPath(response.url));
    if (found == numbers_.end() || has_[found->second]) return;
    const auto index = found->second;
    auto text = response.text("calendar-data", caldav);
    if (!text || text->empty()) {
        reasons_[index] = whyMissing(response);
    } else if (!isCalendarText(*text)) {
        reasons_[index] = "its text is no calendar";
    } else {
        has_[index] = true;
        batch_.resources.push_back(
            {asked_[index], response.token("getetag", dav), withLineEnds(std::move(*text))});
    }
}

FetchedBatch Collector::take()
{
    for (std::size_t i = 0; i < asked_.size(); ++i) {
        if (!has_[i]) batch_.failed.push_back({asked_[i], std::move(reasons_[i])});
    }
    return std::move(batch_);
}

} // namespace

ResourceFetch::ResourceFetch(std::shared_ptr<Channel> channel, std::string calendar,
    std::deque<std::string> places, std::shared_ptr<CallState> call, Arrived arrived, Done done)
    : channel_(std::move(channel))
    , calendar_(std::move(calendar))
    , call_(std::move(call))
    , arrived_(std::move(arrived))
    , done_(std::move(done))
    , places_(std::move(places))
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
    const auto end = places_.begin() + std::ptrdiff_t(std::min(batchSize, places_.size()));
    if (end == places_.begin()) return;
    std::vector<std::string> asked(
        std::make_move_iterator(places_.begin()), std::make_move_iterator(end));
    places_.erase(places_.begin(), end);
    ask(std::move(asked));
}

void ResourceFetch::ask(std::vector<std::string> places)
{
    ++underWay_;
    const auto asked = std::make_shared<const std::vector<std::string>>(std::move(places));
    const auto what = whatFails(asked->size());
    channel_->sendAndRead<FetchedBatch>(
        {.method = "REPORT",
            .url = calendar_,
            .fields = {{"Depth", "1"}, {"Content-Type", davType}},
            .body = multiget(*asked),
            .what = what},
        call_,
        [channel = channel_, asked, what](const Answer& answer) -> Result<FetchedBatch> {
            Collector collector(*asked);
            const auto read = DavAnswer::visit(answer, channel->origin(), what,
                [&](const DavResponse& response) { collector.add(response); });
            if (!read) return read.failure();
            return collector.take();
        },
        [self = shared_from_this(), asked](
            Result<FetchedBatch> batch) { self->take(*asked, std::move(batch)); });
}

void ResourceFetch::take(const std::vector<std::string>& asked, Result<FetchedBatch> batch)
{
    --underWay_;
    if (isOver_) return;
    failuresInARow_ = batch ? 0 : failuresInARow_ + 1;
    const bool isHopeless = failuresInARow_ > mostFailuresInARow;
    if (!batch && (isHopeless || !isOfOneResource(batch.failure()))) {
        isOver_ = true;
        return done_(batch.failure());
    }
    if (!batch && asked.size() > 1) {
        const auto half = asked.begin() + std::ptrdiff_t(asked.size() / 2);
        ask({asked.begin(), half});
        return ask({half, asked.end()});
    }
    auto taken = batch ? std::move(batch.value())
                       : FetchedBatch {{}, {{asked.front(), batch.failure().reason}}};
    if (!arrived_(std::move(taken))) {
        isOver_ = true;
        return;
    }
    sendNext();
    if (underWay_ > 0) return;
    isOver_ = true;
    done_(std::nullopt);
}

} // namespace Tessel
