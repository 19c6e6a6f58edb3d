#include "network/CurlLoop.h"

#include "network/CurlTransfer.h"

#include <QPointer>
#include <QSocketNotifier>

#include <algorithm>
#include <csignal>
#include <utility>

namespace morvane {

namespace {

// Idle connections that a loop keeps for its next requests.
constexpr long keptConnections = 6;

CURLM *newMulti()
{
    static const CURLcode ready = [] {
        // A peer that closes is an error code, not a signal; CURLOPT_NOSIGNAL leaves that to the program.
        std::signal(SIGPIPE, SIG_IGN);
        return curl_global_init(CURL_GLOBAL_DEFAULT);
    }();
    return ready == CURLE_OK ? curl_multi_init() : nullptr;
}

CurlTransfer *transferOf(CURL *easy)
{
    CurlTransfer *transfer = nullptr;
    curl_easy_getinfo(easy, CURLINFO_PRIVATE, &transfer);
    return transfer;
}

} // namespace

// One descriptor that libcurl waits for.
class CurlLoop::Socket final : public QObject {
public:
    Socket(CurlLoop &loop, curl_socket_t descriptor)
        : QObject(&loop)
        , m_read(descriptor, QSocketNotifier::Read)
        , m_write(descriptor, QSocketNotifier::Write)
    {
        connect(&m_read, &QSocketNotifier::activated, this,
                [this, &loop, descriptor] { activate(loop, descriptor, CURL_CSELECT_IN); });
        connect(&m_write, &QSocketNotifier::activated, this,
                [this, &loop, descriptor] { activate(loop, descriptor, CURL_CSELECT_OUT); });
    }

    void watch(int interest)
    {
        m_read.setEnabled((interest & CURL_POLL_IN) != 0);
        m_write.setEnabled((interest & CURL_POLL_OUT) != 0);
    }

    // libcurl closes the descriptor next, so the notifiers are silenced at once and deleted later: one of
    // them may be the sender of this call.
    void retire()
    {
        watch(CURL_POLL_NONE);
        transfer = nullptr;
        deleteLater();
    }

    CurlTransfer *transfer = nullptr; // the one that uses the connection now

private:
    void activate(CurlLoop &loop, curl_socket_t descriptor, int events)
    {
        if (transfer != nullptr)
            transfer->noteMovement();
        loop.act(descriptor, events);
    }

    QSocketNotifier m_read;
    QSocketNotifier m_write;
};

CurlLoop::CurlLoop()
    : m_multi(newMulti())
{
    m_timeout.setSingleShot(true);
    m_timeout.setTimerType(Qt::PreciseTimer);
    connect(&m_timeout, &QTimer::timeout, this, [this] { act(CURL_SOCKET_TIMEOUT, 0); });
    m_resume.setSingleShot(true);
    connect(&m_resume, &QTimer::timeout, this, [this] { resumeHeld(); });

    curl_multi_setopt(m_multi, CURLMOPT_SOCKETFUNCTION, &CurlLoop::onSocket);
    curl_multi_setopt(m_multi, CURLMOPT_SOCKETDATA, this);
    curl_multi_setopt(m_multi, CURLMOPT_TIMERFUNCTION, &CurlLoop::onTimeout);
    curl_multi_setopt(m_multi, CURLMOPT_TIMERDATA, this);
    curl_multi_setopt(m_multi, CURLMOPT_MAXCONNECTS, keptConnections);
}

CurlLoop::~CurlLoop()
{
    curl_multi_cleanup(m_multi); // closes idle connections, through onSocket
}

bool CurlLoop::add(CurlTransfer &transfer)
{
    return curl_multi_add_handle(m_multi, transfer.handle()) == CURLM_OK;
}

void CurlLoop::remove(CurlTransfer &transfer)
{
    curl_multi_remove_handle(m_multi, transfer.handle());
    std::erase(m_heads, &transfer);
    std::erase(m_held, &transfer);
    for (Socket *socket : m_sockets) {
        if (socket->transfer == &transfer)
            socket->transfer = nullptr;
    }
}

void CurlLoop::resumeSoon(CurlTransfer &transfer)
{
    if (std::find(m_held.begin(), m_held.end(), &transfer) == m_held.end())
        m_held.push_back(&transfer);
    m_resume.start(0);
}

int CurlLoop::onSocket(CURL *easy, curl_socket_t descriptor, int interest, void *self, void *known)
{
    auto &loop = *static_cast<CurlLoop *>(self);
    auto *socket = static_cast<Socket *>(known);
    if (interest == CURL_POLL_REMOVE) {
        if (socket != nullptr) {
            std::erase(loop.m_sockets, socket);
            curl_multi_assign(loop.m_multi, descriptor, nullptr);
            socket->retire();
        }
        return 0;
    }
    if (socket == nullptr) {
        socket = new Socket(loop, descriptor); // child of the loop
        loop.m_sockets.push_back(socket);
        curl_multi_assign(loop.m_multi, descriptor, socket);
    }
    socket->transfer = transferOf(easy);
    socket->watch(interest);
    return 0;
}

int CurlLoop::onTimeout(CURLM *, long milliseconds, void *self)
{
    auto &loop = *static_cast<CurlLoop *>(self);
    if (milliseconds < 0)
        loop.m_timeout.stop();
    else
        loop.m_timeout.start(std::chrono::milliseconds(milliseconds));
    return 0;
}

void CurlLoop::act(curl_socket_t descriptor, int events)
{
    int running = 0;
    curl_multi_socket_action(m_multi, descriptor, events, &running);
    settle();
}

void CurlLoop::resumeHeld()
{
    for (CurlTransfer *transfer : std::exchange(m_held, {}))
        transfer->resume();
    act(CURL_SOCKET_TIMEOUT, 0);
}

// What a transfer's observer does here may end any transfer, and the loop itself.
void CurlLoop::settle()
{
    const QPointer<CurlLoop> self(this);
    while (!m_heads.empty()) {
        CurlTransfer *transfer = m_heads.front();
        m_heads.pop_front();
        transfer->tellHead();
        if (!self)
            return;
    }
    int left = 0;
    while (const CURLMsg *message = curl_multi_info_read(m_multi, &left)) {
        if (message->msg == CURLMSG_DONE)
            transferOf(message->easy_handle)->tellEnd(message->data.result);
        if (!self)
            return;
    }
}

} // namespace morvane
