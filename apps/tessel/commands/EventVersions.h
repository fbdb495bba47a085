#pragma once

#include "apps/tessel/output/Output.h"

#include <Tessel/TesselSession.h>

#include <string>

namespace Tessel::App {

/// What a version of an event says otherwise than the one before it, on a line, such as "summary:
/// Lunch; location: Canteen". An empty text stands for an event that is not there.
std::string changeIn(const std::string& after, const std::string& before);

/// Both sides of a conflict, to standard error or among the results: what each says otherwise than
/// `base`, on which both were made; without that, than the other.
void noteVersions(const Output& out, const BothTexts& texts, const std::string& base = {});
void listVersions(const Output& out, const BothTexts& texts, const std::string& base = {});

} // namespace Tessel::App
