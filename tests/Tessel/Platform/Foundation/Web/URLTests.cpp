#include "Tessel/Platform/Foundation/Web/HTTPHeaders.h"
#include "Tessel/Platform/Foundation/Web/URL.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

using namespace Tessel;
using namespace std::string_view_literals;

TEST(URL, IsEncodedWhereItMustBeAndNowhereElse)
{
    using Case = std::pair<std::string_view, std::string_view>;
    for (const auto& [text, url] : {
             Case {"https://h/a b/\"<>\\^`{|}", "https://h/a%20b/%22%3C%3E%5C%5E%60%7B%7C%7D"},
             {"https://h/caf\xC3\xA9.ics", "https://h/caf%C3%A9.ics"},
             {"https://h/not\xFFutf8", "https://h/not%FFutf8"},
             {"https://h/\0\t\r\n\x7F"sv, "https://h/%00%09%0D%0A%7F"},
             {"https://h/a%20b%2fc%2F", "https://h/a%20b%2fc%2F"},
             {"https://h/100%", "https://h/100%25"},
             {"https://h/%2", "https://h/%252"},
             {"https://h/%zz%4g", "https://h/%25zz%254g"},
             {"https://h/!$&'()*+,;=:@-._~[]?q=a/b?c#f", "https://h/!$&'()*+,;=:@-._~[]?q=a/b?c#f"},
             {"https://b\xC3\xBC"
              "cher.example/",
                 "https://b%C3%BCcher.example/"},
         }) {
        EXPECT_EQ(encodedURL(text), url) << text;
        EXPECT_EQ(encodedURL(url), url) << "encoded twice";
    }
}

TEST(URL, IsTakenWhenAParserWouldTakeIt)
{
    for (const auto* text : {"https://h", "HTTPS://h:8443/x", "http://h:/x", "http://u:p@h:80/",
             "http://u@x@h/", "http://[::1]:5232/", "http://[fe80::1%25eth0]/", "http:///x",
             "/path/only", "../up", "?query", "name.ics", "//host/path", "x-own+scheme.1://h",
             "/redirect?to=http://[broken", "mailto:a@b.example"}) {
        EXPECT_EQ(encodedURL(text), text);
    }
    for (const auto* text :
        {"", ":", "://h/", ":80/x", "1http://h/", "ht tp://h/", "h\xC3\xA9://h/", "http://h:65536/",
            "http://h:port/", "http://h:-1/", "http://h:80:90/", "http://::1/", "http://[::1/",
            "http://[]/", "http://[::1]80/", "http://[h]/", "http://a]b/", "http://u@[::1]:x/"}) {
        EXPECT_EQ(encodedURL(text), std::nullopt) << text;
    }
}

TEST(URL, IsLoggedWithoutItsCredentials)
{
    EXPECT_EQ(withoutUserInfo("https://u:p@w@h:1/a@b"), "https://h:1/a@b");
    EXPECT_EQ(withoutUserInfo("//u@h"), "//h");
    EXPECT_EQ(withoutUserInfo("https://h/?q=u@h"), "https://h/?q=u@h");
    EXPECT_EQ(withoutUserInfo(""), "");
}

TEST(HTTPHeaders, AreFoundWithoutRegardToCase)
{
    HTTPHeaders headers;
    EXPECT_EQ(headers.value("ETag"), std::nullopt);
    headers.set("ETag", "");
    headers.set("ETags", "other");
    EXPECT_EQ(headers.value("etag"), "");
    headers.set("eTAG", "\"1\"");
    EXPECT_EQ(headers.value("ETag"), "\"1\"");
    EXPECT_EQ(headers.fields(),
        (std::vector<HTTPHeaders::Field> {{"ETag", "\"1\""}, {"ETags", "other"}}));
    headers.remove("ETAG");
    EXPECT_EQ(headers.value("ETag"), std::nullopt);
    EXPECT_EQ(headers.value("ETags"), "other");
    // '@' and '`' differ by the same bit as 'A' and 'a'.
    headers.set("x@", "at");
    EXPECT_EQ(headers.value("x`"), std::nullopt);

    headers.add("DAV", "1, 3");
    headers.add("Allow", "GET");
    headers.add("dav", "calendar-access");
    EXPECT_EQ(headers.value("DAV"), "1, 3, calendar-access") << "repeated fields are one value";
    EXPECT_EQ(headers.fields().size(), 4u);
}
