#include "platform/linux/LinuxMachine.h"

#include "platform/linux/GraphicsMemory.h"
#include "platform/linux/ListeningSockets.h"

#include <QFile>
#include <QFileInfo>

#include <sys/statvfs.h>

namespace morvane {

namespace {

// "MemTotal:       16303428 kB"
std::uint64_t mainMemory(const QString &proc)
{
    QFile file(proc + QStringLiteral("/meminfo"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    while (true) {
        const QByteArray line = file.readLine(256);
        if (line.isEmpty())
            return 0;
        const QByteArrayList words = line.simplified().split(' ');
        if (words.size() == 3 && words.front() == "MemTotal:")
            return words.at(1).toULongLong() * 1024;
    }
}

} // namespace

LocalMachine::Memory LinuxMachine::memory() const
{
    return {.main = mainMemory(m_places.proc),
            .nvidiaGraphics = GraphicsMemory::nvidia(m_places.managementLibrary),
            .amdGraphics = GraphicsMemory::amd(m_places.sys)};
}

std::optional<std::uint64_t> LinuxMachine::freeDisk(const QString &path) const
{
    QString place = path;
    while (!QFileInfo::exists(place) && QFileInfo(place).path() != place)
        place = QFileInfo(place).path();
    struct statvfs disk {};
    if (::statvfs(QFile::encodeName(place).constData(), &disk) != 0)
        return std::nullopt;
    return std::uint64_t{disk.f_bavail} * disk.f_frsize;
}

std::optional<std::vector<LocalMachine::Listener>> LinuxMachine::listeners(qint64 process) const
{
    return ListeningSockets::of(process, m_places.proc);
}

bool LinuxMachine::isShared(int port, qint64 process) const
{
    return ListeningSockets::areShared(port, process, m_places.proc);
}

} // namespace morvane
