#include "loopback/WireRecord.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace morvane {

using namespace Qt::StringLiterals;

bool WireRecord::open(const QString &path)
{
    if (path.isEmpty())
        return true;
    m_file.setFileName(path);
    return m_file.open(QIODevice::WriteOnly);
}

void WireRecord::received(int connection, QByteArrayView bytes)
{
    write(connection, u"received"_s, bytes);
}

void WireRecord::sent(int connection, QByteArrayView bytes)
{
    write(connection, u"sent"_s, bytes);
}

void WireRecord::write(int connection, const QString &direction, QByteArrayView bytes)
{
    if (!m_file.isOpen())
        return;
    const QJsonObject line{{u"connection"_s, connection},
                           {direction, QString::fromLatin1(bytes.toByteArray().toBase64())}};
    m_file.write(QJsonDocument(line).toJson(QJsonDocument::Compact) + '\n');
    m_file.flush();
}

} // namespace morvane
