#include "apps/tessel/commands/CommandLine.h"
#include "apps/tessel/output/ResultTable.h"

#include <algorithm>

namespace Tessel::App {

namespace {

class Findings {
public:
    explicit Findings(const Output& out)
        : table_(out, {"", "POINT", "MEANING"})
    {
    }

    void add(const std::string& point, bool isThere, const std::string& meaning)
    {
        table_.add({isThere ? "ok" : "--", point, meaning},
            {{"point", point}, {"isThere", isThere}, {"meaning", meaning}});
    }
    /// `otherwise` says what it means where it is missing.
    void check(const std::string& point, bool isThere, const std::string& otherwise,
        const std::string& then = "")
    {
        add(point, isThere, isThere ? then : otherwise);
    }
    void print() const { table_.print(); }

private:
    ResultTable table_;
};

void checkServer(Workspace& workspace, Findings& findings)
{
    const auto& place = workspace.session().place();
    findings.check("TLS", workspace.account().origin.starts_with("https:"),
        "everybody on the way can read the password and all calendars");
    findings.check("principal", !place.principal.empty(),
        "the server does not say who the user is; invitations may not work", place.principal);
    std::string homes;
    for (const auto& home : place.homes)
        homes += (homes.empty() ? "" : ", ") + home;
    findings.add("calendar home", !place.homes.empty(), homes);

    struct Feature {
        const char* name;
        const char* otherwise;
    };
    constexpr Feature features[] {
        {"calendar-access",
            "the server does not call itself a calendar server; what works shows "
            "when it is tried"},
        {"extended-mkcol", "calendars are made by MKCALENDAR only"},
        {"calendar-auto-schedule", "events with guests are kept, but nobody is told of them"},
        {"calendarserver-sharing", "calendars cannot be shared: `share` is refused"},
    };
    for (const auto& [name, otherwise] : features)
        findings.check(name, place.offers(name), otherwise);
    findings.check("notifications", place.notifications.has_value(),
        "there are no invitations to calendars", place.notifications.value_or(""));
    findings.check("scheduling outbox", place.outbox.has_value(),
        "nobody's free and busy times can be asked for", place.outbox.value_or(""));
    findings.check("own addresses", !place.addresses.empty(),
        "the server does not say which addresses are yours; your account's name stands in");
}

void checkMethods(Workspace& workspace, Findings& findings)
{
    auto& session = workspace.session();
    URLRequest request(session.place().homes.front());
    request.method = "OPTIONS";
    const auto answer = Interruption::await(session.send(request, "The methods are not known"));
    if (!answer || !answer.value().headers.value("Allow")) {
        findings.add("methods", false, "the server does not say what it allows");
        return;
    }
    auto allowed = "," + *answer.value().headers.value("Allow") + ",";
    std::erase_if(allowed, [](char c) { return c == ' ' || c == '\t'; });
    const auto allows = [&](const std::string& method) {
        return allowed.find("," + method + ",") != std::string::npos;
    };
    findings.check("MKCALENDAR", allows("MKCALENDAR"), "calendars cannot be made from here");
    findings.check("MOVE", allows("MOVE"), "moving writes a copy, then deletes the original");
    findings.check("PROPPATCH", allows("PROPPATCH"), "names and colors cannot be changed");
}

void doctor(Workspace& workspace)
{
    Findings findings(workspace.out());
    checkServer(workspace, findings);
    if (!workspace.session().place().homes.empty()) checkMethods(workspace, findings);
    for (const auto& calendar : workspace.calendars()) {
        const auto name = "calendar " + nameOf(calendar);
        findings.check(name, calendar.isWritable, "you may read it only", calendar.href);
        for (const auto& missing : calendar.missing) {
            const auto colon = missing.find(": ");
            findings.add(name + ", " + missing.substr(0, colon), false,
                colon == missing.npos ? "" : missing.substr(colon + 2));
        }
    }
    findings.print();
}

} // namespace

void addDoctorCommand(CommandLine& line)
{
    addCommand(line, line.app, "doctor",
        "Tell point by point what the server offers, what is missing and what that means",
        "tessel doctor", doctor);
}

} // namespace Tessel::App
