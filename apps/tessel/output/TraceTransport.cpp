#include "apps/tessel/output/TraceTransport.h"

#include "apps/tessel/output/SafeText.h"

#include <chrono>
#include <cstdio>
#include <mutex>
#include <set>

namespace Tessel::App {

namespace {

using Clock = std::chrono::steady_clock;

std::mutex secretsMutex;
std::set<std::string>& secrets()
{
    static auto& all = *new std::set<std::string>;
    return all;
}

std::string withoutSecrets(std::string text)
{
    const std::lock_guard lock(secretsMutex);
    for (const auto& secret : secrets()) {
        for (auto at = text.find(secret); at != text.npos; at = text.find(secret, at + 3))
            text.replace(at, secret.size(), "***");
    }
    return text;
}

void print(const std::string& lines)
{
    std::fwrite(lines.data(), 1, lines.size(), stderr);
}

std::string body(const char* direction, const Data& data)
{
    if (data.view().empty()) return {};
    std::string lines = shownLines(withoutSecrets(std::string(data.view())));
    std::string out = std::string(direction) + " ";
    for (const char c : lines) {
        out += c;
        if (c == '\n') out.append(direction).append(" ");
    }
    return out + "\n";
}

/// "Basic YWJj" is worth what its second word is.
void hideAuthorization(const std::optional<std::string>& field)
{
    if (!field) return;
    const auto blank = field->rfind(' ');
    TraceTransport::hide(blank == field->npos ? *field : field->substr(blank + 1));
}

} // namespace

TraceTransport::TraceTransport(std::shared_ptr<MNetworkManager> actual, bool showsBodies)
    : actual_(std::move(actual))
    , showsBodies_(showsBodies)
{
}

void TraceTransport::hide(const std::string& secret)
{
    // A secret of a few letters would give itself away by where it is missing.
    constexpr std::size_t shortest = 4;
    if (secret.size() < shortest) return;
    const std::lock_guard lock(secretsMutex);
    secrets().insert(secret);
}

int TraceTransport::send(MTask task)
{
    hideAuthorization(task.authorization);
    hideAuthorization(task.request.headers.value("Authorization"));
    task.completionHandler
        = [number = ++count_, request = task.request, begin = Clock::now(), bodies = showsBodies_,
              complete = std::move(task.completionHandler)](
              Data data, auto response, auto text, std::optional<Error> error, int taskNumber) {
              const auto* const http = dynamic_cast<const HTTPURLResponse*>(response.get());
              const auto ms
                  = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin);
              auto line = "[" + std::to_string(number) + "] " + request.method + " "
                  + withoutSecrets(withoutUserInfo(request.url())) + ": ";
              line += http ? std::to_string(http->statusCode)
                  : error  ? error->localizedDescription
                           : "no answer";
              line += ", " + std::to_string(data.view().size()) + " bytes, "
                  + std::to_string(ms.count()) + " ms";
              auto lines = shown(line) + "\n";
              if (bodies) lines += body(">", request.body) + body("<", data);
              print(lines);
              complete(std::move(data), std::move(response), std::move(text), std::move(error),
                  taskNumber);
          };
    return actual_->send(std::move(task));
}

void TraceTransport::cancel(int number)
{
    actual_->cancel(number);
}

} // namespace Tessel::App
