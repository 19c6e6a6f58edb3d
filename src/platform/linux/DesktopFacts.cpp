#include "platform/linux/DesktopFacts.h"

#include <QGuiApplication>
#include <QLocale>
#include <QScreen>
#include <QSysInfo>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QString valueOf(const char *variable)
{
    const QString value = qEnvironmentVariable(variable);
    return value.isEmpty() ? u"not said"_s : value;
}

QString screens()
{
    QStringList each;
    for (const QScreen *screen : QGuiApplication::screens())
        each += u"%1 × %2 at %3 %"_s.arg(screen->size().width())
                    .arg(screen->size().height())
                    .arg(screen->devicePixelRatio() * 100);
    return each.join(u", "_s);
}

} // namespace

std::vector<std::pair<QString, QString>> desktopFacts()
{
    return {{u"System"_s, QSysInfo::prettyProductName()},
            {u"Kernel"_s, QSysInfo::kernelVersion() + u" on "_s + QSysInfo::currentCpuArchitecture()},
            {u"Desktop"_s, valueOf("XDG_CURRENT_DESKTOP")},
            {u"Kind of session"_s, valueOf("XDG_SESSION_TYPE")},
            {u"Qt platform"_s, QGuiApplication::platformName()},
            {u"Qt Quick backend"_s, valueOf("QT_QUICK_BACKEND")},
            {u"Screens"_s, screens()},
            {u"Locale"_s, QLocale().name()}};
}

} // namespace morvane
