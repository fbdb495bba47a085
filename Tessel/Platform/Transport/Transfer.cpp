#include "Tessel/Platform/Transport/Transfer.h"

#include "Tessel/Platform/Transport/MNetworkError.h"
#include "Tessel/Platform/Transport/RequestFields.h"

#include <openssl/ssl.h>

#include <algorithm>
#include <iterator>
#include <new>
#include <string_view>
#include <utility>

namespace Tessel {

namespace {

using namespace std::chrono_literals;

MNetworkErrorCode meaning(CURLcode code)
{
    switch (code) {
    case CURLE_URL_MALFORMAT:
        return MNetworkErrorCode::invalidRequest;
    case CURLE_COULDNT_RESOLVE_PROXY:
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_CONNECT:
    case CURLE_PROXY:
        return MNetworkErrorCode::cannotConnect;
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CIPHER:
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_ISSUER_ERROR:
        return MNetworkErrorCode::untrusted;
    case CURLE_OPERATION_TIMEDOUT:
        return MNetworkErrorCode::timedOut;
    case CURLE_PARTIAL_FILE:
    case CURLE_GOT_NOTHING:
    case CURLE_SEND_ERROR:
    case CURLE_RECV_ERROR:
    case CURLE_HTTP2:
    case CURLE_HTTP2_STREAM:
        return MNetworkErrorCode::connectionLost;
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_UNSUPPORTED_PROTOCOL: // of the answer; the request's has been looked at before
    case CURLE_BAD_CONTENT_ENCODING:
        return MNetworkErrorCode::malformedAnswer;
    default:
        return MNetworkErrorCode::other;
    }
}

template <class Value> Value info(CURL* handle, CURLINFO which)
{
    Value value {};
    curl_easy_getinfo(handle, which, &value);
    return value;
}

/// Whether a request of this method may reach the server twice: those that calendars are read with.
bool isRepeatable(std::string_view method)
{
    constexpr std::string_view methods[] {"GET", "HEAD", "OPTIONS", "PROPFIND", "REPORT"};
    return std::find(std::begin(methods), std::end(methods), method) != std::end(methods);
}

bool usesOpenSSL()
{
    const auto* const library = curl_version_info(CURLVERSION_NOW)->ssl_version;
    return library && std::string_view(library).starts_with("OpenSSL/");
}

const char* orNull(const std::string& text)
{
    return text.empty() ? nullptr : text.c_str();
}

} // namespace

Transfer::Transfer()
    : handle_(curl_easy_init())
{
    if (!handle_) throw std::bad_alloc();
    const auto set
        = [this](CURLoption option, auto value) { curl_easy_setopt(handle_, option, value); };
    set(CURLOPT_PRIVATE, this);
    set(CURLOPT_ERRORBUFFER, errorText_);
    set(CURLOPT_HEADERFUNCTION, &Transfer::onHeader);
    set(CURLOPT_HEADERDATA, this);
    set(CURLOPT_WRITEFUNCTION, &Transfer::onBody);
    set(CURLOPT_WRITEDATA, this);
    set(CURLOPT_PREREQFUNCTION, &Transfer::onSending);
    set(CURLOPT_PREREQDATA, this);
    set(CURLOPT_PROTOCOLS_STR, "http,https");
    set(CURLOPT_PATH_AS_IS, 1L);
    set(CURLOPT_ACCEPT_ENCODING, "gzip");
    set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_2TLS));
    set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    set(CURLOPT_NOPROXY, "");
    // libcurl would make a credential of the user information in a URL, which a server's href
    // brings.
    set(CURLOPT_HTTPAUTH, static_cast<long>(CURLAUTH_NONE));
    set(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    if (usesOpenSSL()) set(CURLOPT_SSL_CTX_FUNCTION, &Transfer::onTLSContext);
    set(CURLOPT_NOSIGNAL, 1L);
    // A host name that is slow to resolve must not hold up the other exchanges.
    set(CURLOPT_QUICK_EXIT, 1L);
}

Transfer::~Transfer()
{
    curl_easy_cleanup(handle_);
}

std::optional<Error> Transfer::prepare(std::unique_ptr<SentTask> exchange)
{
    exchange_ = std::move(exchange);
    answer_ = AnswerCollector(exchange_->configuration->maximumAnswerSize);
    errorText_[0] = '\0';
    hasBeenSent_ = false;
    const auto& request = exchange_->task.request;
    if (auto error = refusal(request)) return error;

    setConfiguration(exchange_->configuration);
    curl_easy_setopt(handle_, CURLOPT_URL, request.url().c_str());
    setMethodAndBody(request);
    mayBeSentAgain_ = isRepeatable(request.method);
    curl_easy_setopt(handle_, CURLOPT_HTTPHEADER, fields_.assign(request));

    const auto interval = std::clamp<std::chrono::milliseconds>(request.timeoutInterval, 1ms, 24h);
    curl_easy_setopt(handle_, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(interval.count()));
    interval_ = interval;
    movedAt_ = Clock::now();
    nextCheck_ = movedAt_ + interval_ / 4;
    moved_ = 0;
    return std::nullopt;
}

