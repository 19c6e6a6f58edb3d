#include "support/ServerProcess.h"

#include "support/Await.h"

#include <QJsonDocument>

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <csignal>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

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
    const auto nextLine = [this] {
        TestWait::until(
            [this] { return m_process.canReadLine() || m_process.state() == QProcess::NotRunning; });
        return m_process.readLine().trimmed();
    };
    QByteArray line = nextLine();
    const QByteArray greeting = "listening on ";
    if (line.startsWith('{')) {
        m_description = line;
        line = nextLine();
    }
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

// A request by hand: the program's own way to the network isn't tested here, nor is its event loop run.
void ServerProcess::post(quint16 port, const QByteArray &target)
{
    const QByteArray request = "POST " + target +
                               " HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Length: 0\r\n"
                               "Connection: close\r\n\r\n";
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    std::array<char, 512> answer{};
    const bool isSent =
        ::connect(socket, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0 &&
        ::send(socket, request.constData(), static_cast<std::size_t>(request.size()), 0) == request.size();
    const bool isHeard = isSent && ::recv(socket, answer.data(), answer.size(), 0) > 0;
    ::close(socket);
    if (!isHeard || QByteArrayView(answer.data(), 10) != "HTTP/1.1 2")
        throw std::runtime_error("the server did not take it");
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
