#include "support/RuntimeHost.h"

#include "utils/files/PrivateFile.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QUrl>

#include <csignal>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QByteArray untouched = "untouched";

QByteArray read(const QString &path)
{
    return PrivateFile::read(path, 1 << 24).value_or(QByteArray());
}

} // namespace

RuntimeHost::RuntimeHost(const QString &archive)
    : m_process(QStringLiteral(MORVANE_RUNTIME_HOST),
                {u"--log"_s, u"-"_s, u"--archive"_s, archive, u"--folder"_s, m_folder.path()})
{
    PrivateFile::write(m_folder.filePath(u"victim"_s), untouched);
}

RuntimeHost::~RuntimeHost()
{
    for (const QJsonObject &started : journal()) {
        const int process = started["process"_L1].toInt();
        const QString program = QFile::symLinkTarget(u"/proc/%1/exe"_s.arg(process));
        if (process > 0 && program.endsWith("/bin/ollama"_L1))
            ::kill(process, SIGKILL);
    }
}

void RuntimeHost::deliver(const QString &delivery) const
{
    const int port = QUrl(m_process.baseUrl()).port();
    ServerProcess::post(static_cast<quint16>(port), "/play?delivery=" + delivery.toLatin1());
}

void RuntimeHost::play(const QString &scenario) const
{
    PrivateFile::write(m_folder.filePath(u"scenario"_s), scenario.toUtf8());
}

bool RuntimeHost::isUnharmed() const
{
    return !QFile::exists(m_folder.filePath(u"escaped"_s)) &&
           read(m_folder.filePath(u"victim"_s)) == untouched;
}

std::vector<QJsonObject> RuntimeHost::journal(const QString &event) const
{
    std::vector<QJsonObject> events;
    for (const QByteArray &line : read(m_folder.filePath(u"journal"_s)).split('\n')) {
        QJsonObject object = QJsonDocument::fromJson(line).object();
        if (!object.isEmpty() && (event.isEmpty() || object["event"_L1].toString() == event))
            events.push_back(std::move(object));
    }
    return events;
}

std::vector<int> RuntimeHost::processesBelow(const QString &folder)
{
    std::vector<int> processes;
    for (const QString &name : QDir(u"/proc"_s).entryList(QDir::Dirs)) {
        if (name.toInt() > 0 && QFile::symLinkTarget(u"/proc/%1/exe"_s.arg(name)).startsWith(folder + u'/'))
            processes.push_back(name.toInt());
    }
    return processes;
}

} // namespace morvane
