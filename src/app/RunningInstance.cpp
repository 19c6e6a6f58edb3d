#include "app/RunningInstance.h"

#include "utils/files/PrivateFile.h"

#include <QFile>
#include <QSocketNotifier>

#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int patience = 2000;       // milliseconds
constexpr int longestEnding = 10000; // milliseconds; chats are saved and work is stopped meanwhile

// Makes the folder before the lock file is placed in it.
QString prepared(const QString &folder)
{
    PrivateFile::createFolder(folder);
    return folder;
}

// False when nobody takes them in time.
bool send(int pipe, QByteArrayView bytes)
{
    while (!bytes.isEmpty()) {
        const ssize_t count = ::write(pipe, bytes.data(), bytes.size());
        if (count > 0) {
            bytes = bytes.sliced(count);
            continue;
        }
        pollfd room{pipe, POLLOUT, 0};
        if (errno != EINTR && (errno != EAGAIN || ::poll(&room, 1, patience) <= 0))
            return false;
    }
    return true;
}

} // namespace

RunningInstance::RunningInstance(const QString &runtimeFolder, QObject *parent)
    : QObject(parent)
    , m_pipePath(prepared(runtimeFolder) + u"/morvane.show"_s)
    , m_lock(runtimeFolder + u"/morvane.lock"_s)
{
    m_lock.setStaleLockTime(0); // only a dead owner makes a lock stale
    if (m_lock.tryLock())
        listen();
}

RunningInstance::~RunningInstance()
{
    leave();
}

void RunningInstance::leave()
{
    if (m_pipe < 0)
        return;
    m_notifier.reset();
    QFile::remove(m_pipePath);
    ::close(std::exchange(m_pipe, -1));
}

bool RunningInstance::follow()
{
    if (!m_lock.tryLock(longestEnding))
        return false;
    listen();
    return true;
}

bool RunningInstance::askFirst(const AppRequest &request) const
{
    const int pipe =
        ::open(QFile::encodeName(m_pipePath).constData(), O_WRONLY | O_NONBLOCK | O_CLOEXEC | O_NOFOLLOW);
    if (pipe < 0)
        return false;
    // Only what is small goes through a pipe in one piece; another start waits until this one has done.
    while (::flock(pipe, LOCK_EX) != 0 && errno == EINTR) {
    }
    const bool isTaken = send(pipe, RequestMessage::of(request));
    ::close(pipe);
    return isTaken;
}

void RunningInstance::listen()
{
    const QByteArray path = QFile::encodeName(m_pipePath);
    QFile::remove(m_pipePath);
    if (::mkfifo(path.constData(), S_IRUSR | S_IWUSR) != 0)
        return;
    m_pipe = ::open(path.constData(), O_RDWR | O_NONBLOCK | O_CLOEXEC | O_NOFOLLOW); // so that it never ends
    if (m_pipe < 0)
        return;
    m_notifier = std::make_unique<QSocketNotifier>(m_pipe, QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &RunningInstance::take);
}

void RunningInstance::take()
{
    QByteArray bytes(PIPE_BUF, Qt::Uninitialized);
    ssize_t count = 0;
    while ((count = ::read(m_pipe, bytes.data(), bytes.size())) > 0) {
        for (const AppRequest &request : m_message.read(QByteArrayView(bytes).first(count)))
            Q_EMIT asked(request);
    }
}

} // namespace morvane
