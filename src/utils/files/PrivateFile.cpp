#include "utils/files/PrivateFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace morvane {

namespace {

using Operation = FileError::Operation;

const char *nameOf(Operation operation)
{
    switch (operation) {
    case Operation::CreateFolder:
        return "create folder";
    case Operation::Open:
        return "open";
    case Operation::Read:
        return "read";
    case Operation::Write:
        return "write";
    case Operation::Sync:
        return "sync";
    case Operation::Rename:
        return "rename";
    }
    return "";
}

class Descriptor {
public:
    explicit Descriptor(int fd)
        : m_fd(fd)
    {
        if (fd < 0)
            throw FileError(Operation::Open, errno);
    }
    ~Descriptor() { ::close(m_fd); }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    [[nodiscard]] int get() const { return m_fd; }

private:
    int m_fd;
};

// Removes the half-written neighbour unless the rename took it.
class Unlinker {
public:
    explicit Unlinker(QByteArray path)
        : m_path(std::move(path))
    {}
    ~Unlinker()
    {
        if (!m_path.isEmpty())
            ::unlink(m_path.constData());
    }
    Unlinker(const Unlinker &) = delete;
    Unlinker &operator=(const Unlinker &) = delete;
    void release() { m_path.clear(); }

private:
    QByteArray m_path;
};

void writeAll(int fd, QByteArrayView bytes)
{
    while (!bytes.isEmpty()) {
        const ssize_t written = ::write(fd, bytes.data(), static_cast<std::size_t>(bytes.size()));
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0)
            throw FileError(Operation::Write, errno);
        bytes = bytes.sliced(written);
    }
}

void sync(int fd)
{
    if (::fsync(fd) != 0)
        throw FileError(Operation::Sync, errno);
}

void syncFolder(const QString &path)
{
    const Descriptor directory(
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    sync(directory.get());
}

} // namespace

FileError::FileError(Operation operation, int status)
    : m_operation(operation)
    , m_status(status)
    , m_what(std::string(nameOf(operation)) + ": " + std::strerror(status))
{}

void PrivateFile::createFolder(const QString &path)
{
    const QString clean = QDir::cleanPath(path);
    if (QFileInfo(clean).isDir())
        return;
    const QString parent = QFileInfo(clean).path();
    if (parent != clean)
        createFolder(parent);
    if (::mkdir(QFile::encodeName(clean).constData(), S_IRWXU) != 0 && errno != EEXIST)
        throw FileError(Operation::CreateFolder, errno);
}

void PrivateFile::write(const QString &path, QByteArrayView bytes)
{
    const QString folder = QFileInfo(path).absolutePath();
    createFolder(folder);
    const QByteArray target = QFile::encodeName(path);
    QByteArray neighbour = target + ".part-XXXXXX"; // as in neighbourPattern
    {
        const Descriptor file(::mkostemp(neighbour.data(), O_CLOEXEC)); // mode 0600
        Unlinker unlinker(neighbour);
        writeAll(file.get(), bytes);
        sync(file.get());
        if (::rename(neighbour.constData(), target.constData()) != 0)
            throw FileError(Operation::Rename, errno);
        unlinker.release();
    }
    syncFolder(folder);
}

void PrivateFile::move(const QString &from, const QString &to)
{
    createFolder(QFileInfo(to).absolutePath());
    if (::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) != 0)
        throw FileError(Operation::Rename, errno);
    syncFolder(QFileInfo(to).absolutePath());
    syncFolder(QFileInfo(from).absolutePath());
}

std::optional<QByteArray> PrivateFile::read(const QString &path, qsizetype limit)
{
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0 && errno == ENOENT)
        return std::nullopt;
    const Descriptor file(fd);
    QByteArray bytes;
    char chunk[65536];
    while (true) {
        const ssize_t count = ::read(file.get(), chunk, sizeof chunk);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            throw FileError(Operation::Read, errno);
        if (count == 0)
            return bytes;
        if (bytes.size() + count > limit)
            throw FileError(Operation::Read, EFBIG);
        bytes.append(chunk, count);
    }
}

} // namespace morvane
