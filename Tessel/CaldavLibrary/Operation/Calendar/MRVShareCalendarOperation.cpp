#include "Tessel/CaldavLibrary/Operation/Calendar/MRVShareCalendarOperation.h"

#include "Tessel/CaldavLibrary/Extensions/URLRequestExtension.h"
#include "Tessel/CaldavLibrary/Extensions/XMLDocumentText.h"
#include "Tessel/CaldavLibrary/Extensions/XMLNamespace.h"
#include "Tessel/CaldavLibrary/Operation/LogSite.h"
#include "Tessel/Platform/Plinth/Logger.h"

namespace Tessel {

namespace {

constexpr auto D = XMLNamespace::dav;
constexpr auto CS = XMLNamespace::calendarServer;

void addInvitation(GDataXMLElement& share, const MRVSharee& sharee, const MRVCalendar& calendar)
{
    auto set = share.addElement("set", CS);
    set.addElement("href", D, "mailto:" + sharee.email);
    set.addElement("summary", CS, calendar.displayName);
    const bool writes = sharee.access == MRVSharedCalendarAccess::readWrite;
    set.addElement(writes ? "read-write" : "read", CS);
}

void addRemoval(GDataXMLElement& share, const MRVSharee& sharee)
{
    share.addElement("remove", CS).addElement("href", D, "mailto:" + sharee.email);
}

} // namespace

std::string MRVShareCalendarOperation::body() const
{
    auto share = GDataXMLElement::elementWithName("share", CS);
    addXMLNamespaces(share);
    for (const auto& sharee : users) {
        if (sharee->status == MRVInviteStatus::deleted) addRemoval(share, *sharee);
        if (sharee->status == MRVInviteStatus::noResponse) addInvitation(share, *sharee, *calendar);
    }
    return xmlDocumentText(share);
}

void MRVShareCalendarOperation::main()
{
    URLRequest request(absoluteURL(calendar->href));
    request.method = "POST";
    setXMLBody(request, body());
    send(request);
}

void MRVShareCalendarOperation::read(
    const Data&, const std::optional<Error>& error, std::optional<int> statusCode)
{
    if (error) return;
    if (!statusCode) return Plinth::logger()->log(inMain(Plinth::Level::error), "unknown response");
    if (*statusCode == 200) completion(std::nullopt);
}

} // namespace Tessel
