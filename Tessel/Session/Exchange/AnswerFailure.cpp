#include "Tessel/Session/Exchange/AnswerFailure.h"

#include "Tessel/Platform/Foundation/Web/URL.h"
#include "Tessel/Platform/Transport/MNetworkError.h"
#include "Tessel/Session/Exchange/ServerWords.h"

namespace Tessel {

namespace {

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

std::string sentence(std::string_view what, std::string_view happened, FailureKind kind)
{
    auto text = std::string(what).append(": ").append(happened);
    if (!text.ends_with('.')) text += '.';
    if (const auto hint = advice(kind); !hint.empty()) text.append(" ").append(hint);
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
        return FailureKind::malformed;
    case MNetworkErrorCode::answerTooLarge:
        return FailureKind::malformed;
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
        return status >= 500 && status < 600 ? FailureKind::serverFault : FailureKind::refused;
    }
}

Failure failureOf(const Answer& answer, int status, std::string_view words, std::string_view what)
{
    auto happened = "the server answered " + std::to_string(status);
    const auto said = onOneLine(words);
    if (!said.empty()) happened.append(" (").append(said.substr(0, 200)).append(")");
    const auto kind = kindOfStatus(status);
    return {
        .kind = kind,
        .reason = sentence(what, happened, kind),
        .method = answer.method,
        .url = withoutUserInfo(answer.url),
        .status = status,
        .serverWords = said,
        .retryAfter = retryAfter(answer.headers),
    };
}

Failure failureOf(const Answer& answer, std::string_view what)
{
    auto words = ServerWords::of(answer);
    auto failure = failureOf(
        answer, answer.status, words.condition.empty() ? words.text : words.condition, what);
    failure.condition = std::move(words.condition);
    failure.serverWords = std::move(words.text);
    return failure;
}

Failure failureOf(
    const Error& error, const std::string& method, const std::string& url, std::string_view what)
{
    const auto kind = kindOf(error);
    return {
        .kind = kind,
        .reason = sentence(
            what, method + " " + withoutUserInfo(url) + ": " + error.localizedDescription, kind),
        .method = method,
        .url = withoutUserInfo(url),
        .isUncertain = !certainlyNotDone(error),
    };
}

} // namespace Tessel
