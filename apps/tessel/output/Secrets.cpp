#include "apps/tessel/output/Secrets.h"

#include "apps/tessel/output/SafeText.h"

#include <Tessel/CaldavLibrary/MRVUtilities.h>

#include <algorithm>
#include <bitset>
#include <cctype>
#include <charconv>
#include <cstring>
#include <mutex>
#include <optional>
#include <vector>

namespace Tessel::App {

namespace {

/// A secret in one encoding, as the numbers of its characters or bytes.
struct Form {
    std::u32string numbers;
    // Of Base64: whether the letter beside it tells of the secret too.
    bool sharesFirst = false;
    bool sharesLast = false;

    friend bool operator==(const Form&, const Form&) = default;
};

std::mutex mutex;

struct Known {
    std::vector<std::string> secrets;
    std::vector<Form> forms;
    std::bitset<256> begins; ///< bytes that a form may begin with
};

Known& known()
{
    static auto& all = *new Known;
    return all;
}

/// One beyond ASCII that HTML has a name for, such as "&auml;", whichever that is.
constexpr char32_t named = 0x110000;
constexpr char32_t firstBeyondASCII = 0x80;

/// What stands at a place of a text: a number, and in how many bytes.
struct Sign {
    char32_t number;
    std::size_t size;
};

std::optional<Sign> number(
    std::string_view text, std::size_t before, int base, std::size_t most, std::string_view end)
{
    unsigned value = 0;
    const auto digits = text.substr(std::min(before, text.size()), most);
    const auto [rest, error]
        = std::from_chars(digits.data(), digits.data() + digits.size(), value, base);
    const auto size = before + std::size_t(rest - digits.data());
    if (error != std::errc() || !text.substr(size).starts_with(end)) return std::nullopt;
    return Sign {value, size + end.size()};
}

/// Of "&#228;", "&auml;", "%E4", "\xe4", "\x{e4}", "\u{e4}", "\u00e4", "\"" and "+" of forms.
std::optional<Sign> escapeAt(std::string_view text)
{
    constexpr std::size_t longest = 8;
    constexpr std::pair<std::string_view, char32_t> names[] {{"&lt;", '<'}, {"&gt;", '>'},
        {"&amp;", '&'}, {"&quot;", '"'}, {"&apos;", '\''}, {"\\b", '\b'}, {"\\f", '\f'},
        {"\\n", '\n'}, {"\\r", '\r'}, {"\\t", '\t'}, {"+", ' '}};
    constexpr struct {
        std::string_view begin;
        int base;
        std::size_t digits;
        std::string_view end;
    } numbers[] {{"&#x", 16, longest, ";"}, {"&#X", 16, longest, ";"}, {"&#", 10, longest, ";"},
        {"%", 16, 2, ""}, {"\\x{", 16, longest, "}"}, {"\\u{", 16, longest, "}"},
        {"\\x", 16, 2, ""}, {"\\u", 16, 4, ""}};
    for (const auto& [begin, base, digits, end] : numbers) {
        if (!text.starts_with(begin)) continue;
        if (const auto sign = number(text, begin.size(), base, digits, end)) return sign;
    }
    for (const auto& [name, value] : names) {
        if (text.starts_with(name)) return Sign {value, name.size()};
    }
    if (const auto end = text.substr(0, longest + 2).find(';');
        text.starts_with('&') && end != text.npos) {
        const auto name = text.substr(1, end - 1);
        if (std::all_of(
                name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) != 0; }))
            return Sign {named, end + 1};
    }
    if (text.starts_with('\\') && text.size() > 1)
        return Sign {static_cast<unsigned char>(text[1]), 2};
    return std::nullopt;
}

constexpr auto nowhere = std::string_view::npos;

/// Where a form that begins there ends, however its characters are written one by one.
std::size_t endOf(std::u32string_view form, std::string_view text, std::size_t at)
{
    for (; !form.empty(); form.remove_prefix(1), ++at) {
        if (at >= text.size()) return nowhere;
        const auto rest = text.substr(at);
        const auto byte = static_cast<unsigned char>(rest.front());
        const auto escape = escapeAt(rest);
        const bool isEscaped = escape
            && (escape->number == form.front()
                || (escape->number == named && form.front() >= firstBeyondASCII));
        if (isEscaped) {
            const auto end = endOf(form.substr(1), text, at + escape->size);
            if (end != nowhere) return end;
        }
        if (byte >= firstBeyondASCII) {
            const auto character = firstCharacter(rest);
            if (character.codePoint == form.front() && character.size > 1) {
                const auto end = endOf(form.substr(1), text, at + character.size);
                if (end != nowhere) return end;
            }
        }
        if (byte != form.front()) return nowhere;
    }
    return at;
}

