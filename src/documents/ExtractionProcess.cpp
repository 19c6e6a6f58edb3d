#include "documents/ExtractionProcess.h"

#include "async/CancelledError.h"
#include "documents/DocumentError.h"
#include "utils/text/Text.h"

#include <QProcess>

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace ExtractionFrames;
using Plain = DocumentError::Plain;
using Reply = ExtractionProcess::Reply;

namespace {

constexpr qsizetype longestReply = 64 << 20; // bytes
constexpr int betweenLooks = 20;             // milliseconds until a stop is seen
constexpr qsizetype thumbnailBytes =
    qsizetype{3} * PreparedPicture::thumbnailSide * PreparedPicture::thumbnailSide;

// Takes in what the process says, and throws where it says what it may not.
class Listener {
public:
    explicit Listener(const ExtractionProcess::OnProgress &onProgress)
        : m_onProgress(onProgress)
    {}

    void take(const QByteArray &bytes)
    {
        m_heard += bytes.size();
        require(m_heard <= longestReply);
        m_bytes += bytes;
        bool isBroken = false;
        while (const auto frame = ExtractionFrames::take(m_bytes, isBroken))
            take(*frame);
        require(!isBroken);
    }

    Reply reply()
    {
        require(m_isDone && m_bytes.isEmpty());
        const auto text = Text::fromUtf8(m_text);
        require(text.has_value());
        return {*text, m_picture};
    }

private:
    static void require(bool holds)
    {
        if (!holds)
            throw DocumentError(Plain::extractionFailed);
    }

    void take(const Frame &frame)
    {
        require(!m_isDone);
        switch (frame.kind) {
        case Kind::Progress: {
            const auto progress = progressOf(frame.payload);
            require(progress && progress->done <= progress->total);
            tell(*progress);
            return;
        }
        case Kind::Text:
            m_text += frame.payload;
            return;
        case Kind::Image:
            require(m_picture.jpeg.isEmpty() && frame.payload.startsWith("\xFF\xD8\xFF"));
            m_picture.jpeg = frame.payload;
            return;
        case Kind::Thumbnail:
            require(frame.payload.size() == thumbnailBytes);
            m_picture.thumbnail = frame.payload;
            return;
        case Kind::Line: // of the screen's reader, which this isn't
            require(false);
            return;
        case Kind::Failure:
            fail(frame.payload);
        case Kind::Done:
            m_isDone = true;
            return;
        }
    }

    // Once for each hundredth, however many pages there are.
    void tell(const Progress &progress)
    {
        const auto hundredths =
            static_cast<int>(quint64{progress.done} * 100 / std::max(progress.total, quint32{1}));
        if (hundredths <= m_told)
            return;
        m_told = hundredths;
        m_onProgress(progress);
    }

    [[noreturn]] static void fail(const QByteArray &reason)
    {
        require(reason.size() == 1);
        switch (static_cast<Failure>(reason.front())) {
        case Failure::Unreadable:
            throw DocumentError(Plain::unreadable);
        case Failure::PasswordProtected:
            throw DocumentError(Plain::passwordProtected);
        case Failure::UnreadableImage:
            throw DocumentError(Plain::unreadableImage);
        }
        throw DocumentError(Plain::extractionFailed);
    }

    const ExtractionProcess::OnProgress &m_onProgress;
    qsizetype m_heard = 0;
    QByteArray m_bytes; // of a frame that isn't whole yet
    QByteArray m_text;
    PreparedPicture m_picture;
    int m_told = -1; // hundredths of the pages
    bool m_isDone = false;
};

// Ends the process on every way out.
class Child {
public:
    explicit Child(const ExtractionProcess::Request &request)
    {
        // Nothing of this one's surroundings but where its libraries are.
        QProcessEnvironment environment;
        for (const QString &name : {u"LD_LIBRARY_PATH"_s, u"QT_PLUGIN_PATH"_s, u"ASAN_OPTIONS"_s})
            if (const QString value = qEnvironmentVariable(name.toUtf8()); !value.isEmpty())
                environment.insert(name, value);
        environment.insert(u"LC_ALL"_s, u"C.UTF-8"_s);
        m_process.setProcessEnvironment(environment);
        m_process.setStandardErrorFile(QProcess::nullDevice());
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

    QProcess &process() { return m_process; }

private:
    QProcess m_process;
};

} // namespace

Reply ExtractionProcess::run(const Request &request, const OnProgress &onProgress,
                             const std::stop_token &stop)
{
    throwIfStopped(stop);
    Child child(request);
    Listener listener(onProgress);
    while (child.process().state() != QProcess::NotRunning) {
        throwIfStopped(stop);
        child.process().waitForReadyRead(betweenLooks);
        listener.take(child.process().readAllStandardOutput());
    }
    listener.take(child.process().readAllStandardOutput());
    if (child.process().exitStatus() != QProcess::NormalExit || child.process().exitCode() != 0)
        throw DocumentError(Plain::extractionFailed);
    return listener.reply();
}

} // namespace morvane
