#pragma once

#include <QObject>
#include <QTimer>

#include <chrono>
#include <deque>
#include <vector>

#include <curl/curl.h>

namespace morvane {

class CurlTransfer;

// Runs transfers of one libcurl multi handle on the Qt event loop of its thread. Connections are kept and
// used again within the loop, so transfers under different address rules never share one.
//
// Transfers are removed before the loop goes. libcurl's callbacks never reach a transfer's observer for
// anything that could run a caller's code: what they note is told afterwards, from settle().
class CurlLoop final : public QObject {
public:
    CurlLoop();
    ~CurlLoop() override;
    CurlLoop(const CurlLoop &) = delete;
    CurlLoop &operator=(const CurlLoop &) = delete;

    // False when libcurl has no memory for it.
    [[nodiscard]] bool add(CurlTransfer &transfer);

    // No callback reaches the transfer from here on. Not from inside a libcurl callback.
    void remove(CurlTransfer &transfer);

    // Lets a transfer that was held back go on, in the next turn of the event loop.
    void resumeSoon(CurlTransfer &transfer);

    // The transfer's observer hears of its head once libcurl has returned.
    void noteHead(CurlTransfer &transfer) { m_heads.push_back(&transfer); }

private:
    class Socket;

    static int onSocket(CURL *easy, curl_socket_t descriptor, int interest, void *self, void *socket);
    static int onTimeout(CURLM *multi, long milliseconds, void *self);

    void act(curl_socket_t descriptor, int events);
    void resumeHeld();
    void settle();

    CURLM *m_multi = nullptr;
    QTimer m_timeout; // libcurl's own deadlines
    QTimer m_resume;
    std::vector<Socket *> m_sockets;
    std::deque<CurlTransfer *> m_heads; // heads not told yet
    std::vector<CurlTransfer *> m_held; // to be resumed
};

} // namespace morvane
