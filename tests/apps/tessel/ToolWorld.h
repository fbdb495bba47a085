#pragma once

#include "tests/support/FakeCalendarServer.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/TemporaryDirectory.h"

#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Tessel::Test {

/// What a run of the tool came to.
struct ToolRun {
    int status = -1; ///< 128 and the number, where a signal ended it
    std::string out;
    std::string err;
    std::string all() const { return out + err; }
};

using Words = std::vector<std::string>;

/// The tool as it is installed, run as a process, against a fake server on this machine, with
/// settings and data of its own. The server has the calendars /home/a/ and /home/b/.
class ToolWorld {
    const TemporaryDirectory directory_;

public:
    /// An account is added unless that is left out.
    explicit ToolWorld(bool hasAccount = true);

    ToolRun run(const Words& arguments) const;
    /// The same in a terminal of its own, 60 columns wide, in which `typed` is typed once it has
    /// said `question`.
    ToolRun runInTerminal(const Words& arguments, const std::string& question = {},
        const std::string& typed = {}) const;
    /// Sends a signal after a pause, and says how long the process lived on.
    ToolRun interrupt(const Words& arguments, int signal, std::chrono::milliseconds& lived) const;

    /// From now on nobody listens.
    void close() { wire_.reset(); }

    std::string address() const { return wire_->url(""); }
    std::string folder() const { return directory_.path().string(); }
    /// A file of alice's account.
    std::string accountFile(const std::string& ending) const;

    std::shared_ptr<FakeCalendarServer> server = std::make_shared<FakeCalendarServer>();
    std::map<std::string, std::string> environment; ///< beside this process's own; empty: unset

private:
    ScriptedAnswer answer(const URLRequest& request) const;

    std::unique_ptr<ScriptedServer> wire_;
};

bool has(const std::string& text, const std::string& part);
/// How often a part is in a text.
std::size_t count(const std::string& text, const std::string& part);

/// An event's text with these lines within the VEVENT, beside its UID and stamp.
std::string eventWith(const std::string& uid, const std::string& lines);

/// Expects each part in the text; with a "!" before it, that it is not there.
void expectParts(const std::string& text, const Words& parts);

} // namespace Tessel::Test
