#include "Tessel/Platform/Transport/MTaskRedirectionDelegate.h"

namespace Tessel {

MTaskRedirectionDelegate::~MTaskRedirectionDelegate() = default;

} // namespace Tessel
