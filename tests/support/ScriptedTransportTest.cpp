#include "tests/support/ScriptedTransport.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

namespace Tessel::Test {

namespace {

void ask(const char* script)
{
    ScriptedTransport transport(Script::parse(script));
    transport.send({.request = URLRequest("http://h/"), .completionHandler = {}});
}

TEST(ScriptedTransport, FailsTheTestForWhatTheScriptDoesNotSay)
{
    EXPECT_NONFATAL_FAILURE(ask("== a\n> GET /\n== only\n> GET /\n"), "not asked for: only");
    EXPECT_NONFATAL_FAILURE(ask("== a\n> GET /\n> X: 1\n"), "the request has no X");
    EXPECT_NONFATAL_FAILURE(ask("== a\n> GET /\n@ contains x\n"), "the body lacks x");
    EXPECT_NONFATAL_FAILURE(ask(""), "not expected here: GET /");
}

} // namespace

} // namespace Tessel::Test
