#include "support/PrivateCloudServer.h"

#include <QFile>
#include <QJsonDocument>
#include <QUrl>

#include <arpa/inet.h>
#include <array>
#include <map>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace morvane {

using namespace Qt::StringLiterals;

QString PrivateCloudServer::program()
{
    return QStringLiteral(MORVANE_PRIVATE_CLOUD);
}

QJsonObject PrivateCloudServer::developmentValues()
{
    QFile file(QStringLiteral(MORVANE_DEVELOPMENT_VALUES));
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error("the development values can't be read");
    return QJsonDocument::fromJson(file.readAll()).object();
}

PrivateCloudServer::PrivateCloudServer(const QStringList &options)
    : m_process(program(),
                QStringList{u"serve"_s, u"--log"_s, u"-"_s, u"--record"_s, m_folder.filePath(u"wire"_s)} +
                    options)
{}

quint16 PrivateCloudServer::port() const
{
    return static_cast<quint16>(QUrl(baseUrl()).port());
}

QByteArray PrivateCloudServer::wire() const
{
    QFile file(m_folder.filePath(u"wire"_s));
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error("the record can't be read");
    std::map<std::pair<int, bool>, QByteArray> directions; // by connection, then received before sent
    while (!file.atEnd()) {
        const QJsonObject line = QJsonDocument::fromJson(file.readLine()).object();
        const bool isSent = line.contains("sent"_L1);
        const QString bytes = line[isSent ? "sent"_L1 : "received"_L1].toString();
        directions[{line["connection"_L1].toInt(), isSent}] += QByteArray::fromBase64(bytes.toLatin1());
    }
    QByteArray all;
    for (const auto &[direction, bytes] : directions)
        all += bytes;
    return all;
}

// A request by hand: the program's own way to the network isn't tested here, nor is its event loop run.
void PrivateCloudServer::goOn() const
{
    const QByteArray request = "POST /go-on HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Length: 0\r\n"
                               "Connection: close\r\n\r\n";
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port());
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    std::array<char, 512> answer{};
    const bool isSent =
        ::connect(socket, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0 &&
        ::send(socket, request.constData(), static_cast<std::size_t>(request.size()), 0) == request.size();
    const bool isHeard = isSent && ::recv(socket, answer.data(), answer.size(), 0) > 0;
    ::close(socket);
    if (!isHeard)
        throw std::runtime_error("the server did not hear it");
}

} // namespace morvane
