#include "services/ScreenReadingProcess.h"

#include "async/CancelledError.h"
#include "documents/ExtractionFrames.h"

#include <QProcess>

#include <openssl/crypto.h>

#include <algorithm>
#include <stdexcept>
#include <sys/mman.h>
#include <unistd.h>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace ExtractionFrames;

namespace {

constexpr qsizetype longestReply = 8 << 20; // bytes
constexpr int betweenLooks = 20;            // milliseconds until a stop is seen

void require(bool holds, const char *words)
{
    if (!holds)
        throw std::runtime_error(words);
}

// A copy that another process can be given: memory with a descriptor, and no file behind it.
class SharedMemory {
public:
    explicit SharedMemory(const SecretBytes &bytes)
        : m_size(bytes.size())
        , m_descriptor(::memfd_create("picture", MFD_CLOEXEC))
    {
        if (m_descriptor >= 0 && ::ftruncate(m_descriptor, static_cast<off_t>(m_size)) == 0)
            m_place = ::mmap(nullptr, m_size, PROT_READ | PROT_WRITE, MAP_SHARED, m_descriptor, 0);
        if (m_place != MAP_FAILED)
            std::copy_n(bytes.data(), m_size, static_cast<unsigned char *>(m_place));
    }
    ~SharedMemory()
    {
        if (m_place != MAP_FAILED) {
            OPENSSL_cleanse(m_place, m_size);
            ::munmap(m_place, m_size);
        }
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }
    SharedMemory(const SharedMemory &) = delete;
    SharedMemory &operator=(const SharedMemory &) = delete;

    [[nodiscard]] bool isThere() const { return m_place != MAP_FAILED; }
    [[nodiscard]] int descriptor() const { return m_descriptor; }

private:
    std::size_t m_size;
    int m_descriptor;
    void *m_place = MAP_FAILED;
};

QStringList argumentsOf(const ScreenReadingProcess::Request &request, const ScreenPicture &picture)
{
    QStringList arguments{request.languages.join(u'+'), QString::number(picture.pixelsPerPoint)};
    if (picture.form == ScreenPicture::Form::pixels) {
        arguments +=
            {u"pixels"_s, QString::number(picture.size.width()), QString::number(picture.size.height())};
    } else {
        arguments += u"file"_s;
        for (const double edge :
             {picture.part.x(), picture.part.y(), picture.part.width(), picture.part.height()})
            arguments += QString::number(edge);
    }
    return arguments;
}

// Ends the process on every way out.
class Child {
public:
    Child(const QString &program, const QStringList &arguments, int picture)
    {
        // Nothing of this one's surroundings but where its libraries are.
        QProcessEnvironment environment;
        for (const QString &name : {u"LD_LIBRARY_PATH"_s, u"QT_PLUGIN_PATH"_s, u"ASAN_OPTIONS"_s})
            if (const QString value = qEnvironmentVariable(name.toUtf8()); !value.isEmpty())
                environment.insert(name, value);
        environment.insert(u"LC_ALL"_s, u"C.UTF-8"_s);
        environment.insert(u"OMP_THREAD_LIMIT"_s, u"1"_s); // more only wait for each other
        m_process.setProcessEnvironment(environment);
        m_process.setStandardErrorFile(QProcess::nullDevice());
        m_process.setChildProcessModifier([picture] { ::dup2(picture, STDIN_FILENO); });
        m_process.start(program, arguments);
    }
    ~Child()
    {
        m_process.kill();
        m_process.waitForFinished();
    }
    Child(const Child &) = delete;
    Child &operator=(const Child &) = delete;

    QProcess &process() { return m_process; }

private:
    QProcess m_process;
};

// Takes in what the process says, and throws where it says what it may not.
class Listener {
public:
    void take(const QByteArray &bytes)
    {
        m_heard += bytes.size();
        require(m_heard <= longestReply, "it said too much");
        m_bytes += bytes;
        bool isBroken = false;
        while (const auto frame = ExtractionFrames::take(m_bytes, isBroken))
            take(*frame);
        require(!isBroken, "it said what can't be read");
    }

    std::vector<TextObservation> reply()
    {
        require(m_isDone && m_bytes.isEmpty(), "it broke off");
        return std::move(m_observations);
    }

private:
    void take(const Frame &frame)
    {
        require(!m_isDone, "it went on behind its end");
        if (frame.kind == Kind::Done) {
            m_isDone = true;
            return;
        }
        require(frame.kind != Kind::Failure, "it could not read the picture");
        auto observation = TextObservation::decoded(frame.payload);
        require(frame.kind == Kind::Line && observation, "it said what it may not");
        m_observations.push_back(*std::move(observation));
    }

    qsizetype m_heard = 0;
    QByteArray m_bytes; // of a frame that isn't whole yet
    std::vector<TextObservation> m_observations;
    bool m_isDone = false;
};

} // namespace

std::vector<TextObservation> ScreenReadingProcess::run(const Request &request, const ScreenPicture &picture,
                                                       const std::stop_token &stop)
{
    throwIfStopped(stop);
    const SharedMemory memory(picture.bytes);
    require(memory.isThere(), "no memory to hand the picture over in");
    Child child(request.program, argumentsOf(request, picture), memory.descriptor());
    Listener listener;
    while (child.process().state() != QProcess::NotRunning) {
        throwIfStopped(stop);
        child.process().waitForReadyRead(betweenLooks);
        listener.take(child.process().readAllStandardOutput());
    }
    listener.take(child.process().readAllStandardOutput());
    require(child.process().exitStatus() == QProcess::NormalExit && child.process().exitCode() == 0,
            "its process failed");
    return listener.reply();
}

} // namespace morvane
