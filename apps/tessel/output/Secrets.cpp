#include "apps/tessel/output/Secrets.h"

#include <Tessel/CaldavLibrary/MRVUtilities.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <map>
#include <mutex>
#include <vector>

namespace Tessel::App {

namespace {

using Replacements = std::map<char, const char*>;

std::mutex mutex;
/// The longest come first: some stand within others.
std::vector<std::string>& forms()
{
    static auto& all = *new std::vector<std::string>;
    return all;
}

std::string replaced(const std::string& text, const Replacements& replacements)
{
    std::string out;
    for (const char c : text) {
        const auto found = replacements.find(c);
        found == replacements.end() ? out.push_back(c) : static_cast<void>(out += found->second);
    }
    return out;
}

std::string inURL(const std::string& text, const char* pattern, const std::string& unescaped)
{
    std::string out;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        std::array<char, 8> escape {};
        std::snprintf(escape.data(), escape.size(), pattern, byte);
        const bool isPlain = std::isalnum(byte) || unescaped.find(c) != unescaped.npos;
        isPlain ? out.push_back(c) : static_cast<void>(out += escape.data());
    }
    return out;
}

std::vector<std::string> formsOf(const std::string& secret)
{
    std::vector<std::string> all {secret};
    const Replacements markup {{'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}};
    for (const auto* quote : {"\"", "&quot;", "&#34;"}) {
        for (const auto* apostrophe : {"'", "&apos;", "&#39;", "&#x27;"}) {
            auto replacements = markup;
            replacements.insert({{'"', quote}, {'\'', apostrophe}});
            all.push_back(replaced(secret, replacements));
        }
    }
    for (const auto* pattern : {"%%%02X", "%%%02x"}) {
        for (const auto* unescaped : {"-._~", "-._~!$&'()*+,;=:@/?"})
            all.push_back(inURL(secret, pattern, unescaped));
        // In forms a blank is a plus.
        all.push_back(replaced(inURL(secret, pattern, "-._* "), {{' ', "+"}}));
    }
    for (const bool isASCII : {true, false}) {
        auto json = Json(secret).dump(-1, ' ', isASCII, Json::error_handler_t::replace);
        all.push_back(json.substr(1, json.size() - 2));
    }
    // Three bytes are four letters of Base64.
    auto base64 = MRVUtilities::basicAuthString("ab", secret).substr(std::strlen("Basic ") + 4);
    base64.erase(base64.find_last_not_of('=') + 1);
    all.push_back(base64);
    return all;
}

} // namespace

void Secrets::add(const std::string& secret)
{
    // A secret of a few letters would give itself away by where it is missing.
    constexpr std::size_t shortest = 4;
    if (secret.size() < shortest) return;
    const std::lock_guard lock(mutex);
    auto& all = forms();
    if (std::find(all.begin(), all.end(), secret) != all.end()) return;
    for (auto& form : formsOf(secret)) {
        if (std::find(all.begin(), all.end(), form) == all.end()) all.push_back(std::move(form));
    }
    std::stable_sort(
        all.begin(), all.end(), [](const auto& a, const auto& b) { return a.size() > b.size(); });
}

std::string Secrets::masked(std::string text)
{
    const std::lock_guard lock(mutex);
    for (const auto& form : forms()) {
        for (auto at = text.find(form); at != text.npos; at = text.find(form, at + 3))
            text.replace(at, form.size(), "***");
    }
    return text;
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
