#include "Tessel/Session/Sharing/ShareList.h"

#include <algorithm>

namespace Tessel {

namespace {

using namespace XMLNamespace;

std::string textIn(const GDataXMLElement& parent, std::string_view name, std::string_view uri)
{
    const auto element = parent.first(name, uri);
    return element ? element->stringValue().value_or(std::string()) : std::string();
}

InviteState stateIn(const GDataXMLElement& user)
{
    if (user.first("invite-accepted", calendarServer)) return InviteState::accepted;
    if (user.first("invite-declined", calendarServer)) return InviteState::declined;
    if (user.first("invite-invalid", calendarServer)) return InviteState::invalid;
    return InviteState::open;
}

/// Without "mailto:", in small letters.
std::string compared(std::string_view address)
{
    std::string text(address);
    std::transform(text.begin(), text.end(), text.begin(),
        [](char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; });
    return text.starts_with("mailto:") ? text.substr(7) : text;
}

} // namespace

const char* const ShareList::propfind = R"(<?xml version="1.0" encoding="utf-8"?>
<d:propfind xmlns:d="DAV:" xmlns:cs="http://calendarserver.org/ns/">
<d:prop><d:displayname/><cs:invite/><cs:allowed-sharing-modes/></d:prop></d:propfind>)";

ShareList ShareList::read(const DavResponse& response)
{
    ShareList list;
    list.displayName = response.text("displayname", dav).value_or(std::string());
    const auto modes = response.property("allowed-sharing-modes", calendarServer);
    list.canBeShared = modes && modes->first("can-be-shared", calendarServer);
    const auto invite = response.property("invite", calendarServer);
    if (!invite) return list;
    for (const auto& user : invite->elementsForLocalName("user", calendarServer)) {
        // The server of calendarserver.org goes on listing who was removed.
        const auto access = accessIn(user);
        if (!access || user.first("invite-deleted", calendarServer)) continue;
        list.sharees.push_back({.address = textIn(user, "href", dav),
            .name = textIn(user, "common-name", calendarServer),
            .access = *access,
            .state = stateIn(user)});
    }
    return list;
}

const Sharee* ShareList::find(std::string_view address) const
{
    const auto wanted = compared(address);
    const auto localPart = wanted.substr(0, wanted.find('@'));
    const auto found = std::find_if(sharees.begin(), sharees.end(), [&](const auto& sharee) {
        const auto listed = compared(sharee.address);
        // Cyrus lists every user in this domain, whatever it was invited as.
        return listed == wanted || listed == localPart + "@internal";
    });
    return found == sharees.end() ? nullptr : &*found;
}

std::optional<ShareAccess> accessIn(const GDataXMLElement& parent)
{
    const auto access = parent.first("access", calendarServer);
    if (access && access->first("read-write", calendarServer)) return ShareAccess::readWrite;
    if (access && access->first("no-access", calendarServer)) return std::nullopt;
    return ShareAccess::read;
}

std::string addressURI(const std::string& address)
{
    const bool isURI = address.starts_with('/') || address.find(':') != address.npos;
    return isURI ? address : "mailto:" + address;
}

} // namespace Tessel