std::u32string bytesOf(std::string_view text)
{
    std::u32string all;
    for (const char c : text)
        all += static_cast<unsigned char>(c);
    return all;
}

std::u32string charactersOf(std::string_view text)
{
    std::u32string all;
    for (; !text.empty(); text.remove_prefix(firstCharacter(text).size))
        all += char32_t(firstCharacter(text).codePoint);
    return all;
}

/// As JSON escapes them.
std::u32string surrogatesOf(const std::u32string& characters)
{
    std::u32string all;
    for (const auto c : characters) {
        if (c < 0x10000) {
            all += c;
        } else {
            all.append({0xd800 + ((c - 0x10000) >> 10), 0xdc00 + (c & 0x3ff)});
        }
    }
    return all;
}

/// Wherever in what is encoded it stands: the letters that it alone decides.
void addBase64(const std::string& bytes, std::vector<Form>& forms)
{
    for (std::size_t before = 0; before < 3; ++before) {
        const auto first = (8 * before + 5) / 6;
        const auto end = 8 * (before + bytes.size()) / 6;
        // The user's name and a colon come before the password.
        const std::string filler(before + 2, ' ');
        auto letters = MRVUtilities::basicAuthString(filler, bytes)
                           .substr(std::strlen("Basic ") + 4)
                           .substr(first, end - first);
        const bool sharesLast = 8 * (before + bytes.size()) % 6 != 0;
        forms.push_back({bytesOf(letters), before > 0, sharesLast});
        std::replace(letters.begin(), letters.end(), '+', '-');
        std::replace(letters.begin(), letters.end(), '/', '_');
        forms.push_back({bytesOf(letters), before > 0, sharesLast});
    }
}

std::vector<Form> formsOf(const std::string& secret)
{
    const auto characters = charactersOf(secret);
    std::vector<Form> all {{characters}, {bytesOf(secret)}, {surrogatesOf(characters)}};
    addBase64(secret, all);
    const bool isLatin
        = std::all_of(characters.begin(), characters.end(), [](auto c) { return c < 0x100; });
    if (isLatin) addBase64({characters.begin(), characters.end()}, all);
    return all;
}

bool isBase64(char c)
{
    return std::isalnum(static_cast<unsigned char>(c))
        || std::string_view("+/-_").find(c) != nowhere;
}

} // namespace

void Secrets::add(const std::string& secret)
{
    // A secret of a few letters would give itself away by where it is missing.
    constexpr std::size_t shortest = 4;
    if (charactersOf(secret).size() < shortest) return;
    const std::lock_guard lock(mutex);
    auto& [secrets, forms, begins] = known();
    if (std::find(secrets.begin(), secrets.end(), secret) != secrets.end()) return;
    secrets.push_back(secret);
    for (auto& form : formsOf(secret)) {
        if (std::find(forms.begin(), forms.end(), form) != forms.end()) continue;
        const auto first = form.numbers.front();
        if (first < firstBeyondASCII) begins.set(first);
        forms.push_back(std::move(form));
    }
    for (const unsigned char c : std::string_view("&%\\+"))
        begins.set(c);
    for (std::size_t c = firstBeyondASCII; c < begins.size(); ++c)
        begins.set(c);
}

std::string Secrets::masked(std::string text)
{
    const std::lock_guard lock(mutex);
    const auto& [secrets, forms, begins] = known();
    std::string out;
    std::size_t done = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (!begins[static_cast<unsigned char>(text[at])]) continue;
        auto first = at;
        auto end = nowhere;
        for (const auto& form : forms) {
            auto last = endOf(form.numbers, text, at);
            if (last == nowhere) continue;
            if (form.sharesFirst && at > done && isBase64(text[at - 1])) first = at - 1;
            if (form.sharesLast && last < text.size() && isBase64(text[last])) ++last;
            end = end == nowhere ? last : std::max(end, last);
        }
        if (end == nowhere) continue;
        out.append(text, done, first - done).append("***");
        done = end;
        at = end - 1;
    }
    return out.append(text, done, text.npos);
}

Json Secrets::masked(Json json)
{
    if (json.is_string()) return masked(json.get<std::string>());
    if (json.is_structured()) {
        for (auto& each : json)
            each = masked(std::move(each));
    }
    return json;
}

} // namespace Tessel::App
