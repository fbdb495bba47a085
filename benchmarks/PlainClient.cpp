#include "benchmarks/PlainClient.h"

#include "Tessel/Platform/Foundation/Base/FatalError.h"

namespace Tessel::Benchmarks {

PlainClient::PlainClient()
    : handle_((curl_global_init(CURL_GLOBAL_ALL), curl_easy_init()))
    , fields_(curl_slist_append(nullptr, "Expect:"))
{
    curl_easy_setopt(handle_, CURLOPT_HTTPHEADER, fields_);
    curl_easy_setopt(handle_, CURLOPT_WRITEFUNCTION, &PlainClient::take);
    curl_easy_setopt(handle_, CURLOPT_WRITEDATA, &answer_);
}

PlainClient::~PlainClient()
{
    curl_easy_cleanup(handle_);
    curl_slist_free_all(fields_);
}

std::string_view PlainClient::send(
    const char* method, const std::string& url, const std::string& body)
{
    answer_.clear();
    curl_easy_setopt(handle_, CURLOPT_CUSTOMREQUEST, method);
    curl_easy_setopt(handle_, CURLOPT_URL, url.c_str());
    curl_easy_setopt(handle_, CURLOPT_POSTFIELDSIZE, long(body.size()));
    curl_easy_setopt(handle_, CURLOPT_POSTFIELDS, body.c_str());
    if (curl_easy_perform(handle_) != CURLE_OK) fatalError("the plain client got no answer");
    return answer_;
}

PlainClient::Document PlainClient::read(std::string_view xml)
{
    Document document(xmlReadMemory(xml.data(), int(xml.size()), nullptr, "UTF-8",
                          XML_PARSE_HUGE | XML_PARSE_NONET),
        xmlFreeDoc);
    if (!document) fatalError("the plain client got no XML");
    return document;
}

std::size_t PlainClient::take(char* bytes, std::size_t size, std::size_t count, void* answer)
{
    static_cast<std::string*>(answer)->append(bytes, size * count);
    return size * count;
}

} // namespace Tessel::Benchmarks
