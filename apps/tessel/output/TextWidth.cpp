#include "apps/tessel/output/TextWidth.h"

#include <Tessel/Platform/Foundation/Text/UTF8.h>

#include <clocale>
#include <cstdlib>
#include <cwchar>
#include <locale.h>

namespace Tessel::App {

std::size_t textWidth(const std::string& text)
{
    // The text is UTF-8 whatever the user's locale is.
    static const auto unicode = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", {});
    if (!unicode) return codePointCount(text);
    const auto before = ::uselocale(unicode);
    std::wstring wide(text.size(), L'\0');
    const auto size = std::mbstowcs(wide.data(), text.c_str(), wide.size());
    const auto width = size > wide.size() ? -1 : ::wcswidth(wide.data(), size);
    ::uselocale(before);
    return width < 0 ? codePointCount(text) : std::size_t(width);
}

} // namespace Tessel::App
