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

} // namespace

void setXMLBody(URLRequest& request, std::string body)
{
    setBody(request, std::move(body), "text/xml charset=utf-8");
}

void setICalBody(URLRequest& request, std::string body)
{
    setBody(request, std::move(body), "text/calendar");
}

} // namespace Tessel
