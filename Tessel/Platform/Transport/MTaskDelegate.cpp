#include "Tessel/Platform/Transport/MTaskDelegate.h"

namespace Tessel {

MTaskDelegate::~MTaskDelegate() = default;

} // namespace Tessel
