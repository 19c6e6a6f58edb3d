#include "platform/linux/ListeningSockets.h"

#include <QDir>
#include <QFile>
#include <QMultiHash>
#include <QSet>
#include <QtEndian>

#include <algorithm>
#include <array>

#include <unistd.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using Listener = LocalMachine::Listener;

// The parent's id; the name in parentheses before it may hold anything.
qint64 parentOf(const QString &proc, const QString &process)
{
    QFile file(proc + u'/' + process + u"/stat"_s);
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray line = file.read(1024);
    const QByteArrayList behindName = line.mid(line.lastIndexOf(')') + 1).simplified().split(' ');
    return behindName.size() > 1 ? behindName.at(1).toLongLong() : 0;
}

QSet<qint64> withDescendants(qint64 process, const QString &proc)
{
    QMultiHash<qint64, qint64> children;
    for (const QString &name : QDir(proc).entryList(QDir::Dirs)) {
        bool isNumber = false;
        const qint64 id = name.toLongLong(&isNumber);
        if (isNumber)
            children.insert(parentOf(proc, name), id);
    }
    QSet<qint64> found;
    QList<qint64> open{process};
    while (!open.isEmpty()) {
        const qint64 id = open.takeLast();
        if (found.contains(id))
            continue;
        found.insert(id);
        open += children.values(id);
    }
    return found;
}

// The inodes of its sockets; false when its descriptors can't be seen.
bool addSockets(const QString &proc, qint64 process, QSet<QByteArray> &inodes)
{
    const QString folder = u"%1/%2/fd"_s.arg(proc).arg(process);
    const QDir descriptors(folder);
    if (!descriptors.isReadable())
        return !QFile::exists(u"%1/%2"_s.arg(proc).arg(process)); // it has ended meanwhile
    static constexpr QByteArrayView prefix{"socket:["};
    for (const QString &name : descriptors.entryList(QDir::Files | QDir::System | QDir::Hidden)) {
        std::array<char, 64> target{};
        const ssize_t size =
            ::readlink(QFile::encodeName(folder + u'/' + name).constData(), target.data(), target.size());
        const QByteArrayView text(target.data(), std::max<ssize_t>(size, 0));
        if (text.startsWith(prefix))
            inodes.insert(text.sliced(prefix.size()).chopped(1).toByteArray());
    }
    return true;
}

// "0100007F" or "00000000000000000000000001000000": words of 32 bits in the machine's order.
QByteArray addressOf(const QByteArray &hex)
{
    QByteArray bytes = QByteArray::fromHex(hex);
    for (qsizetype i = 0; i + 4 <= bytes.size(); i += 4)
        qToBigEndian(qFromLittleEndian<quint32>(bytes.constData() + i), bytes.data() + i);
    return bytes;
}

struct Socket {
    Listener listener;
    QByteArray inode;
};

// A line: "0: 0100007F:2CAA 00000000:0000 0A … uid timeout inode …". False when there is no such table.
bool addListening(const QString &table, std::vector<Socket> &found)
{
    QFile file(table);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    file.readLine();
    while (true) {
        const QByteArray line = file.readLine();
        if (line.isEmpty())
            return true;
        const QByteArrayList fields = line.simplified().split(' ');
        if (fields.size() < 10 || fields.at(3) != "0A")
            continue;
        const qsizetype colon = fields.at(1).indexOf(':');
        found.push_back(
            {{addressOf(fields.at(1).left(colon)), fields.at(1).mid(colon + 1).toInt(nullptr, 16)},
             fields.at(9)});
    }
}

// All that the process could listen beside; nothing when that can't be read.
std::optional<std::vector<Socket>> listening(qint64 process, const QString &proc)
{
    std::vector<Socket> found;
    const QString tables = u"%1/%2/net/"_s.arg(proc).arg(process);
    if (!addListening(tables + u"tcp"_s, found))
        return std::nullopt;
    addListening(tables + u"tcp6"_s, found); // a kernel without IPv6 has none
    return found;
}

std::optional<QSet<QByteArray>> inodesOf(qint64 process, const QString &proc)
{
    if (process <= 0 || !QFile::exists(u"%1/%2"_s.arg(proc).arg(process)))
        return std::nullopt;
    QSet<QByteArray> inodes;
    for (const qint64 id : withDescendants(process, proc))
        if (!addSockets(proc, id, inodes))
            return std::nullopt;
    return inodes;
}

} // namespace

std::optional<std::vector<Listener>> ListeningSockets::of(qint64 process, const QString &proc)
{
    const auto inodes = inodesOf(process, proc);
    const auto sockets = inodes ? listening(process, proc) : std::nullopt;
    if (!sockets)
        return std::nullopt;
    std::vector<Listener> found;
    for (const Socket &socket : *sockets)
        if (inodes->contains(socket.inode))
            found.push_back(socket.listener);
    return found;
}

bool ListeningSockets::areShared(int port, qint64 process, const QString &proc)
{
    const auto inodes = inodesOf(process, proc);
    const auto sockets = inodes ? listening(process, proc) : std::nullopt;
    return sockets && std::any_of(sockets->begin(), sockets->end(), [&](const Socket &socket) {
               const bool isNear = socket.listener.isLoopback() || socket.listener.address.count('\0') ==
                                                                       socket.listener.address.size(); // any
               return socket.listener.port == port && isNear && !inodes->contains(socket.inode);
           });
}

} // namespace morvane
