#pragma once

#include <Tessel/TesselSession.h>

#include <string>

namespace Tessel::App {

/// A failure's reason on one line, in the words of the command line.
std::string reasonOf(const Failure& failure);
/// The same of the library's words alone.
std::string reasonOf(std::string words);

} // namespace Tessel::App
