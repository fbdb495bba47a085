// Asks the server for something that the library has no call for: which reports it answers.
// usage: own-exchange SERVER USER
#include "examples/session/Example.h"

#include <Tessel/Tessel.h>

using namespace Tessel;
using Example::got;

namespace {

/// All elements of DAV: of that name, however deep.
std::vector<GDataXMLElement> named(std::string_view name, const GDataXMLElement& within)
{
    auto found = within.elementsForLocalName(name, "DAV:");
    for (const auto& child : within.children())
        for (const auto& deeper : named(name, child))
            found.push_back(deeper);
    return found;
}

} // namespace

int main(int argc, char** argv)
{
    const auto session = Example::open(argc, argv);
    for (const auto& home : session->place().homes) {
        auto request = URLRequest(home);
        request.method = "PROPFIND"; // RFC 4918, 9.1
        request.headers.set("Depth", "0");
        request.headers.set("Content-Type", "application/xml; charset=utf-8");
        request.body
            = Data(R"(<propfind xmlns="DAV:"><prop><supported-report-set/></prop></propfind>)");

        // Authorised as every request of the session, to the account's own server only. An answer
        // comes whatever its status; `failureOf` says what one that is no success means.
        const auto answer = got(wait(session->send(request, "The home could not be looked at")));
        if (!answer.isSuccess()) {
            std::cout << failureOf(answer, "The home could not be looked at").reason << '\n';
            continue;
        }
        Error error;
        const auto document = GDataXMLDocument::parse(answer.body.view(), error);
        if (!document) {
            std::cout << error.localizedDescription << '\n';
            continue;
        }
        for (const auto& report : named("report", document->rootElement()))
            for (const auto& name : report.children())
                std::cout << name.URI() << ' ' << name.name() << '\n';
    }
}
