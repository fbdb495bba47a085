#include "Tessel/CaldavLibrary/Extensions/URLRequestExtension.h"

#include <gtest/gtest.h>

using namespace Tessel;

TEST(URLRequestBody, DeclaresCharactersNotBytes)
{
    URLRequest request("https://h/");
    setXMLBody(request, "\xC3\xA9");
    EXPECT_EQ(request.headers.value("content-length"), "1");
    EXPECT_EQ(request.headers.value("Content-Type"), "text/xml charset=utf-8");
    EXPECT_EQ(request.body.size(), 2u);
    setICalBody(request, "BEGIN:VCALENDAR");
    EXPECT_EQ(request.headers.value("Content-Type"), "text/calendar");
    EXPECT_EQ(request.headers.value("Content-Length"), "15");
}
