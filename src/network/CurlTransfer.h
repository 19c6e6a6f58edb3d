#pragma once

#include "network/HttpSession.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <memory>
#include <vector>

#include <curl/curl.h>

namespace morvane {

class CurlLoop;

// One request to one host and its response, with no redirect followed. Destroying it cuts the connection
// unless the response is complete.
class CurlTransfer {
public:
    enum class Verdict {
        Taken,
        HoldBack, // offered again after resumeSoon(), and the sender is held back until then
        Enough,   // no more of this body is wanted; the transfer ends
    };

    class Observer {
    public:
        virtual ~Observer() = default;

        // Inside libcurl: must neither run a caller's code nor end a transfer.
        virtual void bytesMoved() = 0;
        virtual Verdict bodyArrived(QByteArrayView piece) = 0;

        // From the event loop; may destroy the transfer.
        virtual void headArrived() = 0;
        virtual void ended(const std::optional<TransportError> &error) = 0;
    };

    struct Traffic {
        std::int64_t sent = 0;
        std::int64_t received = 0;
    };

    // Starts at the next turn of the event loop. `observer` and `loop` outlive the transfer. Throws
    // TransportError when the request can't be put on the wire.
    CurlTransfer(CurlLoop &loop, Observer &observer, const HttpRequest &request,
                 const AddressRule &mayConnect, const QByteArray &authorities);
    ~CurlTransfer();
    CurlTransfer(const CurlTransfer &) = delete;
    CurlTransfer &operator=(const CurlTransfer &) = delete;

    // Final status and its headers; 0 before the head is here.
    [[nodiscard]] int status() const { return m_status; }
    [[nodiscard]] const std::vector<HttpHeader> &headers() const { return m_headers; }

    // Header and body bytes so far as they crossed the wire, transfer framing included, encryption not.
    [[nodiscard]] Traffic traffic() const { return m_traffic; }

    [[nodiscard]] bool isHeldBack() const { return m_heldBack; }
    void resumeSoon();

    // For the loop.
    [[nodiscard]] CURL *handle() const { return m_easy.get(); }
    void noteMovement() { m_observer.bytesMoved(); }
    void resume();
    void tellHead() { m_observer.headArrived(); }
    void tellEnd(CURLcode result);

private:
    struct Cleanup {
        void operator()(CURL *easy) const { curl_easy_cleanup(easy); }
        void operator()(curl_slist *list) const { curl_slist_free_all(list); }
        void operator()(CURLU *address) const { curl_url_cleanup(address); }
    };

    static int onDebug(CURL *, curl_infotype kind, char *, std::size_t size, void *self);
    static std::size_t onHeader(char *data, std::size_t, std::size_t size, void *self);
    static std::size_t onBody(char *data, std::size_t, std::size_t size, void *self);
    static std::size_t onUpload(char *buffer, std::size_t, std::size_t size, void *self);
    static int onSeek(void *self, curl_off_t offset, int origin);
    static curl_socket_t onOpenSocket(void *self, curlsocktype, curl_sockaddr *address);

    template <typename Value>
    void set(CURLoption option, Value value);
    void setAddress(const QUrl &url);
    void setLimits(std::chrono::milliseconds timeout);
    void setAuthorities(const QByteArray &certificates);
    void setMethod(const HttpRequest &request);
    void setHeaders(const std::vector<HttpHeader> &headers);
    void addHeaderLine(const QByteArray &line);
    bool takeHeaderLine(QByteArrayView line);
    void judgeConnection();
    [[nodiscard]] std::optional<TransportError> errorOf(CURLcode result) const;
    [[nodiscard]] bool isBlocked() const;

    CurlLoop &m_loop;
    Observer &m_observer;
    AddressRule m_mayConnect;
    QByteArray m_upload;
    qsizetype m_uploaded = 0;
    std::unique_ptr<CURLU, Cleanup> m_address;
    std::unique_ptr<curl_slist, Cleanup> m_headerLines;
    std::unique_ptr<CURL, Cleanup> m_easy; // below what it borrows

    int m_status = 0;
    std::vector<HttpHeader> m_headers;
    qsizetype m_headerBytes = 0;
    bool m_headIsOver = false;
    bool m_heldBack = false;
    bool m_headerTooLarge = false;
    bool m_wasAddressRefused = false;
    bool m_wasAddressAllowed = false;
    Traffic m_traffic;
};

} // namespace morvane
