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

} // namespace Tessel
