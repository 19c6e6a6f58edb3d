#include "documents/ConfinedProcess.h"

#include "async/CancelledError.h"

#include <QProcess>

#include <unistd.h>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace ExtractionFrames;
using ConfinedProcess::Broken;

namespace {

constexpr int betweenLooks = 20; // milliseconds until a stop is seen

void require(bool holds, const char *words)
{
    if (!holds)
        throw Broken(words);
}

// Ends the process on every way out.
class Child {
public:
    explicit Child(const ConfinedProcess::Request &request)
    {
        m_process.setProcessEnvironment(environment(request));
        m_process.setStandardErrorFile(QProcess::nullDevice());
        if (const int input = request.standardInput; input >= 0)
            m_process.setChildProcessModifier([input] { ::dup2(input, STDIN_FILENO); });
        m_process.start(request.program, request.arguments);
        m_process.write(request.input);
        m_process.closeWriteChannel();
    }
    ~Child()
    {
        m_process.kill();
        m_process.waitForFinished();
    }
    Child(const Child &) = delete;
    Child &operator=(const Child &) = delete;

    [[nodiscard]] bool isRunning() const { return m_process.state() != QProcess::NotRunning; }
    [[nodiscard]] bool endedWell() const
    {
        return m_process.exitStatus() == QProcess::NormalExit && m_process.exitCode() == 0;
    }
    void wait() { m_process.waitForReadyRead(betweenLooks); }
    [[nodiscard]] QByteArray said() { return m_process.readAllStandardOutput(); }

private:
    // Nothing of this one's surroundings but where its libraries are.
    static QProcessEnvironment environment(const ConfinedProcess::Request &request)
    {
        QProcessEnvironment all;
        for (const QString &name : {u"LD_LIBRARY_PATH"_s, u"QT_PLUGIN_PATH"_s, u"ASAN_OPTIONS"_s})
            if (const QString value = qEnvironmentVariable(name.toUtf8()); !value.isEmpty())
                all.insert(name, value);
        all.insert(u"LC_ALL"_s, u"C.UTF-8"_s);
        for (const auto &[name, value] : request.environment)
            all.insert(name, value);
        return all;
    }

    QProcess m_process;
};

// Takes frames out of what the process says.
class Listener {
public:
    Listener(qsizetype longestReply, const ConfinedProcess::OnFrame &onFrame)
        : m_longestReply(longestReply)
        , m_onFrame(onFrame)
    {}

    void take(const QByteArray &bytes)
    {
        m_heard += bytes.size();
        require(m_heard <= m_longestReply, "it said too much");
        m_bytes += bytes;
        bool isBroken = false;
        while (const auto frame = ExtractionFrames::take(m_bytes, isBroken))
            take(*frame);
        require(!isBroken, "it said what can't be read");
    }

    void end() const { require(m_isDone && m_bytes.isEmpty(), "it broke off"); }

private:
    void take(const Frame &frame)
    {
        require(!m_isDone, "it went on behind its end");
        if (frame.kind == Kind::Done)
            m_isDone = true;
        else
            m_onFrame(frame);
    }

    qsizetype m_longestReply;
    const ConfinedProcess::OnFrame &m_onFrame;
    qsizetype m_heard = 0;
    QByteArray m_bytes; // of a frame that isn't whole yet
    bool m_isDone = false;
};

} // namespace

void ConfinedProcess::run(const Request &request, const OnFrame &onFrame, const std::stop_token &stop)
{
    throwIfStopped(stop);
    Child child(request);
    Listener listener(request.longestReply, onFrame);
    while (child.isRunning()) {
        throwIfStopped(stop);
        child.wait();
        listener.take(child.said());
    }
    listener.take(child.said());
    require(child.endedWell(), "its process failed");
    listener.end();
}

} // namespace morvane
