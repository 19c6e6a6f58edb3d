#include "network/CurlTransfer.h"

#include "network/CurlLoop.h"
#include "network/EgressGate.h"
#include "utils/text/Text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <utility>

#include <netinet/in.h>
#include <sys/socket.h>

namespace morvane {

using namespace Qt::StringLiterals;
using Code = TransportError::Code;

namespace {

// Header lines of one response, interim responses and trailers included.
constexpr qsizetype headerLimit = qsizetype{256} * 1024;

bool isNamed(const HttpHeader &header, QByteArrayView name)
{
    return header.name.compare(name, Qt::CaseInsensitive) == 0;
}

bool contains(const std::vector<HttpHeader> &headers, QByteArrayView name)
{
    return std::any_of(headers.begin(), headers.end(),
                       [&](const HttpHeader &header) { return isNamed(header, name); });
}

// Framing and addressing are the client's own business.
bool isOurs(const HttpHeader &header)
{
    static constexpr std::array<QByteArrayView, 6> names{
        "Host", "Content-Length", "Transfer-Encoding", "Connection", "Expect", "Accept-Encoding",
    };
    return std::any_of(names.begin(), names.end(),
                       [&](QByteArrayView name) { return isNamed(header, name); });
}

// A token of RFC 9110: what a method or a header name may consist of.
bool isToken(const QByteArray &text)
{
    static constexpr QByteArrayView marks{"!#$%&'*+-.^_`|~"};
    return !text.isEmpty() && std::all_of(text.begin(), text.end(), [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
               marks.contains(c);
    });
}

bool isHeaderValue(const QByteArray &text)
{
    return std::none_of(text.begin(), text.end(), [](char c) { return c == '\r' || c == '\n' || c == '\0'; });
}

// libcurl's `addr` is the first part of room for any family.
QByteArray addressBytes(const curl_sockaddr &address)
{
    const char *start = reinterpret_cast<const char *>(&address) + offsetof(curl_sockaddr, addr);
    if (address.family == AF_INET)
        return {start + offsetof(sockaddr_in, sin_addr), sizeof(in_addr)};
    return {start + offsetof(sockaddr_in6, sin6_addr), sizeof(in6_addr)};
}

Code codeOf(CURLcode result)
{
    switch (result) {
    case CURLE_URL_MALFORMAT:
        return Code::BadURL;
    case CURLE_OPERATION_TIMEDOUT:
        return Code::TimedOut;
    case CURLE_COULDNT_RESOLVE_HOST:
        return Code::HostNotFound;
    case CURLE_COULDNT_CONNECT:
        return Code::CannotConnect;
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CIPHER:
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_SSL_INVALIDCERTSTATUS:
        return Code::InsecureConnection;
    case CURLE_UNSUPPORTED_PROTOCOL: // an answer that isn't HTTP; the gate has let no other scheme here
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_BAD_CONTENT_ENCODING:
        return Code::UnreadableResponse;
    case CURLE_GOT_NOTHING:
    case CURLE_PARTIAL_FILE:
    case CURLE_SEND_ERROR:
    case CURLE_RECV_ERROR:
        return Code::ConnectionLost;
    default: // libcurl's list is open
        return Code::Other;
    }
}

QString sentenceOf(Code code, CURLcode result)
{
    switch (code) {
    case Code::BadURL:
        return u"The address is not valid."_s;
    case Code::UnsupportedURL:
        return u"The address is not supported."_s;
    case Code::TimedOut:
        return u"The connection took too long."_s;
    case Code::HostNotFound:
        return u"No address was found for the server's name."_s;
    case Code::CannotConnect:
        return u"Could not connect to the server."_s;
    case Code::InsecureConnection:
        return u"A secure connection could not be made."_s;
    case Code::ConnectionLost:
        return u"The connection broke before the response was complete."_s;
    case Code::UnreadableResponse:
        return u"The server sent something that could not be read."_s;
    case Code::Blocked:
    case Code::Cancelled:
    case Code::TooManyRedirects:
    case Code::ResponseTooLarge:
    case Code::Other:
        break;
    }
    return u"The request failed: %1."_s.arg(QLatin1StringView(curl_easy_strerror(result)));
}

} // namespace

CurlTransfer::CurlTransfer(CurlLoop &loop, Observer &observer, const HttpRequest &request,
                           const AddressRule &mayConnect, const QByteArray &authorities)
    : m_loop(loop)
    , m_observer(observer)
    , m_mayConnect(mayConnect)
    , m_upload(request.body)
    , m_address(curl_url())
    , m_easy(curl_easy_init())
{
    setLimits(request.timeout);
    setAuthorities(authorities);
    setAddress(request.url);
    setMethod(request);
    setHeaders(request.headers);
    if (!m_loop.add(*this))
        throw TransportError(Code::Other, u"The request could not be started."_s);
}

CurlTransfer::~CurlTransfer()
{
    m_loop.remove(*this);
}

template <typename Value>
void CurlTransfer::set(CURLoption option, Value value)
{
    if (curl_easy_setopt(m_easy.get(), option, value) != CURLE_OK)
        throw TransportError(Code::Other, u"The request could not be prepared."_s);
}

void CurlTransfer::setLimits(std::chrono::milliseconds timeout)
{
    set(CURLOPT_PRIVATE, this);
    set(CURLOPT_PROTOCOLS_STR, "http,https");
    set(CURLOPT_FOLLOWLOCATION, 0L);
    set(CURLOPT_PROXY, ""); // none, also none from the environment
    set(CURLOPT_NETRC, static_cast<long>(CURL_NETRC_IGNORED));
    set(CURLOPT_NOSIGNAL, 1L);
    set(CURLOPT_QUICK_EXIT, 1L); // else ending a transfer waits for its name lookup
    // One request on a connection at a time, in plain text: bytes are counted as they are.
    set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    set(CURLOPT_SSL_VERIFYPEER, 1L);
    set(CURLOPT_SSL_VERIFYHOST, 2L);
    // Ends a silent address in time to try the next one; the silence that counts is the observer's.
    set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(timeout.count()));

