#include "Tessel/Session/Exchange/AnswerFailure.h"

#include "Tessel/Platform/Foundation/Web/URL.h"
#include "Tessel/Platform/Transport/MNetworkError.h"
#include "Tessel/Session/Exchange/ServerWords.h"

namespace Tessel {

namespace {

/// Taken, to be done later or not at all (RFC 9110, 15.3.3).
constexpr int accepted = 202;

/// What a person does about it.
std::string_view advice(FailureKind kind)
{
    switch (kind) {
    case FailureKind::unreachable:
        return "Check the server's name and the network.";
    case FailureKind::untrusted:
        return "Check the server's name; if its certificate comes from an authority of your own, "
               "name that in MNetworkConfiguration::authorityFile.";
    case FailureKind::timedOut:
        return "Try again later, or allow more time.";
    case FailureKind::unauthorized:
        return "Check the user name and the password.";
    case FailureKind::forbidden:
        return "The user has no right to do this.";
    case FailureKind::missing:
        return "There is nothing at this address.";
    case FailureKind::changed:
        return "It has been changed or made by somebody else meanwhile.";
    case FailureKind::conflict:
        return "Its state on the server does not allow it.";
    case FailureKind::tooLarge:
        return "The server takes no more.";
    case FailureKind::busy:
        return "Try again later.";
    case FailureKind::serverFault:
        return "The fault is the server's.";
    default:
        return "";
    }
}

/// For an answer, where its request says more than the kind.
std::string_view advice(const Answer& answer, FailureKind kind, int status)
{
    if (kind == FailureKind::notSent) {
        return "The request carried no credential: the auth delegate gives none to this address. A "
               "delegate of another origin has to be given this one too.";
    }
    if (status == accepted) return "It may do it later: look again.";
    const bool writesInto
        = answer.method == "PUT" || answer.method == "MOVE" || answer.method == "MKCALENDAR";
    // RFC 4918, 9.7.1, and RFC 4791, 5.3.1.2: the collection to write into is missing.
    if (kind == FailureKind::conflict && status == 409 && writesInto)
        return "Its state on the server does not allow it, or there is no such calendar.";
    return advice(kind);
}

/// For an error of TLS, where its text says that it is not about the server's certificate.
std::string_view advice(const Error& error, FailureKind kind)
{
    const auto says = [&](std::string_view words) {
        return error.localizedDescription.find(words) != std::string::npos;
    };
    if (kind != FailureKind::untrusted) return advice(kind);
    // What OpenSSL makes of an answer in plain text.
    if (says("wrong version number")) {
        return "The server does not speak TLS at this port. Check the port; for a server without "
               "TLS give http and allow it by SessionSettings::allowsPlainHTTP.";
    }
    if (says("error setting certificate")) {
        return "The file of authorities cannot be read: check "
               "MNetworkConfiguration::authorityFile and authorityDirectory.";
    }
    return advice(kind);
}

std::string sentence(std::string_view what, std::string_view happened, std::string_view hint)
{
    auto text = std::string(what).append(": ").append(happened);
    if (!text.ends_with('.')) text += '.';
    if (!hint.empty()) text.append(" ").append(hint);
    return text;
}

FailureKind kindOf(const Error& error)
{
    if (error.domain != MNetworkErrorDomain) return FailureKind::unreachable;
    switch (static_cast<MNetworkErrorCode>(error.code)) {
    case MNetworkErrorCode::invalidRequest:
        return FailureKind::notSent;
    case MNetworkErrorCode::untrusted:
        return FailureKind::untrusted;
    case MNetworkErrorCode::timedOut:
        return FailureKind::timedOut;
    case MNetworkErrorCode::malformedAnswer:
    case MNetworkErrorCode::answerTooLarge:
        return FailureKind::malformed;
    case MNetworkErrorCode::cancelled:
        return FailureKind::cancelled;
    case MNetworkErrorCode::tooManyRedirects:
    case MNetworkErrorCode::unsafeRedirect:
        return FailureKind::refused;
    case MNetworkErrorCode::cannotConnect:
    case MNetworkErrorCode::connectionLost:
    case MNetworkErrorCode::other:
        break;
    }
    return FailureKind::unreachable;
}

/// A 403 with a condition is mostly about what was sent, not about who sent it (RFC 4791, 1.3).
FailureKind kindOf(int status, std::string_view condition)
{
    if (condition == "no-uid-conflict") return FailureKind::conflict;
    if (condition == "max-resource-size" || condition == "quota-not-exceeded")
        return FailureKind::tooLarge;
    if (status == 403 && !condition.empty() && condition != "need-privileges")
        return FailureKind::refused;
    return kindOfStatus(status);
}

Failure makeFailure(const Answer& answer, int status, FailureKind kind, const std::string& said,
    std::string_view what)
{
    auto happened = "the server answered " + std::to_string(status);
    if (!said.empty()) happened.append(" (").append(onOneLine(said, 200)).append(")");
    return {
        .kind = kind,
        .reason = sentence(what, happened, advice(answer, kind, status)),
        .method = answer.method,
        .url = withoutUserInfo(answer.url),
        .status = status,
        // A server may fail after it has done it, and a gateway knows nothing of what is behind it.
        .isUncertain = (kind == FailureKind::serverFault || status == accepted)
            && changesSomething(answer.method),
        .serverWords = said,
        .retryAfter = retryAfter(answer.headers),
    };
}

bool certainlyNotDone(const Error& error)
{
    if (error.domain != MNetworkErrorDomain) return false;
    const auto code = static_cast<MNetworkErrorCode>(error.code);
    return code == MNetworkErrorCode::invalidRequest || code == MNetworkErrorCode::cannotConnect
        || code == MNetworkErrorCode::untrusted;
}

} // namespace

FailureKind kindOfStatus(int status)
{
    switch (status) {
    case 401:
        return FailureKind::unauthorized;
    case 402:
    case 403:
    case 407:
        return FailureKind::forbidden;
    case 404:
    case 410:
        return FailureKind::missing;
    case 405:
    case 501:
        return FailureKind::unsupported;
    case 408:
        return FailureKind::timedOut;
    case 409:
    case 423:
    case 424:
        return FailureKind::conflict;
    case 412:
        return FailureKind::changed;
    case 413:
    case 507:
        return FailureKind::tooLarge;
    case 429:
    case 503:
        return FailureKind::busy;
    default:
        // A status that is none is to be taken for a fault of the server (RFC 9110, 15).
        return status >= 200 && status < 500 ? FailureKind::refused : FailureKind::serverFault;
    }
}

Failure failureOf(const Answer& answer, int status, std::string_view words, std::string_view what)
{
    return makeFailure(answer, status, kindOfStatus(status), onOneLine(words), what);
}

Failure failureOf(const Answer& answer, std::string_view what)
{
    auto words = ServerWords::of(answer);
    auto said = words.condition;
    if (!words.text.empty()) said.append(said.empty() ? "" : ": ").append(words.text);
    const auto kind = answer.status == 401 && !answer.wasSigned
        ? FailureKind::notSent
        : kindOf(answer.status, words.condition);
    auto failure = makeFailure(answer, answer.status, kind, said, what);
    failure.condition = std::move(words.condition);
    failure.serverWords = std::move(words.text);
    return failure;
}

bool changesSomething(std::string_view method)
{
    return method != "GET" && method != "HEAD" && method != "OPTIONS" && method != "PROPFIND"
        && method != "REPORT";
}

bool mayStillArrive(const Failure& failure)
{
    constexpr int gatewayTimeout = 504;
    return failure.kind == FailureKind::timedOut || failure.status == gatewayTimeout
        || failure.status == accepted;
}

Failure failureOf(
    const Error& error, const std::string& method, const std::string& url, std::string_view what)
{
    const auto kind = kindOf(error);
    return {
        .kind = kind,
        .reason
        = sentence(what, method + " " + withoutUserInfo(url) + ": " + error.localizedDescription,
            advice(error, kind)),
        .method = method,
        .url = withoutUserInfo(url),
        .isUncertain = changesSomething(method) && !certainlyNotDone(error),
    };
}

} // namespace Tessel
