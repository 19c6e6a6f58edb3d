#include "services/LaunchAtLoginService.h"

#include "utils/log/Log.h"

namespace morvane {

using namespace Qt::StringLiterals;

LaunchAtLoginService::LaunchAtLoginService(LoginStarting &desktop, QObject *parent)
    : QObject(parent)
    , m_desktop(desktop)
{
    connect(&desktop, &LoginStarting::changed, this, &LaunchAtLoginService::changed);
    connect(&desktop, &LoginStarting::refused, this, [this](bool on) {
        tellRefusal(on ? u"Your desktop did not allow it."_s : u"Your desktop did not switch it off."_s);
        Q_EMIT changed();
    });
}

void LaunchAtLoginService::setEnabled(bool on)
{
    m_message.clear();
    // Asked anew: what was written and is not heeded is no success.
    if (!m_desktop.set(on) || m_desktop.isOn() != on)
        tellRefusal(on ? u"Your desktop did not take it. Is your configuration folder writable?"_s
                       : u"It could not be switched off. Is your configuration folder writable?"_s);
    Q_EMIT changed();
}

void LaunchAtLoginService::tellRefusal(const QString &message)
{
    Log::error(Log::Category::App, "Could not change whether the program starts at login"_L1);
    m_message = message;
}

} // namespace morvane
