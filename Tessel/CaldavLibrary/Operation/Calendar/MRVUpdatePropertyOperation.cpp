#include "Tessel/CaldavLibrary/Operation/Calendar/MRVUpdatePropertyOperation.h"

#include "Tessel/CaldavLibrary/Extensions/URLRequestExtension.h"
#include "Tessel/CaldavLibrary/Extensions/XMLDocumentText.h"
#include "Tessel/CaldavLibrary/Extensions/XMLNamespace.h"
#include "Tessel/CaldavLibrary/Models/MRVCalendar.h"

namespace Tessel {

namespace {

/// The element of a property's key, in the namespace of display properties; null for an unknown
/// key.
const char* elementName(const std::string& key)
{
    if (key == MRVCalendar::propertyColor) return "calendar-color";
    if (key == MRVCalendar::propertyOrder) return "calendar-order";
    return nullptr;
}

std::optional<std::string> propertyUpdateBody(const std::map<std::string, std::string>& properties)
{
    auto update = GDataXMLElement::elementWithName("propertyupdate", XMLNamespace::dav);
    auto prop = update.addElement("set", XMLNamespace::dav).addElement("prop", XMLNamespace::dav);
    for (const auto& [key, value] : properties) {
        if (const auto name = elementName(key))
            prop.addElement(name, XMLNamespace::appleICal, value);
    }
    if (prop.children().empty()) return std::nullopt;
    MRVOperation::addXMLNamespaces(update);
    return xmlDocumentText(update);
}

} // namespace

void MRVUpdatePropertyOperation::main()
{
    auto body = propertyUpdateBody(properties);
    if (!body) {
        completionHandler(results({}));
        setDone(true);
        return;
    }
    URLRequest request(absoluteURL(url));
    request.method = "PROPPATCH";
    setXMLBody(request, std::move(*body));
    process(request, "Update Property", nullptr,
        [weak = weakly(this)](const Data& data, const auto& error, auto status) {
            const auto self = weak.lock();
            if (!self) return;
            std::optional<MRVPropertyParser::Statuses> statuses;
            if (!error && status == MRVStatusCode::multiStatus) {
                statuses = MRVPropertyParser(data, nullptr).parseProperties();
            }
            self->completionHandler(
                statuses ? std::optional(self->results(*statuses)) : std::nullopt);
        });
}

MRVUpdatePropertyOperation::Results MRVUpdatePropertyOperation::results(
    const MRVPropertyParser::Statuses& statuses) const
{
    Results results;
    for (const auto& [key, value] : properties) {
        const auto name = elementName(key);
        const auto found = name ? statuses.find({XMLNamespace::appleICal, name}) : statuses.end();
        const int status = found == statuses.end() ? 0 : found->second;
        results[key] = fromRawValue<MRVStatusCode>(status).value_or(MRVStatusCode::other);
    }
    return results;
}

} // namespace Tessel
