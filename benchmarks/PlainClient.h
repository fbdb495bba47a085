#pragma once

#include <curl/curl.h>
#include <libxml/parser.h>

#include <memory>
#include <string>
#include <string_view>

namespace Tessel::Benchmarks {

/// The least that a client needs: libcurl, one request after another, and libxml2's tree.
class PlainClient {
public:
    PlainClient();
    ~PlainClient();
    PlainClient(const PlainClient&) = delete;
    PlainClient& operator=(const PlainClient&) = delete;

    /// The body of the answer, which lasts until the next request.
    std::string_view send(const char* method, const std::string& url, const std::string& body);

    using Document = std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)>;
    static Document read(std::string_view xml);

private:
    static std::size_t take(char* bytes, std::size_t size, std::size_t count, void* answer);

    CURL* const handle_;
    curl_slist* const fields_;
    std::string answer_;
};

} // namespace Tessel::Benchmarks
