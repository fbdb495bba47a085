#include "Tessel/Session/Outcome/Failure.h"

namespace Tessel {

std::string_view nameOf(FailureKind kind)
{
    switch (kind) {
    case FailureKind::unreachable:
        return "unreachable";
    case FailureKind::untrusted:
        return "untrusted";
    case FailureKind::timedOut:
        return "timedOut";
    case FailureKind::cancelled:
        return "cancelled";
    case FailureKind::unauthorized:
        return "unauthorized";
    case FailureKind::forbidden:
        return "forbidden";
    case FailureKind::missing:
        return "missing";
    case FailureKind::changed:
        return "changed";
    case FailureKind::conflict:
        return "conflict";
    case FailureKind::tooLarge:
        return "tooLarge";
    case FailureKind::busy:
        return "busy";
    case FailureKind::refused:
        return "refused";
    case FailureKind::serverFault:
        return "serverFault";
    case FailureKind::malformed:
        return "malformed";
    case FailureKind::unsupported:
        return "unsupported";
    case FailureKind::notSent:
        return "notSent";
    case FailureKind::storage:
        return "storage";
    }
    return "";
}

} // namespace Tessel
