#include "Tessel/CaldavLibrary/Parsers/MRVNotificationParser.h"

#include "Tessel/CaldavLibrary/Extensions/DateExtension.h"
#include "Tessel/CaldavLibrary/Extensions/Mailto.h"
#include "Tessel/CaldavLibrary/Extensions/XMLNamespace.h"

namespace Tessel {

namespace {

constexpr auto D = XMLNamespace::dav;
constexpr auto CS = XMLNamespace::calendarServer;

using Element = std::optional<GDataXMLElement>;

Element child(const Element& parent, const char* name, const char* uri = CS)
{
    if (!parent) return std::nullopt;
    return parent->first(name, uri);
}

std::string text(const Element& element)
{
    if (!element) return "";
    return element->stringValue().value_or("");
}

/// The date of a notification; a text that is no date counts as none.
std::optional<Date> dateStamp(const Element& root)
{
    const auto stamp = child(root, "dtstamp");
    if (!stamp) return std::nullopt;
    return iCalDateTimeIfReadable(text(stamp));
}

MRVInviteStatus replyStatus(const GDataXMLElement& reply)
{
    if (reply.first("invite-accepted", CS)) return MRVInviteStatus::accepted;
    if (reply.first("invite-declined", CS)) return MRVInviteStatus::declined;
    return MRVInviteStatus::noResponse;
}

std::shared_ptr<MRVNotification> reply(
    const GDataXMLElement& element, const Date& date, std::shared_ptr<MRVAccount> account)
{
    const auto hostURL = child(element.first("hosturl", CS), "href", D);
    const auto href = element.first("href", D);
    if (!hostURL || !href) return nullptr;

    return std::make_shared<MRVNotification>(MRVNotification {
        .account = std::move(account),
        .href = text(href),
        .hostURL = text(hostURL),
        .summary = text(element.first("summary", CS)),
        .date = date,
        .shareeEmail = withoutMailto(text(href)),
        .status = replyStatus(element),
        .isReply = true,
    });
}

std::shared_ptr<MRVNotification> invitation(
    const GDataXMLElement& element, const Date& date, std::shared_ptr<MRVAccount> account)
{
    const auto uid = element.first("uid", CS);
    const auto organizer = element.first("organizer", CS);
    const auto organizerCN = child(organizer, "common-name");
    const auto organizerHref = child(organizer, "href", D);
    const auto hostURL = child(element.first("hosturl", CS), "href", D);
    const auto access = element.first("access", CS);
    const auto summary = element.first("summary", CS);
    const auto href = element.first("href", D);
    const bool isComplete
        = uid && organizerCN && organizerHref && hostURL && access && summary && href;
    if (!isComplete) return nullptr;

    const bool isDeleted = element.first("invite-deleted", CS).has_value();
    const bool writes = access->first("read-write", CS).has_value();
    return std::make_shared<MRVNotification>(MRVNotification {
        .account = std::move(account),
        .href = text(href),
        .hostURL = text(hostURL),
        .summary = text(summary),
        .date = date,
        .shareeEmail = withoutMailto(text(href)),
        .uid = text(uid),
        .organizerCN = text(organizerCN),
        .organizerEmail = text(organizerHref),
        .status = isDeleted ? MRVInviteStatus::deleted : MRVInviteStatus::noResponse,
        .access = writes ? MRVSharedCalendarAccess::readWrite : MRVSharedCalendarAccess::readOnly,
    });
}

} // namespace

std::shared_ptr<MRVNotification> MRVNotificationParser::parseNote() const
{
    const auto root = rootElement();
    const auto date = dateStamp(root);
    if (!date) return nullptr;
    if (const auto element = root->first("invite-reply", CS)) {
        return reply(*element, *date, account());
    }
    if (const auto element = root->first("invite-notification", CS)) {
        return invitation(*element, *date, account());
    }
    return nullptr;
}

} // namespace Tessel
