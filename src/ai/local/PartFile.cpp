#include "ai/local/PartFile.h"

#include "utils/files/PrivateFile.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace morvane {

using Operation = FileError::Operation;

namespace {

int opened(const QString &path)
{
    PrivateFile::createFolder(QFileInfo(path).absolutePath());
    const int descriptor = ::open(QFile::encodeName(path).constData(),
                                  O_WRONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR);
    if (descriptor < 0)
        throw FileError(Operation::Open, errno);
    return descriptor;
}

} // namespace

PartFile::PartFile(const QString &path)
    : m_descriptor(opened(path))
{}

PartFile::~PartFile()
{
    ::close(m_descriptor);
}

void PartFile::write(const QByteArray &bytes, qint64 offset)
{
    QByteArrayView rest = bytes;
    while (!rest.isEmpty()) {
        const ssize_t written =
            ::pwrite(m_descriptor, rest.data(), static_cast<std::size_t>(rest.size()), offset);
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0)
            throw FileError(Operation::Write, errno);
        rest = rest.sliced(written);
        offset += written;
    }
}

void PartFile::truncate()
{
    if (::ftruncate(m_descriptor, 0) != 0)
        throw FileError(Operation::Write, errno);
}

void PartFile::sync()
{
    if (::fsync(m_descriptor) != 0)
        throw FileError(Operation::Sync, errno);
}

qint64 PartFile::size(const QString &path)
{
    return QFileInfo(path).size();
}

} // namespace morvane
