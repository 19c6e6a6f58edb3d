#include "loopback/RequestLog.h"

#include "loopback/Request.h"

#include <QJsonDocument>

#include <cstdio>

namespace morvane {

using namespace Qt::StringLiterals;

bool RequestLog::open(const QString &path)
{
    if (path.isEmpty())
        return true;
    if (path == "-"_L1)
        return m_file.open(stdout, QIODevice::WriteOnly);
    m_file.setFileName(path);
    return m_file.open(QIODevice::WriteOnly | QIODevice::Append);
}

void RequestLog::arrived(Request &request)
{
    request.number = ++m_requests;
    QJsonObject headers;
    for (const auto &[name, value] : request.headers)
        headers.insert(QString::fromLatin1(name), QString::fromUtf8(value));
    write({{u"request"_s, request.number},
           {u"method"_s, QString::fromLatin1(request.method)},
           {u"target"_s, QString::fromUtf8(request.target)},
           {u"headers"_s, headers},
           {u"body"_s, QString::fromUtf8(request.body)}});
}

void RequestLog::ended(const Request &request, bool clientLeft)
{
    write({{u"request"_s, request.number}, {u"clientLeft"_s, clientLeft}});
}

void RequestLog::write(const QJsonObject &line)
{
    if (!m_file.isOpen())
        return;
    m_file.write(QJsonDocument(line).toJson(QJsonDocument::Compact) + '\n');
    m_file.flush();
}

} // namespace morvane
