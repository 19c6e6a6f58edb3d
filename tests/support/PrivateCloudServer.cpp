#include "support/PrivateCloudServer.h"

#include <QFile>
#include <QJsonDocument>
#include <QUrl>

#include <map>
#include <stdexcept>

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

void PrivateCloudServer::goOn() const
{
    ServerProcess::post(port(), "/go-on");
}

} // namespace morvane
