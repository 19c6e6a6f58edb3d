#include "support/FileSpy.h"

#include <QDir>
#include <QFile>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>

#include <dlfcn.h>
#include <unistd.h>

namespace morvane {

namespace {

std::atomic<FileSpy *> spy = nullptr;

QString pathOf(int descriptor)
{
    std::array<char, 4096> path{};
    const QByteArray link = "/proc/self/fd/" + QByteArray::number(descriptor);
    const ssize_t size = readlink(link.constData(), path.data(), path.size());
    return QFile::decodeName(QByteArray(path.data(), size < 0 ? 0 : size));
}

bool refuses(const char *verb, const QString &path, const QString &target = {})
{
    FileSpy *const watching = spy;
    const int before = errno;
    const bool isRefused = watching != nullptr && watching->note(verb, path, target);
    errno = isRefused ? watching->status() : before;
    return isRefused;
}

// Asked first: to name a file costs a call, and nearly always nobody watches.
bool refuses(const char *verb, int descriptor)
{
    return spy != nullptr && refuses(verb, pathOf(descriptor));
}

// What the wrapped call would have been.
template <typename Function>
Function *real(Function *, const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

} // namespace

FileSpy::FileSpy(const QString &folder)
    : m_folder(QDir(folder).canonicalPath())
{
    spy = this;
}

FileSpy::~FileSpy()
{
    spy = nullptr;
}

QStringList FileSpy::steps() const
{
    const QMutexLocker lock(&m_mutex);
    return m_steps;
}

void FileSpy::refuse(const QString &beginning, int status)
{
    const QMutexLocker lock(&m_mutex);
    m_refused.setPattern(u'^' + beginning);
    m_status = status;
}

int FileSpy::status() const
{
    const QMutexLocker lock(&m_mutex);
    return m_status;
}

void FileSpy::killAt(int call, const QStringList &verbs)
{
    const QMutexLocker lock(&m_mutex);
    m_callsLeft = call;
    m_deadlyVerbs = verbs;
}

std::optional<QString> FileSpy::nameIn(const QString &path) const
{
    if (!QDir::isAbsolutePath(path)) // a pipe, an event
        return std::nullopt;
    const QString name = QDir(m_folder).relativeFilePath(path);
    return name.startsWith(QLatin1StringView("..")) ? std::nullopt : std::optional(name);
}

bool FileSpy::note(const char *verb, const QString &path, const QString &target)
{
    const auto name = nameIn(path);
    if (!name)
        return false;
    QString step = QLatin1StringView(verb) + u' ' + *name;
    if (!target.isEmpty())
        step += u' ' + nameIn(target).value_or(target);
    const QMutexLocker lock(&m_mutex);
    const bool isDeadly = m_deadlyVerbs.isEmpty() || m_deadlyVerbs.contains(QLatin1StringView(verb));
    if (isDeadly && m_callsLeft > 0 && --m_callsLeft == 0)
        raise(SIGKILL);
    if (!step.startsWith(QLatin1StringView("write")) || m_steps.isEmpty() || m_steps.last() != step)
        m_steps.append(step);
    return !m_refused.pattern().isEmpty() && m_refused.match(step).hasMatch();
}

// The program's own symbols come before the C library's, also for the libraries it uses.
extern "C" ssize_t write(int descriptor, const void *bytes, std::size_t size)
{
    static auto *const next = real(&write, "write");
    return refuses("write", descriptor) ? -1 : next(descriptor, bytes, size);
}

extern "C" ssize_t pwrite64(int descriptor, const void *bytes, std::size_t size, off64_t offset)
{
    static auto *const next = real(&pwrite64, "pwrite64");
    return refuses("write", descriptor) ? -1 : next(descriptor, bytes, size, offset);
}

extern "C" ssize_t pwrite(int descriptor, const void *bytes, std::size_t size, off_t offset)
{
    static auto *const next = real(&pwrite, "pwrite");
    return refuses("write", descriptor) ? -1 : next(descriptor, bytes, size, offset);
}

extern "C" int fsync(int descriptor)
{
    static auto *const next = real(&fsync, "fsync");
    return refuses("sync", descriptor) ? -1 : next(descriptor);
}

extern "C" int fdatasync(int descriptor)
{
    static auto *const next = real(&fdatasync, "fdatasync");
    return refuses("sync", descriptor) ? -1 : next(descriptor);
}

extern "C" int rename(const char *from, const char *to) noexcept
{
    static auto *const next = real(&rename, "rename");
    return refuses("rename", QFile::decodeName(from), QFile::decodeName(to)) ? -1 : next(from, to);
}

extern "C" int remove(const char *path) noexcept
{
    static auto *const next = real(&remove, "remove");
    return refuses("unlink", QFile::decodeName(path)) ? -1 : next(path);
}

extern "C" int unlink(const char *path) noexcept
{
    static auto *const next = real(&unlink, "unlink");
    return refuses("unlink", QFile::decodeName(path)) ? -1 : next(path);
}

} // namespace morvane