    set(CURLOPT_HEADERFUNCTION, &CurlTransfer::onHeader);
    set(CURLOPT_HEADERDATA, this);
    set(CURLOPT_WRITEFUNCTION, &CurlTransfer::onBody);
    set(CURLOPT_WRITEDATA, this);
    set(CURLOPT_OPENSOCKETFUNCTION, &CurlTransfer::onOpenSocket);
    set(CURLOPT_OPENSOCKETDATA, this);
    // libcurl's own counters leave out the framing of chunked bodies.
    set(CURLOPT_VERBOSE, 1L);
    set(CURLOPT_DEBUGFUNCTION, &CurlTransfer::onDebug);
    set(CURLOPT_DEBUGDATA, this);
}

void CurlTransfer::setAuthorities(const QByteArray &certificates)
{
    if (certificates.isEmpty())
        return;
    curl_blob blob{const_cast<char *>(certificates.constData()),
                   static_cast<std::size_t>(certificates.size()), CURL_BLOB_COPY};
    set(CURLOPT_CAINFO_BLOB, &blob);
}

// Part by part, so that the host that the gate judged is the host that is connected to, whatever libcurl
// would have made of the address as a text. A user name in the address is never sent.
void CurlTransfer::setAddress(const QUrl &url)
{
    QByteArray host = EgressGate::hostOf(url).toLatin1();
    if (host.contains(':'))
        host = '[' + host + ']';
    QByteArray target = url.path(QUrl::FullyEncoded).toLatin1();
    if (target.isEmpty())
        target = "/";
    if (url.hasQuery())
        target += '?' + url.query(QUrl::FullyEncoded).toLatin1();
    const auto put = [this](CURLUPart part, const QByteArray &value) {
        if (curl_url_set(m_address.get(), part, value.constData(), 0) != CURLUE_OK)
            throw TransportError(Code::BadURL, sentenceOf(Code::BadURL, CURLE_OK));
    };
    put(CURLUPART_SCHEME, url.scheme().toLatin1());
    put(CURLUPART_HOST, host);
    if (url.port() >= 0)
        put(CURLUPART_PORT, QByteArray::number(url.port()));
    set(CURLOPT_REQUEST_TARGET, target.constData()); // as it is: libcurl would change escapes
    set(CURLOPT_CURLU, m_address.get());
}

