#include "app/RunningInstance.h"

#include "utils/files/PrivateFile.h"

#include <QDateTime>
#include <QFile>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// Makes the folder before the lock file is placed in it.
QString prepared(const QString &folder)
{
    PrivateFile::createFolder(folder);
    return folder;
}

} // namespace

RunningInstance::RunningInstance(const QString &runtimeFolder, QObject *parent)
    : QObject(parent)
    , m_requestPath(prepared(runtimeFolder) + u"/morvane.show"_s)
    , m_lock(runtimeFolder + u"/morvane.lock"_s)
{
    m_lock.setStaleLockTime(0); // only a dead owner makes a lock stale
    if (m_lock.tryLock())
        watch();
}

RunningInstance::~RunningInstance()
{
    if (isFirst())
        QFile::remove(m_requestPath);
}

void RunningInstance::askFirstToShow() const
{
    QFile request(m_requestPath);
    if (request.open(QIODevice::WriteOnly | QIODevice::Append))
        request.write("show\n");
}

void RunningInstance::watch()
{
    PrivateFile::write(m_requestPath, {});
    m_watcher.addPath(m_requestPath);
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, &RunningInstance::showRequested);
}

} // namespace morvane
