#include "tests/support/CaseFile.h"

#include <cctype>
#include <fstream>
#include <stdexcept>

namespace Tessel {

namespace {

std::string replacedAll(std::string text, std::string_view from, std::string_view to)
{
    for (auto at = text.find(from); at != text.npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
    return text;
}

std::string decoded(std::string text)
{
    text = replacedAll(text, "␄\n", "");
    text = replacedAll(text, "␠", " ");
    text = replacedAll(text, "␍", "\r");
    text = replacedAll(text, "␋", "\v");
    text = replacedAll(text, "␌", "\f");
    text = replacedAll(text, "␀", std::string(1, '\0'));
    const std::string open = "⟦";
    const std::string close = "⟧";
    for (auto at = text.find(open); at != text.npos; at = text.find(open, at + 1)) {
        const auto byte = char(std::stoi(text.substr(at + open.size(), 2), nullptr, 16));
        text.replace(at, open.size() + 2 + close.size(), 1, byte);
    }
    return text;
}

std::string identifier(std::string text)
{
    for (auto& c : text) {
        if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
    }
    return text;
}

} // namespace

std::vector<Case> readCases(const std::filesystem::path& folder)
{
    std::vector<Case> cases;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        std::ifstream file(entry.path());
        std::string* section = nullptr;
        if (file.peek() != '#')
            throw std::runtime_error(entry.path().string() + " does not say its format");
        for (std::string line; std::getline(file, line);) {
            if (line.starts_with("=== ")) {
                if (section && section->ends_with("\n\n")) section->pop_back();
                cases.push_back(
                    {identifier(entry.path().stem().string() + " " + line.substr(4)), {}});
                section = nullptr;
            } else if (line.starts_with("--- ")) {
                section = &cases.back().sections[line.substr(4)];
            } else if (section) {
                *section += line + "\n";
            }
        }
    }
    for (auto& each : cases) {
        for (auto& [name, text] : each.sections)
            text = decoded(std::move(text));
    }
    return cases;
}

} // namespace Tessel
