#include "platform/linux/PortalAutostart.h"

#include "platform/linux/AutostartEntry.h"
#include "platform/linux/DesktopKind.h"
#include "platform/linux/MachineBuses.h"
#include "platform/linux/PortalCall.h"
#include "utils/files/PrivateFile.h"

#include <QFile>

#include <utility>

namespace morvane {

using namespace Qt::StringLiterals;

PortalAutostart::PortalAutostart(QDBusConnection bus, const QString &folder, QObject *parent)
    : LoginStarting(parent)
    , m_bus(std::move(bus))
    , m_path(folder + u"/starts-at-login"_s)
{}

bool PortalAutostart::isOn()
{
    return m_asked.value_or(QFile::exists(m_path));
}

bool PortalAutostart::set(bool on)
{
    delete m_call;
    m_asked = on;
    // Runs inside the package, where the program has its plain name.
    const QVariantMap options{{u"autostart"_s, on},
                              {u"commandline"_s, QStringList{u"morvane"_s, u"--background"_s}},
                              {u"reason"_s, u"To wait in the panel until you want it."_s}};
    m_call = new PortalCall(
        m_bus, u"org.freedesktop.portal.Background"_s, u"RequestBackground"_s, {QString()}, options,
        [this, on](const PortalCall::Answer &answer) {
            m_asked.reset();
            if (answer.end == PortalCall::End::done)
                keep(answer.results.value(u"autostart"_s).toBool());
            if (isOn() == on)
                Q_EMIT changed();
            else
                Q_EMIT refused(on);
        },
        this);
    return true;
}

void PortalAutostart::keep(bool isOn)
{
    try {
        if (isOn)
            PrivateFile::write(m_path, {});
        else
            QFile::remove(m_path);
    } catch (const FileError &) {
        // Shown as it was: nothing that can be relied on.
    }
}

std::unique_ptr<LoginStarting> loginOfTheDesktop(const QString &configFolder, const QString &stateFolder,
                                                 const QString &program)
{
    const auto bus = MachineBuses::session();
    if (bus && DesktopKind::isSandboxed())
        return std::make_unique<PortalAutostart>(*bus, stateFolder);
    return std::make_unique<AutostartEntry>(configFolder, program);
}

} // namespace morvane
