#include "tests/structure/SourceTree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <iterator>
#include <memory>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

using namespace Tessel::Test;

namespace {

using Names = std::set<std::string>;

/// What a command prints.
std::string output(const std::string& command)
{
    std::string text;
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> pipe(
        popen(command.c_str(), "r"), [](std::FILE* file) { return pclose(file); });
    std::array<char, 65536> buffer;
    while (const auto count = std::fread(buffer.data(), 1, buffer.size(), pipe.get()))
        text.append(buffer.data(), count);
    return text;
}

/// The classes and functions at namespace level that own the symbols of a library. Of other
/// people's code the symbol itself is the name.
Names owners(const std::string& library, const std::string& options, const std::string& kinds)
{
    static const std::regex line(R"([0-9a-f]+ (\w) (.*))");
    static const std::regex own(R"((?:^|[^:\w])(?:Tessel|Plinth)::(?!\(anonymous)(\w+))");
    Names names;
    std::istringstream lines(output("nm -C --defined-only " + options + " '" + library + "'"));
    for (std::string text; std::getline(lines, text);) {
        std::smatch symbol;
        if (!std::regex_match(text, symbol, line)) continue;
        if (kinds.find(*symbol[1].first) == kinds.npos) continue;
        const auto name = symbol[2].str();
        std::smatch owner;
        names.insert(std::regex_search(name, owner, own) ? owner[1].str() : name);
    }
    return names;
}

/// The text of all headers that a host reaches from these.
std::string publicText(const std::vector<std::string>& umbrellas)
{
    const SourceTree tree(TESSEL_SOURCE_DIRECTORY);
    std::string text;
    for (const auto& umbrella : umbrellas) {
        for (const auto& header : tree.reachable(umbrella))
            text += tree.text(header);
    }
    return text;
}

/// What the installed headers mark as exported.
Names marked(const std::string& headers)
{
    static const std::regex type(R"((?:class|struct)\s+TESSEL_EXPORT\s+(\w+))");
    static const std::regex function(R"((?:^|\n) *(?:friend )?TESSEL_EXPORT\s[^;{(]*?(\w+)\W*\()");
    Names names;
    for (const auto* pattern : {&type, &function}) {
        for (std::sregex_iterator found(headers.begin(), headers.end(), *pattern), end;
             found != end; ++found)
            names.insert((*found)[1].str());
    }
    return names;
}

/// Whether the headers define the class, or declare the function.
bool declares(const std::string& headers, const std::string& name)
{
    return std::regex_search(headers,
        std::regex(
            "(?:class|struct)\\s+" + name + R"(\b[^;{(]*\{|\n\w[^;{(]*\b)" + name + R"(\()"));
}

void expectExportsDeclared(const std::vector<std::string>& umbrellas, const std::string& face,
    const std::string& library, const std::string& archive)
{
    const auto headers = publicText(umbrellas);
    const auto exported = owners(library, "-D", "BDRTVW");
    ASSERT_TRUE(exported.contains(face)) << "nm lists no symbols of " << library;
    const auto allowed = marked(headers);
    for (const auto& name : exported)
        EXPECT_TRUE(allowed.contains(name)) << name << " is exported, and no host can name it";

    for (const auto& name : owners(archive, "", "BDRT")) {
        EXPECT_TRUE(exported.contains(name) || !declares(headers, name))
            << name << " is declared to hosts, and they cannot link it";
    }
}

} // namespace

TEST(Exports, AreWhatInstalledHeadersDeclare)
{
    expectExportsDeclared({"Tessel/Tessel.h"}, "MRVClient", TESSEL_LIBRARY, TESSEL_ARCHIVE);
}

#ifdef TESSEL_SESSION_LIBRARY
TEST(Exports, OfSessionsAreWhatInstalledHeadersDeclare)
{
    // What the library below defines inline is in both.
    expectExportsDeclared({"Tessel/TesselSession.h", "Tessel/Tessel.h"}, "Session",
        TESSEL_SESSION_LIBRARY, TESSEL_SESSION_ARCHIVE);
}
#endif
