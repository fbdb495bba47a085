#include "apps/tessel/output/TraceTransport.h"

#include "apps/tessel/output/SafeText.h"
#include "apps/tessel/output/Secrets.h"
#include "apps/tessel/output/Wording.h"

#include <chrono>
#include <cstdio>

namespace Tessel::App {

namespace {

using Clock = std::chrono::steady_clock;

void print(const std::string& lines)
{
    std::fwrite(lines.data(), 1, lines.size(), stderr);
}

std::string body(const char* direction, const Data& data)
{
    if (data.view().empty()) return {};
    std::string lines = shownLines(Secrets::masked(std::string(data.view())));
    std::string out = std::string(direction) + " ";
    for (const char c : lines) {
        out += c;
        if (c == '\n') out.append(direction).append(" ");
    }
    return out + "\n";
}

} // namespace

TraceTransport::TraceTransport(std::shared_ptr<MNetworkManager> actual, bool showsBodies)
    : actual_(std::move(actual))
    , showsBodies_(showsBodies)
{
}

int TraceTransport::send(MTask task)
{
    task.completionHandler = [number = ++count_, request = task.request, begin = Clock::now(),
                                 bodies = showsBodies_,
                                 complete = std::move(task.completionHandler)](Data data,
                                 auto response, auto text, std::optional<Error> error,
                                 int taskNumber) {
        const auto* const http = dynamic_cast<const HTTPURLResponse*>(response.get());
        const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin);
        auto line = "[" + std::to_string(number) + "] " + request.method + " "
            + Secrets::masked(withoutUserInfo(request.url())) + ": ";
        line += http ? std::to_string(http->statusCode)
            : error  ? error->localizedDescription
                     : "no answer";
        line += ", " + counted(data.size(), "byte") + ", " + std::to_string(ms.count()) + " ms";
        auto lines = shown(line) + "\n";
        if (bodies) lines += body(">", request.body) + body("<", data);
        print(lines);
        complete(
            std::move(data), std::move(response), std::move(text), std::move(error), taskNumber);
    };
    return actual_->send(std::move(task));
}

void TraceTransport::cancel(int number)
{
    actual_->cancel(number);
}

} // namespace Tessel::App
