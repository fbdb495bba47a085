#include "tests/integration/ServerTest.h"
#include "tests/support/TemporaryDirectory.h"

#include <cstdlib>
#include <fstream>
#include <iterator>

using namespace Tessel::Test;

namespace {

/// An example as a newcomer runs it: behind the server and the user stand `words`.
struct ExampleRun {
    const char* program;
    const char* words;
    std::vector<const char*> expected; ///< texts among what it says
    std::vector<const char*> onlyOnCyrus = {};
    std::vector<const char*> onlyOnRadicale = {};
};

const ExampleRun runs[] {
    {"calendars", "", {}},
    {"sync", "", {}},
    {"agenda", "bob@example.com bob",
        {"Work: 1 new, 0 changed, 0 gone\n",
            "day 6: Stand-up\nday 9: Stand-up\nday 9: Stand-up\nday 10: Stand-up\n",
            "The event could not be changed: it was removed on the server meanwhile.",
            "Work: 0 new, 0 changed, 1 gone\n"},
        {"\ninvited\n/dav/"}, {"this server offers no sharing"}},
    {"one-instance", "",
        {"20240506T090000 Stand-up, Room 2\n20240507T140000 Stand-up, Room 2 (moved)\n",
            "conflict: "}},
    {"offline", "", {"waits: ", "sent: Picnic, By the lake\n"}},
    {"sharing", "bob@example.com bob", {},
        {"bob@example.com: invited\nChoir is at /dav/", " takes part\n"}, {"sharing"}},
    {"own-exchange", "", {"DAV: expand-property\n"}},
    {"own-transport", "", {" calendars, ", " exchanges, "}},
};

class ServerExampleTest : public ServerTest { };

} // namespace

TEST_P(ServerExampleTest, DoesWhatItsFirstLinesSay)
{
    for (const auto& run : runs) {
        SCOPED_TRACE(run.program);
        const TemporaryDirectory directory;
        const auto status
            = std::system(("cd '" + directory.path().string() + "' && PASSWORD=secret AUTHORITY='"
                + server().authorityFile() + "' TZ=Europe/Berlin '" EXAMPLES "/example_"
                + run.program + "' " + server().address() + " alice " + run.words + " > said 2>&1")
                              .c_str());
        std::ifstream file(directory.path() / "said");
        const std::string said(std::istreambuf_iterator<char>(file), {});
        EXPECT_EQ(status, 0) << said;
        auto expected = run.expected;
        const auto& own = isCyrus() ? run.onlyOnCyrus : run.onlyOnRadicale;
        expected.insert(expected.end(), own.begin(), own.end());
        for (const auto* text : expected)
            EXPECT_NE(said.find(text), said.npos) << text << "is not in:\n" << said;
    }
}

TESSEL_ON_SERVERS(ServerExampleTest, "radicale", "cyrus");