void Transfer::setMethodAndBody(const URLRequest& request)
{
    const auto& method = request.method;
    // GET first: it takes back whatever the exchange before had set.
    curl_easy_setopt(handle_, CURLOPT_HTTPGET, 1L);
    curl_easy_setopt(handle_, CURLOPT_CUSTOMREQUEST, method == "GET" ? nullptr : method.c_str());
    if (method == "HEAD") {
        curl_easy_setopt(handle_, CURLOPT_NOBODY, 1L);
    } else if (!request.body.isEmpty() || method == "PUT" || method == "POST") {
        const auto body = request.body.view();
        curl_easy_setopt(handle_, CURLOPT_POST, 1L);
        curl_easy_setopt(
            handle_, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
        curl_easy_setopt(handle_, CURLOPT_POSTFIELDS, body.empty() ? "" : body.data());
    }
}

void Transfer::setConfiguration(const std::shared_ptr<const MNetworkConfiguration>& configuration)
{
    if (configuration_ == configuration) return;
    configuration_ = configuration;
    const auto set = [this](CURLoption option, const char* value) {
        curl_easy_setopt(handle_, option, value);
    };

    // Only with a file and no directory does libcurl keep the authorities in memory instead of
    // reading them for every connection.
    const auto* defaults = curl_version_info(CURLVERSION_NOW);
    const bool isOwn
        = !configuration->authorityFile.empty() || !configuration->authorityDirectory.empty();
    set(CURLOPT_CAINFO, isOwn ? orNull(configuration->authorityFile) : defaults->cainfo);
    set(CURLOPT_CAPATH,
        isOwn                  ? orNull(configuration->authorityDirectory)
            : defaults->cainfo ? nullptr
                               : defaults->capath);
    set(CURLOPT_SSLCERT, orNull(configuration->clientCertificateFile));
    set(CURLOPT_SSLKEY,
        orNull(configuration->clientKeyFile.empty() ? configuration->clientCertificateFile
                                                    : configuration->clientKeyFile));
    // An empty proxy, unlike none, keeps libcurl from asking the environment.
    set(CURLOPT_PROXY, configuration->proxy.c_str());
}

curl_off_t Transfer::bytesMoved() const
{
    return info<curl_off_t>(handle_, CURLINFO_SIZE_DOWNLOAD_T)
        + info<curl_off_t>(handle_, CURLINFO_SIZE_UPLOAD_T)
        + info<long>(handle_, CURLINFO_HEADER_SIZE) + info<long>(handle_, CURLINFO_REQUEST_SIZE);
}

bool Transfer::isStalled(Clock::time_point now)
{
    nextCheck_ = now + interval_ / 4;
    if (const auto moved = bytesMoved(); moved != moved_) {
        moved_ = moved;
        movedAt_ = now;
    }
    return now - movedAt_ >= interval_;
}

std::optional<Error> Transfer::failure(CURLcode code) const
{
    if (code == CURLE_OK) {
        // libcurl takes a connection that ends within the head for an answer.
        const bool isFinal = info<long>(handle_, CURLINFO_RESPONSE_CODE) >= 200;
        if (isFinal && answer_.hasWholeHead()) return std::nullopt;
        return makeNetworkError(
            MNetworkErrorCode::connectionLost, "The connection ended before the answer did.");
    }
    if (answer_.isTooLarge()) {
        return makeNetworkError(
            MNetworkErrorCode::answerTooLarge, "The answer is larger than allowed.");
    }
    // What libcurl calls a line of the head that is longer than it takes.
    if (code == CURLE_OUT_OF_MEMORY && !answer_.hasWholeHead()) {
        return makeNetworkError(MNetworkErrorCode::answerTooLarge,
            "The answer's head is larger than allowed, or memory has run out.");
    }
    if (code == CURLE_ABORTED_BY_CALLBACK) {
        return makeNetworkError(MNetworkErrorCode::connectionLost,
            "The connection ended before an answer came. The request may have been carried out.");
    }
    return makeNetworkError(meaning(code), errorText_[0] ? errorText_ : curl_easy_strerror(code));
}

std::shared_ptr<const HTTPURLResponse> Transfer::takeResponse()
{
    return std::make_shared<const HTTPURLResponse>(exchange_->task.request.url(),
        static_cast<int>(info<long>(handle_, CURLINFO_RESPONSE_CODE)), std::move(answer_.headers));
}

std::unique_ptr<SentTask> Transfer::release()
{
    answer_ = AnswerCollector(0);
    return std::move(exchange_);
}

std::size_t Transfer::onHeader(char* bytes, std::size_t size, std::size_t count, void* self)
{
    auto& transfer = *static_cast<Transfer*>(self);
    return transfer.answer_.takeHeaderLine({bytes, size * count}) ? size * count : 0;
}

std::size_t Transfer::onBody(char* bytes, std::size_t size, std::size_t count, void* self)
{
    auto& transfer = *static_cast<Transfer*>(self);
    const auto expected = info<curl_off_t>(transfer.handle_, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T);
    const auto arrived = info<curl_off_t>(transfer.handle_, CURLINFO_SIZE_DOWNLOAD_T);
    return transfer.answer_.takeBody({bytes, size * count}, expected, arrived) ? size * count : 0;
}

// libcurl sends a request again when a kept connection ends without a byte of an answer; the server
// may have carried it out all the same.
int Transfer::onSending(void* self, char*, char*, int, int)
{
    auto& transfer = *static_cast<Transfer*>(self);
    if (std::exchange(transfer.hasBeenSent_, true) && !transfer.mayBeSentAgain_)
        return CURL_PREREQFUNC_ABORT;
    return CURL_PREREQFUNC_OK;
}

// libcurl has the keys of every connection written to the file that SSLKEYLOGFILE names.
CURLcode Transfer::onTLSContext(CURL*, void* context, void*)
{
    SSL_CTX_set_keylog_callback(static_cast<SSL_CTX*>(context), nullptr);
    return CURLE_OK;
}

} // namespace Tessel
