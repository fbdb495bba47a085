#include "apps/tessel/commands/CaseFolding.h"

#include <unicode/unistr.h>

namespace Tessel::App {

std::string foldedCase(const std::string& text)
{
    std::string folded;
    return icu::UnicodeString::fromUTF8(text).foldCase().toUTF8String(folded);
}

} // namespace Tessel::App
