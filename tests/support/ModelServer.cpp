#include "support/ModelServer.h"

#include "support/Await.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <csignal>
#include <stdexcept>
#include <sys/prctl.h>

namespace morvane {

using namespace Qt::StringLiterals;

QJsonObject ModelServer::Request::json() const
{
    return QJsonDocument::fromJson(body).object();
}

namespace {

QStringList optionsFor(ModelServer::Interface interface, const std::vector<ModelServer::Listed> &models)
{
    QStringList options;
    if (interface == ModelServer::Interface::ollama)
        options.append(u"--ollama"_s);
    for (const ModelServer::Listed &model : models) {
        const QJsonObject object{{u"name"_s, model.name},
                                 {u"capabilities"_s, QJsonArray::fromStringList(model.capabilities)},
                                 {u"remoteHost"_s, model.remoteHost},
                                 {u"scenario"_s, model.scenario}};
        const QByteArray json = QJsonDocument(object).toJson(QJsonDocument::Compact);
        options += {u"--model"_s, QString::fromUtf8(json)};
    }
    return options;
}

} // namespace

ModelServer::ModelServer(Interface interface, const std::vector<Listed> &models)
    : ModelServer(optionsFor(interface, models))
{}

QString ModelServer::program()
{
    return QStringLiteral(MORVANE_MODEL_SERVER);
}

ModelServer::ModelServer(const QStringList &options)
{
    m_process.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(program(), QStringList{u"--log"_s, u"-"_s} + options);
    TestWait::until([this] { return m_process.canReadLine() || m_process.state() == QProcess::NotRunning; });
    const QByteArray line = m_process.readLine().trimmed();
    const QByteArray greeting = "listening on ";
    if (!line.startsWith(greeting))
        throw std::runtime_error("the model server did not start");
    m_baseUrl = QString::fromLatin1(line.mid(greeting.size()));
}

ModelServer::~ModelServer()
{
    m_process.kill();
    m_process.waitForFinished();
}

const std::vector<ModelServer::Request> &ModelServer::requests()
{
    readLog();
    return m_requests;
}

std::vector<ModelServer::Request> ModelServer::chats()
{
    std::vector<Request> chats = requests();
    std::erase_if(chats, [](const Request &request) { return !request.target.endsWith("chat/completions"); });
    return chats;
}

void ModelServer::awaitRequests(std::size_t count)
{
    TestWait::until([&] { return requests().size() >= count; });
}

void ModelServer::awaitEnded(std::size_t count)
{
    TestWait::until([&] {
        const auto ended = std::ranges::count(requests(), true, &Request::isOver);
        return static_cast<std::size_t>(ended) >= count;
    });
}

void ModelServer::readLog()
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
