#include "ai/local/SetupLog.h"

#include "utils/files/PrivateFile.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <utility>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// Whatever a program prints, a line is a line and moves no cursor.
QString harmless(QString line)
{
    std::replace_if(
        line.begin(), line.end(), [](QChar c) { return c.category() == QChar::Other_Control; }, u' ');
    return line.left(SetupLog::longestLine);
}

} // namespace

SetupLog::SetupLog(QString path, const Clock &clock)
    : m_path(std::move(path))
    , m_clock(clock)
{}

void SetupLog::write(const QString &line)
{
    append(m_clock.now().toString(Qt::ISODate).toUtf8() + ' ' + harmless(line).toUtf8() + '\n');
}

void SetupLog::takeOutput(QByteArrayView piece)
{
    constexpr qsizetype roomForLine = longestLine * 4; // bytes of UTF-8; the rest of a longer line is dropped
    qsizetype at = 0;
    while (at < piece.size()) {
        const qsizetype end = piece.indexOf('\n', at);
        const qsizetype until = end < 0 ? piece.size() : end;
        const qsizetype room = std::max<qsizetype>(0, roomForLine - m_unfinished.size());
        m_unfinished += piece.sliced(at, std::min(until - at, room));
        if (end < 0)
            return;
        if (!m_unfinished.isEmpty())
            write(u"runtime: "_s + QString::fromUtf8(std::exchange(m_unfinished, {})));
        at = end + 1;
    }
}

void SetupLog::append(const QByteArray &line)
{
    const std::lock_guard lock(m_mutex);
    try {
        PrivateFile::createFolder(QFileInfo(m_path).absolutePath());
    } catch (const FileError &) {
        return;
    }
    const QString former = m_path + u".1"_s;
    if (QFileInfo(m_path).size() + line.size() > largestFile) {
        QFile::remove(former);
        QFile::rename(m_path, former);
    }
    QFile file(m_path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered))
        return;
    file.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
    file.write(line);
}

} // namespace morvane
