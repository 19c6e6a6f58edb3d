#include "support/ProcessMemory.h"

#include <QFile>

#include <stdexcept>

namespace morvane {

namespace {

qint64 statusBytes(QByteArrayView key)
{
    QFile file(QStringLiteral("/proc/self/status"));
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error("no /proc/self/status");
    for (const QByteArray &line : file.readAll().split('\n')) {
        if (line.startsWith(key))
            return line.mid(key.size()).chopped(3).trimmed().toLongLong() * 1024; // "VmRSS:   123 kB"
    }
    throw std::runtime_error("no such figure");
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
