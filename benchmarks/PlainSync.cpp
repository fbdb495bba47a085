#include "benchmarks/PlainSync.h"

#include "benchmarks/CannedCalendar.h"

#include <algorithm>
#include <vector>

namespace Tessel::Benchmarks {

namespace {

constexpr std::size_t batchSize = 100;

const std::string listing
    = "<d:propfind xmlns:d=\"DAV:\" xmlns:c=\"urn:ietf:params:xml:ns:caldav\" "
      "xmlns:cs=\"http://calendarserver.org/ns/\" xmlns:i=\"http://apple.com/ns/ical/\"><d:prop>"
      "<d:resourcetype/><d:displayname/><d:current-user-privilege-set/><d:sync-token/>"
      "<c:calendar-description/><c:calendar-timezone/><c:supported-calendar-component-set/>"
      "<cs:getctag/><i:calendar-color/><i:calendar-order/></d:prop></d:propfind>";
const std::string tags
    = "<d:propfind xmlns:d=\"DAV:\"><d:prop><d:getetag/><d:resourcetype/></d:prop></d:propfind>";

std::string multiget(const std::vector<std::string>& hrefs, std::size_t first, std::size_t end)
{
    std::string body = "<c:calendar-multiget xmlns:d=\"DAV:\" "
                       "xmlns:c=\"urn:ietf:params:xml:ns:caldav\"><d:prop><d:getetag/>"
                       "<c:calendar-data/></d:prop>";
    for (auto i = first; i < end; ++i)
        body += "<d:href>" + hrefs[i] + "</d:href>";
    return body + "</c:calendar-multiget>";
}

bool isNamed(const xmlNode* node, std::string_view name)
{
    return name == reinterpret_cast<const char*>(node->name);
}

const xmlNode* child(const xmlNode* node, std::string_view name)
{
    for (node = node ? node->children : nullptr; node; node = node->next)
        if (isNamed(node, name)) return node;
    return nullptr;
}

std::string text(const xmlNode* node)
{
    std::string text;
    for (node = node ? node->children : nullptr; node; node = node->next)
        if (node->content) text += reinterpret_cast<const char*>(node->content);
    return text;
}

template <class Visit> void eachResponse(const PlainClient::Document& document, Visit visit)
{
    const auto* node = xmlDocGetRootElement(document.get())->children;
    for (; node; node = node->next)
        if (isNamed(node, "response")) visit(node, child(child(node, "propstat"), "prop"));
}

} // namespace

PlainSync::PlainSync(const LoopbackServer& server)
    : home_(server.url(CannedCalendar::home))
    , calendar_(server.url(CannedCalendar::place))
{
}

void PlainSync::ask()
{
    client_.send("PROPFIND", home_, listing);
}

std::map<std::string, PlainResource> PlainSync::sync()
{
    PlainClient::read(client_.send("PROPFIND", home_, listing));
    std::vector<std::string> hrefs;
    eachResponse(PlainClient::read(client_.send("PROPFIND", calendar_, tags)),
        [&](const xmlNode* response, const xmlNode* properties) {
            if (child(properties, "getetag")) hrefs.push_back(text(child(response, "href")));
        });
    std::map<std::string, PlainResource> held;
    for (std::size_t first = 0; first < hrefs.size(); first += batchSize) {
        const auto body = multiget(hrefs, first, std::min(first + batchSize, hrefs.size()));
        eachResponse(PlainClient::read(client_.send("REPORT", calendar_, body)),
            [&](const xmlNode* response, const xmlNode* properties) {
                held.emplace(text(child(response, "href")),
                    PlainResource {text(child(properties, "getetag")),
                        text(child(properties, "calendar-data"))});
            });
    }
    return held;
}

} // namespace Tessel::Benchmarks
