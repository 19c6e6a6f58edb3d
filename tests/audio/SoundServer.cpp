#include "audio/SoundServer.h"

#include "support/Await.h"

#include <QStandardPaths>

#include <csignal>
#include <cstring>

#include <sys/prctl.h>

namespace morvane {

using namespace Qt::StringLiterals;

bool SoundServer::isThere()
{
    return !QStandardPaths::findExecutable(u"pulseaudio"_s).isEmpty();
}

SoundServer::SoundServer()
{
    const QString socket = m_home.filePath(u"pulse.sock"_s);
    QStringList words{u"-n"_s, u"--daemonize=no"_s, u"--exit-idle-time=-1"_s, u"--use-pid-file=no"_s};
    // Null sinks keep 2 s in hand unless they may not rewind.
    for (
        const QString &module :
        {u"module-native-protocol-unix auth-anonymous=1 socket="_s + socket,
         u"module-null-sink sink_name=test_out rate=48000 norewinds=1"_s,
         u"module-null-sink sink_name=mic_feed rate=16000 channels=1 norewinds=1"_s,
         u"module-remap-source source_name=test_mic master=mic_feed.monitor source_properties=device.description=Test_Microphone"_s})
        words += {u"-L"_s, module};
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"XDG_RUNTIME_DIR"_s, m_home.path());
    environment.insert(u"HOME"_s, m_home.path());
    environment.remove(u"XDG_CONFIG_HOME"_s);
    m_server.setProcessEnvironment(environment);
    m_server.setChildProcessModifier(
        [] { prctl(PR_SET_PDEATHSIG, SIGKILL); }); // it goes with a test that crashes
    m_server.setStandardOutputFile(QProcess::nullDevice());
    m_server.setStandardErrorFile(QProcess::nullDevice());
    m_server.start(u"pulseaudio"_s, words);
    qputenv("PULSE_SERVER", ("unix:" + socket).toUtf8());
    for (int attempt = 0; control({u"info"_s}).isEmpty(); ++attempt) {
        if (attempt == 100 || m_server.waitForFinished(50))
            throw std::runtime_error("the sound server did not start");
    }
    control({u"set-default-sink"_s, u"test_out"_s});
    control({u"set-default-source"_s, QString::fromLatin1(microphone)});
}

SoundServer::~SoundServer()
{
    for (QProcess *process : {m_speaker.get(), m_recorder.get(), &m_server}) {
        if (!process)
            continue;
        process->kill();
        process->waitForFinished();
    }
}

std::unique_ptr<QProcess> SoundServer::stream(const QString &program, const QStringList &options)
{
    auto process = std::make_unique<QProcess>();
    process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process->start(program, options + QStringList{u"--raw"_s, u"--format=s16le"_s, u"--rate=16000"_s,
                                                  u"--channels=1"_s});
    process->waitForStarted();
    return process;
}

void SoundServer::speakInto(const std::vector<std::int16_t> &samples)
{
    m_speaker = stream(u"pacat"_s, {u"--playback"_s, u"--device="_s + m_feed, u"--latency-msec=400"_s});
    m_speaker->write(reinterpret_cast<const char *>(samples.data()),
                     static_cast<qint64>(samples.size() * sizeof(std::int16_t)));
    m_speaker->closeWriteChannel();
}

void SoundServer::beginRecording()
{
    m_recorder = stream(u"parec"_s, {u"--device=test_out.monitor"_s, u"--latency-msec=20"_s});
    TestWait::until([this] { return m_recorder->bytesAvailable() > 0; });
}

std::vector<std::int16_t> SoundServer::recorded()
{
    const QByteArray bytes = m_recorder->readAllStandardOutput();
    std::vector<std::int16_t> samples(static_cast<std::size_t>(bytes.size()) / sizeof(std::int16_t));
    if (!samples.empty())
        std::memcpy(samples.data(), bytes.constData(), samples.size() * sizeof(std::int16_t));
    return samples;
}

void SoundServer::stop()
{
    m_server.kill();
    m_server.waitForFinished();
}

QString SoundServer::control(const QStringList &command)
{
    QProcess pactl;
    pactl.start(u"pactl"_s, command);
    pactl.waitForFinished(2000);
    return QString::fromUtf8(pactl.readAllStandardOutput());
}

} // namespace morvane
