#pragma once

#include "Tessel/Platform/Foundation/Base/RawValue.h"

namespace Tessel {

/// The outcome of one HTTP exchange.
enum class MRVStatusCode {
    OK = 200,
    created = 201,
    noContent = 204,
    multiStatus = 207,
    unauthorized = 401,
    forbidden = 403,
    notFound = 404,
    other = 0, ///< any other status
};

constexpr bool isRawValue(MRVStatusCode, int value)
{
    switch (MRVStatusCode(value)) {
    case MRVStatusCode::OK:
    case MRVStatusCode::created:
    case MRVStatusCode::noContent:
    case MRVStatusCode::multiStatus:
    case MRVStatusCode::unauthorized:
    case MRVStatusCode::forbidden:
    case MRVStatusCode::notFound:
    case MRVStatusCode::other:
        return true;
    }
    return false;
}

} // namespace Tessel
