#pragma once

#include <Tessel/TesselSession.h>

#include <string>

namespace Tessel::App {

/// A failure's reason on one line, in the words of the command line.
std::string reasonOf(const Failure& failure);

} // namespace Tessel::App
