#include "apps/tessel/commands/CommandLine.h"
#include "apps/tessel/commands/EventWrites.h"
#include "apps/tessel/output/ResultTable.h"
#include "apps/tessel/output/Wording.h"

#include <optional>
#include <set>
#include <string>
#include <utility>

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

/// What a place says of itself. A server that does not answer ends the command: nobody can say then
/// what it offers.
class Offers {
public:
    Offers(Workspace& workspace, const std::string& url)
    {
        URLRequest request(url);
        request.method = "OPTIONS";
        const auto answer = Interruption::await(
            workspace.session().send(request, "What the server offers is not known"));
        if (!answer && answer.failure().status == 0) throw Stop(answer.failure());
        if (!answer) return;
        features_ = words(answer.value().headers.value("DAV"));
        methods_ = words(answer.value().headers.value("Allow"));
    }

    bool saysFeatures() const { return !features_.empty(); }
    bool saysMethods() const { return !methods_.empty(); }
    bool offers(const std::string& feature) const { return features_.contains(feature); }
    bool allows(const std::string& method) const { return methods_.contains(method); }

private:
    static std::set<std::string> words(const std::optional<std::string>& list)
    {
        std::set<std::string> found;
        std::string word;
        for (const char c : list.value_or("") + ",") {
            if (c == ',') {
                found.insert(std::exchange(word, {}));
            } else if (c != ' ' && c != '\t') {
                word += c;
            }
        }
        found.erase("");
        return found;
    }

    std::set<std::string> features_;
    std::set<std::string> methods_;
};

void checkServer(Workspace& workspace, const Offers& home, Findings& findings)
{
    const auto& place = workspace.session().place();
    findings.check("TLS", workspace.account().origin.starts_with("https:"),
        "everybody on the way can read the password and all calendars");
    findings.check("principal", !place.principal.empty(),
        "the server does not say who the user is; invitations may not work", place.principal);
    findings.add("calendar home", !place.homes.empty(), joined(place.homes));

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
    if (!home.saysFeatures())
        findings.add("features", false, "the server does not say what it offers");
    for (const auto& [name, otherwise] : features) {
        if (home.saysFeatures()) findings.check(name, home.offers(name), otherwise);
    }
    findings.check("notifications", place.notifications.has_value(),
        "there are no invitations to calendars", place.notifications.value_or(""));
    findings.check("scheduling outbox", place.outbox.has_value(),
        "nobody's free and busy times can be asked for", place.outbox.value_or(""));
    const auto own = ownAddress(workspace.account(), {});
    findings.check("own addresses", !place.addresses.empty(),
        "the server does not say which addresses are yours; "
            + (own ? *own + ", of your account, stands in"
                   : std::string("to invite, add the account again by its e-mail address")),
        joined(place.addresses));
}

void checkMethods(const Offers& home, const Offers& calendar, Findings& findings)
{
    const auto check = [&](const Offers& there, const char* method, const char* otherwise) {
        if (there.saysMethods())
            findings.check(method, there.allows(method),
                std::string("the server does not name it; where it is refused, ") + otherwise);
    };
    if (!home.saysMethods() || !calendar.saysMethods())
        findings.add("methods", false, "the server does not say what it allows");
    check(home, "MKCALENDAR", "calendars cannot be made from here");
    check(calendar, "MOVE", "moving writes a copy, then deletes the original");
    check(calendar, "PROPPATCH", "names and colors cannot be changed");
}

void doctor(Workspace& workspace)
{
    Findings findings(workspace.out());
    const auto calendars = workspace.calendars();
    // Discovery ends with a home, or fails.
    const Offers home(workspace, workspace.session().place().homes.front());
    checkServer(workspace, home, findings);
    checkMethods(
        home, calendars.empty() ? home : Offers(workspace, calendars.front().href), findings);
    for (const auto& calendar : calendars) {
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
