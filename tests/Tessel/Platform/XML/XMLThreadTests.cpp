#include "Tessel/Platform/XML/GDataXMLDocument.h"

#include <gtest/gtest.h>

#include <latch>
#include <thread>
#include <vector>

using namespace Tessel;

/// The only test of its program: nothing has called libxml2 before. The thread sanitizer judges it.
TEST(XMLThreads, MakeTheFirstCallsTogether)
{
    constexpr int count = 8;
    std::latch start(count);
    std::vector<std::jthread> threads;
    for (int i = 0; i < count; ++i) {
        threads.emplace_back([&start, writes = i % 2 == 0] {
            start.arrive_and_wait();
            Error error;
            const std::string text = writes
                ? GDataXMLElement::elementWithName("a", "DAV:").XMLString()
                : "<a xmlns='DAV:'/>";
            const auto document = GDataXMLDocument::parse(text, error);
            ASSERT_TRUE(document) << error.localizedDescription;
            EXPECT_EQ(document->rootElement().URI(), "DAV:");
        });
    }
}
