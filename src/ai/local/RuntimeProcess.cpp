#include "ai/local/RuntimeProcess.h"

#include "ai/local/SetupLog.h"

#include <QCoreApplication>
#include <QDir>

#include <utility>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int longestEnd = 7'000; // milliseconds; the guard gives the runtime five seconds

// Its home, what its starter names, and nothing that turns it more talkative.
QProcessEnvironment environmentOf(const RuntimeProcess::Program &program)
{
    QProcessEnvironment environment;
    if (const QString home = qEnvironmentVariable("HOME"); !home.isEmpty())
        environment.insert(u"HOME"_s, home);
    environment.insert(u"PATH"_s, u"/usr/local/bin:/usr/bin:/bin"_s);
    environment.insert(u"LC_ALL"_s, u"C.UTF-8"_s);
    for (const auto &[name, value] : program.environment)
        environment.insert(name, value);
    return environment;
}

} // namespace

RuntimeProcess::RuntimeProcess(const Program &program, SetupLog *log, QObject *parent)
    : QObject(parent)
    , m_log(log)
{
    m_process.setProcessEnvironment(environmentOf(program));
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    if (!m_log)
        m_process.setStandardOutputFile(QProcess::nullDevice());
    m_process.setStandardInputFile(QProcess::nullDevice());
    m_process.setWorkingDirectory(QDir::rootPath());
    connect(&m_process, &QProcess::readyRead, this, &RuntimeProcess::takeOutput);
    connect(&m_process, &QProcess::stateChanged, this, [this](QProcess::ProcessState state) {
        if (state != QProcess::NotRunning || m_isStopping)
            return;
        takeOutput();
        if (m_log)
            m_log->write(u"runtime ended by itself (exit %1)"_s.arg(m_process.exitCode()));
        Q_EMIT ended();
    });
    m_process.start(program.guard,
                    QStringList{QString::number(QCoreApplication::applicationPid()), program.runtime} +
                        program.arguments);
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
    if (!m_log)
        return;
    const QByteArray output = m_process.readAll();
    if (m_isLogging)
        m_log->takeOutput(output);
}

} // namespace morvane
