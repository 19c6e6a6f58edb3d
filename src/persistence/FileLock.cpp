#include "persistence/FileLock.h"

#include "utils/files/PrivateFile.h"

#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace morvane {

namespace {

constexpr std::chrono::milliseconds betweenAttempts{50};

} // namespace

std::optional<FileLock> FileLock::acquire(const QString &path, std::chrono::milliseconds limit,
                                          const Pause &pause)
{
    const int descriptor =
        ::open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (descriptor < 0)
        throw FileError(FileError::Operation::Open, errno);
    FileLock lock(descriptor); // closes the file when no attempt succeeds
    for (std::chrono::milliseconds waited{0};; waited += betweenAttempts) {
        if (::flock(descriptor, LOCK_EX | LOCK_NB) == 0)
            return lock;
        if (waited >= limit)
            return std::nullopt;
        pause(betweenAttempts);
    }
}

FileLock &FileLock::operator=(FileLock &&other) noexcept
{
    std::swap(m_descriptor, other.m_descriptor);
    return *this;
}

FileLock::~FileLock()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

void FileLock::sleep(std::chrono::milliseconds duration)
{
    std::this_thread::sleep_for(duration);
}

} // namespace morvane
