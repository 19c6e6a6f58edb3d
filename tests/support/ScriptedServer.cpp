#include "support/ScriptedServer.h"

#include <QCoreApplication>
#include <QMetaObject>

#include <algorithm>
#include <array>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace morvane {

QByteArray ScriptedServer::Request::target() const
{
    const auto words = head.left(head.indexOf('\r')).split(' ');
    return words.size() == 3 ? words[1] : QByteArray();
}

bool ScriptedServer::Request::hasHeader(const QByteArray &name) const
{
    return head.toLower().contains("\r\n" + name.toLower() + ':');
}

ScriptedServer::Connection::Connection(ScriptedServer &server, int descriptor)
    : m_server(server)
    , m_descriptor(descriptor)
    , m_channel(server.m_wrap ? server.m_wrap(descriptor) : nullptr)
{}

bool ScriptedServer::Connection::fill()
{
    std::array<char, 16384> buffer{};
    const ssize_t count = m_channel ? m_channel->read(buffer.data(), buffer.size())
                                    : read(m_descriptor, buffer.data(), buffer.size());
    if (count <= 0) {
        ++m_server.m_closedByPeer;
        wakeTest();
        return false;
    }
    m_server.m_received += count;
    m_pending.append(buffer.data(), count);
    return true;
}

std::optional<QByteArray> ScriptedServer::Connection::readHead()
{
    while (!m_pending.contains("\r\n\r\n")) {
        if (!fill())
            return std::nullopt;
    }
    const qsizetype size = m_pending.indexOf("\r\n\r\n") + 4;
    const QByteArray head = m_pending.first(size);
    m_pending.remove(0, size);
    return head;
}

std::optional<ScriptedServer::Request> ScriptedServer::Connection::readRequest()
{
    const auto head = readHead();
    if (!head)
        return std::nullopt;
    Request request{*head, {}};
    const QByteArray name = "\r\ncontent-length:";
    const qsizetype field = request.head.toLower().indexOf(name);
    const QByteArray value = field < 0 ? QByteArray() : request.head.mid(field + name.size());
    const qsizetype length = value.left(value.indexOf('\r')).trimmed().toLongLong();
    while (m_pending.size() < length) {
        if (!fill())
            return std::nullopt;
    }
    request.body = m_pending.first(length);
    m_pending.remove(0, length);
    {
        const std::scoped_lock lock(m_server.m_mutex);
        m_server.m_requests.push_back(request);
    }
    wakeTest();
    return request;
}

bool ScriptedServer::Connection::send(QByteArrayView bytes)
{
    while (!bytes.isEmpty()) {
        m_server.m_sent += bytes.size(); // before the peer can have it
        const auto size = static_cast<std::size_t>(bytes.size());
        const ssize_t count = m_channel ? m_channel->write(bytes.data(), size)
                                        : ::send(m_descriptor, bytes.data(), size, MSG_NOSIGNAL);
        m_server.m_sent -= bytes.size() - std::max<ssize_t>(count, 0);
        if (count <= 0) {
            ++m_server.m_closedByPeer;
            wakeTest();
            return false;
        }
        bytes = bytes.sliced(count);
    }
    wakeTest();
    return true;
}

void ScriptedServer::Connection::awaitClose()
{
    while (fill()) {
    }
}

ScriptedServer::ScriptedServer(Script script, Family family, Wrap wrap)
    : m_script(std::move(script))
    , m_family(family)
    , m_wrap(std::move(wrap))
{
    sockaddr_in ipv4{.sin_family = AF_INET, .sin_addr = {htonl(INADDR_LOOPBACK)}};
    sockaddr_in6 ipv6{.sin6_family = AF_INET6, .sin6_addr = in6addr_loopback};
    const bool isIPv4 = family == Family::IPv4;
    auto *address = isIPv4 ? reinterpret_cast<sockaddr *>(&ipv4) : reinterpret_cast<sockaddr *>(&ipv6);
    socklen_t size = isIPv4 ? sizeof ipv4 : sizeof ipv6;

    m_listener = socket(address->sa_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (bind(m_listener, address, size) != 0 || listen(m_listener, 64) != 0 ||
        getsockname(m_listener, address, &size) != 0) {
        close(m_listener);
        m_listener = -1;
        return;
    }
    m_port = ntohs(isIPv4 ? ipv4.sin_port : ipv6.sin6_port);
    m_acceptor = std::thread([this] { acceptAll(); });
}

ScriptedServer::~ScriptedServer()
{
    if (!isListening())
        return;
    shutdown(m_listener, SHUT_RDWR);
    m_acceptor.join();
    close(m_listener);
    const std::scoped_lock lock(m_mutex);
    for (const int descriptor : m_descriptors)
        shutdown(descriptor, SHUT_RDWR);
}

void ScriptedServer::acceptAll()
{
    while (true) {
        const int descriptor = accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (descriptor < 0)
            return;
        ++m_connections;
        {
            const std::scoped_lock lock(m_mutex);
            m_descriptors.push_back(descriptor);
        }
        m_workers.emplace_back([this, descriptor] {
            {
                Connection connection(*this, descriptor);
                m_script(connection);
            }
            {
                const std::scoped_lock lock(m_mutex);
                std::erase(m_descriptors, descriptor);
            }
            close(descriptor);
            wakeTest();
        });
        wakeTest();
    }
}

void ScriptedServer::wakeTest()
{
    QMetaObject::invokeMethod(
        QCoreApplication::instance(), [] {}, Qt::QueuedConnection);
}

ScriptedServer::Script ScriptedServer::answering(QByteArray response)
{
    return [response = std::move(response)](Connection &connection) {
        while (connection.readRequest()) {
            if (!connection.send(response))
                return;
        }
    };
}

QByteArray ScriptedServer::response(const QByteArray &status, const QByteArray &body,
                                    const QByteArray &headers)
{
    return "HTTP/1.1 " + status + "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n" +
           headers + "\r\n" + body;
}

QUrl ScriptedServer::url(const QString &path) const
{
    const QString host = m_family == Family::IPv4 ? QStringLiteral("127.0.0.1") : QStringLiteral("[::1]");
    const QString scheme = m_wrap ? QStringLiteral("https") : QStringLiteral("http");
    return QUrl(QStringLiteral("%1://%2:%3%4").arg(scheme, host).arg(m_port).arg(path));
}

std::vector<ScriptedServer::Request> ScriptedServer::requests() const
{
    const std::scoped_lock lock(m_mutex);
    return m_requests;
}

} // namespace morvane
