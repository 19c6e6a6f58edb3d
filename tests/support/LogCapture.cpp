#include "support/LogCapture.h"

#include <QMutex>
#include <QMutexLocker>

namespace morvane {

namespace {

QMutex mutex;
QStringList captured;         // guarded by mutex
QtMessageHandler former = {}; // set while a capture lives

void handle(QtMsgType type, const QMessageLogContext &context, const QString &line)
{
    const QString category = QString::fromUtf8(context.category);
    const QString prefix = QStringLiteral("ai.morvane.macos.");
    if (!category.startsWith(prefix)) {
        if (former)
            former(type, context, line);
        return;
    }
    const QMutexLocker lock(&mutex);
    captured.append(category.mid(prefix.size()) + QStringLiteral(": ") + line);
}

} // namespace

LogCapture::LogCapture()
{
    captured.clear();
    former = qInstallMessageHandler(handle);
}

LogCapture::~LogCapture()
{
    qInstallMessageHandler(former);
}

const QStringList &LogCapture::lines() const
{
    return captured;
}

} // namespace morvane