void CurlTransfer::setMethod(const HttpRequest &request)
{
    if (!isToken(request.method))
        throw TransportError(Code::Other, u"The request has a malformed method."_s);
    if (request.method == "GET" && m_upload.isEmpty())
        return;
    if (request.method == "HEAD") {
        set(CURLOPT_NOBODY, 1L);
        return;
    }
    const bool isUpload = !m_upload.isEmpty() || request.method == "POST" || request.method == "PUT" ||
                          request.method == "PATCH";
    if (isUpload) {
        set(CURLOPT_POST, 1L);
        set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(m_upload.size()));
        set(CURLOPT_READFUNCTION, &CurlTransfer::onUpload);
        set(CURLOPT_READDATA, this);
        set(CURLOPT_SEEKFUNCTION, &CurlTransfer::onSeek);
        set(CURLOPT_SEEKDATA, this);
    }
    set(CURLOPT_CUSTOMREQUEST, request.method.constData());
}

void CurlTransfer::setHeaders(const std::vector<HttpHeader> &headers)
{
    for (const HttpHeader &header : headers) {
        if (!isToken(header.name) || !isHeaderValue(header.value))
            throw TransportError(Code::Other, u"The request has a malformed header."_s);
        // Only a caller that offers an encoding gets one; libcurl then decodes it piece by piece.
        if (isNamed(header, "Accept-Encoding"))
            set(CURLOPT_ACCEPT_ENCODING, header.value.constData());
        if (isOurs(header))
            continue;
        // libcurl takes "Name:" for an order to leave the header out, and "Name;" for an empty one.
        addHeaderLine(header.value.isEmpty() ? header.name + ';' : header.name + ": " + header.value);
    }
    addHeaderLine("Expect:"); // no waiting for leave to send the body
    if (!contains(headers, "Content-Type"))
        addHeaderLine("Content-Type:"); // else POST claims to be a form
    set(CURLOPT_HTTPHEADER, m_headerLines.get());
}

void CurlTransfer::addHeaderLine(const QByteArray &line)
{
    curl_slist *grown = curl_slist_append(m_headerLines.get(), line.constData());
    if (grown == nullptr)
        throw TransportError(Code::Other, u"The request could not be prepared."_s);
    static_cast<void>(m_headerLines.release()); // the same list, or its first line
    m_headerLines.reset(grown);
}

void CurlTransfer::resumeSoon()
{
    m_loop.resumeSoon(*this);
}

void CurlTransfer::resume()
{
    if (!std::exchange(m_heldBack, false))
        return;
    m_observer.bytesMoved();
    curl_easy_pause(m_easy.get(), CURLPAUSE_CONT);
}

void CurlTransfer::tellEnd(CURLcode result)
{
    m_observer.ended(errorOf(result));
}

std::optional<TransportError> CurlTransfer::errorOf(CURLcode result) const
{
    if (result == CURLE_OK && m_headIsOver)
        return std::nullopt;
    // libcurl reports a single line beyond its own bound as a lack of memory, or by this code since 8.6,
    // which older headers don't name.
    constexpr auto tooLarge = static_cast<CURLcode>(100);
    const bool isBeyondBound = result == CURLE_OUT_OF_MEMORY || result == tooLarge;
    if (m_headerTooLarge || (isBeyondBound && !m_headIsOver))
        return TransportError(Code::ResponseTooLarge, u"The response's header is too large."_s);
    // What a body unpacks to while nobody takes it is kept up to a bound, and reported in the same way.
    if (isBeyondBound)
        return TransportError(Code::ResponseTooLarge, u"The response unpacks to too much."_s);
    if (isBlocked())
        return TransportError(Code::Blocked,
                              EgressGate::refusal(u"its host leads to an address that it may not reach"_s));
    const Code code = result == CURLE_OK ? Code::ConnectionLost : codeOf(result);
    return TransportError(code, sentenceOf(code, result));
}

// Whoever reads that a request was not sent can rely on it: no address of the host was connected to, and no
// byte went over a connection from before.
bool CurlTransfer::isBlocked() const
{
    return m_wasAddressRefused && !m_wasAddressAllowed && m_traffic.sent == 0;
}

int CurlTransfer::onDebug(CURL *, curl_infotype kind, char *, std::size_t size, void *self)
{
    auto &transfer = *static_cast<CurlTransfer *>(self);
    const auto bytes = static_cast<std::int64_t>(size);
    if (kind == CURLINFO_DATA_IN) // head lines are counted in onHeader
        transfer.m_traffic.received += bytes;
    else if (kind == CURLINFO_HEADER_OUT || kind == CURLINFO_DATA_OUT)
        transfer.m_traffic.sent += bytes;
    else
        return 0;
    transfer.m_observer.bytesMoved();
    return 0;
}

