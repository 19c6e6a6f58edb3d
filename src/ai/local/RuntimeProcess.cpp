#include "ai/local/RuntimeProcess.h"

#include "ai/local/SetupLog.h"

#include <QCoreApplication>
#include <QDir>

#include <utility>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int longestEnd = 7'000; // milliseconds; the guard gives the runtime five seconds

// Where its models lie, what it listens on, and nothing that turns it more talkative.
QProcessEnvironment environmentFor(int port)
{
    QProcessEnvironment environment;
    for (const QString &name : {u"HOME"_s, u"OLLAMA_MODELS"_s})
        if (const QString value = qEnvironmentVariable(name.toUtf8()); !value.isEmpty())
            environment.insert(name, value);
    environment.insert(u"PATH"_s, u"/usr/local/bin:/usr/bin:/bin"_s);
    environment.insert(u"LC_ALL"_s, u"C.UTF-8"_s);
    environment.insert(u"OLLAMA_HOST"_s, u"127.0.0.1:%1"_s.arg(port));
    return environment;
}

} // namespace

RuntimeProcess::RuntimeProcess(const Program &program, SetupLog &log, QObject *parent)
    : QObject(parent)
    , m_log(log)
{
    m_process.setProcessEnvironment(environmentFor(program.port));
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    m_process.setStandardInputFile(QProcess::nullDevice());
    m_process.setWorkingDirectory(QDir::rootPath());
    connect(&m_process, &QProcess::readyRead, this, &RuntimeProcess::takeOutput);
    connect(&m_process, &QProcess::stateChanged, this, [this](QProcess::ProcessState state) {
        if (state != QProcess::NotRunning || m_isStopping)
            return;
        takeOutput();
        m_log.write(u"runtime ended by itself (exit %1)"_s.arg(m_process.exitCode()));
        Q_EMIT ended();
    });
    m_process.start(program.guard,
                    {QString::number(QCoreApplication::applicationPid()), program.runtime, u"serve"_s});
}

RuntimeProcess::~RuntimeProcess()
{
    stop();
}

void RuntimeProcess::requestStop()
{
    if (isRunning() && !std::exchange(m_isStopping, true))
        m_process.terminate();
}

void RuntimeProcess::stop()
{
    requestStop();
    if (isRunning() && !m_process.waitForFinished(longestEnd)) {
        m_process.kill(); // the guard; the runtime dies with it
        m_process.waitForFinished(longestEnd);
    }
}

void RuntimeProcess::takeOutput()
{
    const QByteArray output = m_process.readAll();
    if (m_isLogging)
        m_log.takeOutput(output);
}

} // namespace morvane
