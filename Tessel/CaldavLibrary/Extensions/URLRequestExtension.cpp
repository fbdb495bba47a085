#include "Tessel/CaldavLibrary/Extensions/URLRequestExtension.h"

#include "Tessel/Platform/Foundation/Text/UTF8.h"

namespace Tessel {

namespace {

void setBody(URLRequest& request, std::string body, std::string_view contentType)
{
    request.headers.set("Content-Type", contentType);
    request.headers.set("Content-Length", std::to_string(codePointCount(body)));
    request.body = Data(std::move(body));
}

void setQuery(URLRequest& request, const char* method, Depth depth, std::string body)
{
    request.method = method;
    request.headers.set("Depth", depth == Depth::resource ? "0" : "1");
    setXMLBody(request, std::move(body));
}

} // namespace

void setXMLBody(URLRequest& request, std::string body)
{
    setBody(request, std::move(body), "text/xml charset=utf-8");
}

void setICalBody(URLRequest& request, std::string body)
{
    setBody(request, std::move(body), "text/calendar");
}

void setPropfind(URLRequest& request, Depth depth, std::string body)
{
    setQuery(request, "PROPFIND", depth, std::move(body));
}

void setReport(URLRequest& request, std::string body)
{
    setQuery(request, "REPORT", Depth::members, std::move(body));
}

} // namespace Tessel
