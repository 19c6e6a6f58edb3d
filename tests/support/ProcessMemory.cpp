#include "support/ProcessMemory.h"

#include <QFile>

#include <stdexcept>

namespace morvane {

namespace {

qint64 statusBytes(QByteArrayView key)
{
    QFile file(QStringLiteral("/proc/self/status"));
    const QByteArray status = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    const qsizetype at = status.indexOf(key);
    if (at < 0)
        throw std::runtime_error("the kernel keeps this figure");
    const QByteArray line = status.mid(at + key.size());
    return line.left(line.indexOf('k')).trimmed().toLongLong() * 1024; // "VmRSS:   123 kB"
}

} // namespace

qint64 ProcessMemory::peakMebibytes(const std::function<void()> &work)
{
    QFile peak(QStringLiteral("/proc/self/clear_refs")); // 5 resets the peak to what is resident now
    if (!peak.open(QIODevice::WriteOnly | QIODevice::Unbuffered) || peak.write("5") != 1)
        throw std::runtime_error("the kernel keeps its peak");
    const qint64 before = statusBytes("VmRSS:");
    work();
    return (statusBytes("VmHWM:") - before) / (1024 * 1024);
}

bool ProcessMemory::isInstrumented()
{
#ifdef __SANITIZE_ADDRESS__
    return true;
#else
    return false;
#endif
}

} // namespace morvane
