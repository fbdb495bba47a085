#include "Tessel/CaldavLibrary/Operation/Notification/MRVInvitationReplyOperation.h"

#include "Tessel/CaldavLibrary/Extensions/URLRequestExtension.h"
#include "Tessel/CaldavLibrary/Extensions/XMLDocumentText.h"
#include "Tessel/CaldavLibrary/Extensions/XMLNamespace.h"
#include "Tessel/CaldavLibrary/Operation/LogSite.h"
#include "Tessel/Platform/Foundation/Base/FatalError.h"
#include "Tessel/Platform/Plinth/Logger.h"
#include "Tessel/Platform/XML/GDataXMLDocument.h"

namespace Tessel {

namespace {

constexpr auto D = XMLNamespace::dav;
constexpr auto CS = XMLNamespace::calendarServer;
using Plinth::Level;

} // namespace

void MRVInvitationReplyOperation::main()
{
    const auto& home = account()->calendarHomeURL;
    if (!home) fatalError("the calendar home is not known");

    URLRequest request(absoluteURL(*home));
    request.method = "POST";
    setXMLBody(request, body());
    send(request);
}

std::string MRVInvitationReplyOperation::body() const
{
    auto reply = GDataXMLElement::elementWithName("invite-reply", CS);
    addXMLNamespaces(reply);
    if (!notification->isReply) {
        auto inReplyTo = reply.addElement("in-reply-to", CS);
        if (notification->uid) inReplyTo.setStringValue(*notification->uid);
        reply.addElement("href", D, "mailto:" + account()->email);
        reply.addElement(accept ? "invite-accepted" : "invite-declined", CS);
        reply.addElement("hosturl", CS).addElement("href", D, notification->hostURL);
    }
    return xmlDocumentText(reply);
}

void MRVInvitationReplyOperation::read(
    const Data& data, const std::optional<Error>& error, std::optional<int> statusCode)
{
    if (error) return fail(*error);
    if (!statusCode) return fail({"Tessel", 0, "the answer is not HTTP"});
    readStatus(forcedStatus(*statusCode), data);
}

void MRVInvitationReplyOperation::readStatus(MRVStatusCode status, const Data& data)
{
    const bool isOK = status == MRVStatusCode::OK;
    if (isOK && accept) return readSharedAs(data);
    if (!isOK) Plinth::logger()->log(inMain(Level::warning), "status code: ", rawValue(status));

    const bool wentThrough
        = isOK || status == MRVStatusCode::created || status == MRVStatusCode::noContent;
    if (accept || !wentThrough) {
        return fail({"HTTP", rawValue(status), "the server did not take the answer"});
    }
    if (declineHandler) declineHandler(std::nullopt);
}

void MRVInvitationReplyOperation::readSharedAs(const Data& data)
{
    Error error;
    const auto document = GDataXMLDocument::parse(data.view(), error);
    if (!document) {
        Plinth::logger()->log(inMain(Level::error),
            "error in creating doc during Invitation Reply ", error.localizedDescription);
        return fail(error);
    }
    const auto& root = document->rootElement();
    if (root.name() != "shared-as") {
        Plinth::logger()->log(inMain(Level::error), "root name differs");
        return fail({"Tessel", 0, "the server did not say where the shared calendar is"});
    }
    const auto href = root.first("href", D);
    if (acceptHandler) acceptHandler(href ? href->stringValue() : std::nullopt, std::nullopt);
}

void MRVInvitationReplyOperation::notSent()
{
    fail({"Tessel", 0, "the auth delegate is gone"});
}

void MRVInvitationReplyOperation::fail(const Error& error) const
{
    if (accept && acceptHandler) acceptHandler(std::nullopt, error);
    if (!accept && declineHandler) declineHandler(error);
}

} // namespace Tessel
