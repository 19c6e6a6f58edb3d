#include "support/ServerProcess.h"

#include "support/Await.h"

#include <QJsonDocument>

#include <algorithm>
#include <csignal>
#include <stdexcept>
#include <sys/prctl.h>

namespace morvane {

using namespace Qt::StringLiterals;

QJsonObject ServerProcess::Request::json() const
{
    return QJsonDocument::fromJson(body).object();
}

ServerProcess::ServerProcess(const QString &program, const QStringList &words)
{
    m_process.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(program, words);
    TestWait::until([this] { return m_process.canReadLine() || m_process.state() == QProcess::NotRunning; });
    const QByteArray line = m_process.readLine().trimmed();
    const QByteArray greeting = "listening on ";
    if (!line.startsWith(greeting))
        throw std::runtime_error("the server did not start");
    m_baseUrl = QString::fromLatin1(line.mid(greeting.size()));
}

ServerProcess::~ServerProcess()
{
    m_process.kill();
    m_process.waitForFinished();
}

const std::vector<ServerProcess::Request> &ServerProcess::requests()
{
    readLog();
    return m_requests;
}

std::vector<ServerProcess::Request> ServerProcess::requestsTo(QByteArrayView end)
{
    std::vector<Request> found = requests();
    std::erase_if(found,
                  [end](const Request &request) { return !request.target.split('?').first().endsWith(end); });
    return found;
}

void ServerProcess::awaitRequests(std::size_t count)
{
    TestWait::until([&] { return requests().size() >= count; });
}

void ServerProcess::awaitEnded(std::size_t count)
{
    TestWait::until([&] {
        const auto ended = std::ranges::count(requests(), true, &Request::isOver);
        return static_cast<std::size_t>(ended) >= count;
    });
}

void ServerProcess::readLog()
{
    while (m_process.canReadLine()) {
        const QJsonObject line = QJsonDocument::fromJson(m_process.readLine()).object();
        const auto number = static_cast<std::size_t>(line["request"_L1].toInt());
        if (line.contains("clientLeft"_L1)) {
            m_requests.at(number - 1).isOver = true;
            m_requests.at(number - 1).clientLeft = line["clientLeft"_L1].toBool();
            continue;
        }
        m_requests.push_back({line["method"_L1].toString().toLatin1(), line["target"_L1].toString().toUtf8(),
                              line["headers"_L1].toObject(), line["body"_L1].toString().toUtf8()});
    }
}

} // namespace morvane
