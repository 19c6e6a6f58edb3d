#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include <sys/types.h>

namespace morvane {

// A real TCP server on loopback that plays any bytes. Each connection runs the script on a thread of its
// own; each step of it wakes the test's event loop, so a test may wait for what the server saw. Destroying
// the server breaks its connections and joins their threads.
class ScriptedServer {
public:
    enum class Family { IPv4, IPv6 };

    struct Request {
        QByteArray head; // up to and with the empty line
        QByteArray body;

        [[nodiscard]] QByteArray method() const { return head.left(head.indexOf(' ')); }
        [[nodiscard]] QByteArray target() const;
        [[nodiscard]] bool hasHeader(const QByteArray &name) const;
    };

    // What a connection's bytes pass through instead of bare TCP. A result of 0 or less ends it.
    class Channel {
    public:
        virtual ~Channel() = default;
        virtual ssize_t read(char *bytes, std::size_t size) = 0;
        virtual ssize_t write(const char *bytes, std::size_t size) = 0;
    };
    using Wrap = std::function<std::unique_ptr<Channel>(int descriptor)>;

    class Connection {
    public:
        // The next request, its body by Content-Length; nothing once the peer is gone.
        std::optional<Request> readRequest();

        // All up to the next empty line, of whatever request it is; its body stays where it is.
        std::optional<QByteArray> readHead();

        // False once the peer is gone.
        bool send(QByteArrayView bytes);

        // Blocks until the peer closes.
        void awaitClose();

    private:
        friend class ScriptedServer;
        Connection(ScriptedServer &server, int descriptor);
        bool fill();

        ScriptedServer &m_server;
        int m_descriptor;
        std::unique_ptr<Channel> m_channel; // absent: bare TCP
        QByteArray m_pending;
    };

    using Script = std::function<void(Connection &)>;

    // With `wrap` the server's addresses are https.
    explicit ScriptedServer(Script script, Family family = Family::IPv4, Wrap wrap = {});
    ~ScriptedServer();
    ScriptedServer(const ScriptedServer &) = delete;
    ScriptedServer &operator=(const ScriptedServer &) = delete;

    // Reads one request after another on each connection and answers each with `response`.
    static Script answering(QByteArray response);

    // A whole response with a Content-Length.
    static QByteArray response(const QByteArray &status, const QByteArray &body,
                               const QByteArray &headers = {});

    [[nodiscard]] bool isListening() const { return m_listener >= 0; }
    [[nodiscard]] QUrl url(const QString &path = QStringLiteral("/")) const;
    [[nodiscard]] int port() const { return m_port; }

    // What the server counted on its side so far.
    [[nodiscard]] std::vector<Request> requests() const;
    [[nodiscard]] int connections() const { return m_connections; }
    [[nodiscard]] int closedByPeer() const { return m_closedByPeer; }
    [[nodiscard]] qint64 bytesReceived() const { return m_received; }
    [[nodiscard]] qint64 bytesSent() const { return m_sent; }

private:
    void acceptAll();
    static void wakeTest();

    Script m_script;
    Family m_family;
    Wrap m_wrap;
    int m_listener = -1;
    int m_port = 0;
    std::thread m_acceptor;
    std::atomic<int> m_connections = 0;
    std::atomic<int> m_closedByPeer = 0;
    std::atomic<qint64> m_received = 0;
    std::atomic<qint64> m_sent = 0;

    mutable std::mutex m_mutex;
    std::vector<Request> m_requests;     // guarded by m_mutex
    std::vector<int> m_descriptors;      // guarded by m_mutex
    std::vector<std::jthread> m_workers; // touched by the acceptor; joined before all else goes
};

} // namespace morvane
