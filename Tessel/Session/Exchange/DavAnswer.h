#pragma once

#include "Tessel/CaldavLibrary/Extensions/XMLNamespace.h"
#include "Tessel/Platform/Foundation/Web/Origin.h"
#include "Tessel/Platform/XML/GDataXMLElement.h"
#include "Tessel/Session/Exchange/Answer.h"
#include "Tessel/Session/Outcome/Result.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Tessel {

/// What a multistatus (RFC 4918, 13) says of one resource.
struct DavResponse {
    std::string href; ///< as the server writes it
    std::string url; ///< the same, absolute
    std::string place; ///< the same as sessions name resources: see `placeOf`
    int status = 0; ///< of the resource as a whole; 0 where its properties have one each
    std::string words = {}; ///< condition or description, if there is one

    struct Properties {
        int status = 0;
        GDataXMLElement prop;
    };
    std::vector<Properties> properties = {};

    /// A property that the server gives, with status 200.
    std::optional<GDataXMLElement> property(std::string_view name, std::string_view uri) const;
    /// Its text; absent where the server does not give it, empty where it is empty. `token` is the
    /// same without blanks around it.
    std::optional<std::string> text(std::string_view name, std::string_view uri) const;
    std::string token(std::string_view name, std::string_view uri) const;
    /// The text of the first href within it.
    std::optional<std::string> hrefIn(std::string_view name, std::string_view uri) const;
    bool isCollection() const;
    bool isCalendar() const;
    /// The first status of the resource or of one of its properties that is no success; 0 for none.
    int refusal() const;
    /// The names of the properties that are refused, with commas between them.
    std::string refusedNames() const;
};

/// A multistatus that has been read.
struct DavAnswer {
    std::vector<DavResponse> responses;
    std::optional<std::string> syncToken; ///< RFC 6578, 6.4

    /// Any success is read whose body is a multistatus. `what` names what failed otherwise; places
    /// are paths on `account`.
    static Result<DavAnswer> read(
        const Answer& answer, const Origin& account, std::string_view what);

    /// Takes what a multistatus says of one resource; its properties hold until this returns.
    using Visitor = std::function<void(const DavResponse&)>;
    /// The same for one of many resources, of which memory holds one at a time: gives the sync
    /// token. What has been visited counts only if the whole could be read.
    static Result<std::optional<std::string>> visit(
        const Answer& answer, const Origin& account, std::string_view what, const Visitor& visitor);
};

/// What the answer to a request that changes something refuses: by its own status, or within its
/// multistatus. None where it has done all that was asked.
std::optional<Failure> refusalIn(
    const Answer& answer, const Origin& account, std::string_view what);
/// Likewise, or why there is no answer.
std::optional<Failure> refusalIn(
    const Result<Answer>& result, const Origin& account, std::string_view what);

/// The number in a line such as "HTTP/1.1 200 OK"; 500 where it has none that ends an exchange
/// (RFC 9110, 15).
int statusOf(std::string_view line);

} // namespace Tessel
