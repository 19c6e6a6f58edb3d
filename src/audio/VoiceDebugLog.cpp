#include "audio/VoiceDebugLog.h"

#include "async/Work.h"
#include "utils/files/PrivateFile.h"

#include <QFile>
#include <QFileInfo>

#include <mutex>
#include <tuple>

namespace morvane {

using namespace Qt::StringLiterals;

struct VoiceDebugLog::Queue {
    std::mutex mutex;
    QByteArrayList lines;   // guarded by mutex
    bool isWritten = false; // a worker is at it; guarded by mutex
};

namespace {

void append(const QString &path, const QByteArrayList &lines)
{
    try {
        PrivateFile::createFolder(QFileInfo(path).path());
    } catch (const FileError &) {
        return;
    }
    QFile file(path);
    for (const QByteArray &line : lines) {
        const auto fresh =
            file.size() >= VoiceDebugLog::largestFile ? QIODevice::Truncate : QIODevice::Append;
        if (!file.open(QIODevice::WriteOnly | fresh, QFile::ReadOwner | QFile::WriteOwner))
            return;
        file.write(line);
        file.close();
    }
}

} // namespace

VoiceDebugLog::VoiceDebugLog(QString path, Clock &clock, Work &work)
    : m_path(std::move(path))
    , m_clock(clock)
    , m_work(work)
    , m_queue(std::make_shared<Queue>())
{}

// What no worker came to.
VoiceDebugLog::~VoiceDebugLog()
{
    const std::lock_guard lock(m_queue->mutex);
    if (!m_queue->lines.isEmpty())
        append(m_path, m_queue->lines);
}

void VoiceDebugLog::note(const QString &line)
{
    const QString time = m_clock.now().toLocalTime().toString(u"HH:mm:ss.zzz"_s);
    const std::lock_guard lock(m_queue->mutex);
    m_queue->lines.append((time + u' ' + line + u'\n').toUtf8());
    if (std::exchange(m_queue->isWritten, true))
        return;
    // It runs on when its handle is gone, and nobody waits for it.
    std::ignore = m_work.run([queue = m_queue, path = m_path] {
        std::unique_lock held(queue->mutex);
        while (!queue->lines.isEmpty()) {
            const QByteArrayList lines = std::exchange(queue->lines, {});
            held.unlock();
            append(path, lines);
            held.lock();
        }
        queue->isWritten = false;
    });
}

} // namespace morvane
