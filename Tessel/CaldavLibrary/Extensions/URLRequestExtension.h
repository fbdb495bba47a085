#pragma once

#include "Tessel/Platform/Foundation/Web/URLRequest.h"

#include <string>

namespace Tessel {

/// Sets the body to the UTF-8 text and the fields `Content-Type` to "text/xml charset=utf-8"
/// (without a semicolon) and `Content-Length` to the number of characters, which is
/// less than the number of bytes for text that is not ASCII. The transport sends the true length.
void setXMLBody(URLRequest& request, std::string body);

/// The same with the `Content-Type` "text/calendar".
void setICalBody(URLRequest& request, std::string body);

/// What a request asks about (the field `Depth`; RFC 4918, 10.2).
enum class Depth { resource, members };

/// Makes it ask for properties (RFC 4918, 9.1), with an XML document.
void setPropfind(URLRequest& request, Depth depth, std::string body);

/// Makes it ask a collection about its members (RFC 3253, 3.6), with an XML document.
void setReport(URLRequest& request, std::string body);

} // namespace Tessel
