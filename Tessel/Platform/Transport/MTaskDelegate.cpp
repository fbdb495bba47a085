#include "Tessel/Platform/Transport/MTaskDelegate.h"

namespace Tessel {

MTaskDelegate::~MTaskDelegate() = default;

MTaskRedirectionDelegate::~MTaskRedirectionDelegate() = default;

} // namespace Tessel