std::size_t CurlTransfer::onHeader(char *data, std::size_t, std::size_t size, void *self)
{
    auto &transfer = *static_cast<CurlTransfer *>(self);
    if (!transfer.m_headIsOver) // a trailer is part of the body's framing
        transfer.m_traffic.received += static_cast<std::int64_t>(size);
    transfer.m_observer.bytesMoved();
    transfer.m_headerBytes += static_cast<qsizetype>(size);
    transfer.m_headerTooLarge = transfer.m_headerBytes > headerLimit;
    if (transfer.m_headerTooLarge)
        return 0; // ends the transfer
    if (!transfer.m_headIsOver && transfer.takeHeaderLine({data, static_cast<qsizetype>(size)})) {
        transfer.m_headIsOver = true;
        transfer.judgeConnection();
        transfer.m_loop.noteHead(transfer);
    }
    return size;
}

// A server that refuses a request may do so before it has read the body, and take that for the start of the
// next request on the connection. Here, before the response can be complete.
void CurlTransfer::judgeConnection()
{
    constexpr int firstError = 400;
    if (m_status >= firstError && !m_upload.isEmpty())
        curl_easy_setopt(m_easy.get(), CURLOPT_FORBID_REUSE, 1L);
}

// True at the empty line that ends the final response's head; what follows are trailers.
bool CurlTransfer::takeHeaderLine(QByteArrayView line)
{
    const QByteArrayView text = line.trimmed();
    if (line.startsWith("HTTP/")) {
        m_headers.clear(); // of an interim response
        return false;
    }
    if (text.isEmpty()) {
        long status = 0;
        curl_easy_getinfo(m_easy.get(), CURLINFO_RESPONSE_CODE, &status);
        m_status = static_cast<int>(status);
        return status >= 200;
    }
    if ((line.startsWith(' ') || line.startsWith('\t')) && !m_headers.empty()) {
        m_headers.back().value += ' ' + text.toByteArray();
        return false;
    }
    const qsizetype colon = text.indexOf(':');
    if (colon > 0)
        m_headers.push_back(
            {text.first(colon).trimmed().toByteArray(), text.sliced(colon + 1).trimmed().toByteArray()});
    return false;
}

std::size_t CurlTransfer::onBody(char *data, std::size_t, std::size_t size, void *self)
{
    auto &transfer = *static_cast<CurlTransfer *>(self);
    switch (transfer.m_observer.bodyArrived({data, static_cast<qsizetype>(size)})) {
    case Verdict::Taken:
        return size;
    case Verdict::HoldBack:
        transfer.m_heldBack = true;
        return CURL_WRITEFUNC_PAUSE;
    case Verdict::Enough:
        break;
    }
    return 0;
}

std::size_t CurlTransfer::onUpload(char *buffer, std::size_t, std::size_t size, void *self)
{
    auto &transfer = *static_cast<CurlTransfer *>(self);
    const qsizetype rest = transfer.m_upload.size() - transfer.m_uploaded;
    const qsizetype count = std::min(rest, static_cast<qsizetype>(size));
    std::memcpy(buffer, transfer.m_upload.constData() + transfer.m_uploaded, static_cast<std::size_t>(count));
    transfer.m_uploaded += count;
    return static_cast<std::size_t>(count);
}

// libcurl sends a body again when a kept connection turns out to be dead.
int CurlTransfer::onSeek(void *self, curl_off_t offset, int origin)
{
    auto &transfer = *static_cast<CurlTransfer *>(self);
    if (origin != SEEK_SET || offset < 0 || offset > transfer.m_upload.size())
        return CURL_SEEKFUNC_FAIL;
    transfer.m_uploaded = static_cast<qsizetype>(offset);
    return CURL_SEEKFUNC_OK;
}

curl_socket_t CurlTransfer::onOpenSocket(void *self, curlsocktype, curl_sockaddr *address)
{
    auto &transfer = *static_cast<CurlTransfer *>(self);
    if (transfer.m_mayConnect && !transfer.m_mayConnect(addressBytes(*address))) {
        transfer.m_wasAddressRefused = true;
        return CURL_SOCKET_BAD;
    }
    transfer.m_wasAddressAllowed = true;
    // Programs that the application starts must not inherit the connection.
    return socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
}

} // namespace morvane
