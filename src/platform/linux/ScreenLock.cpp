#include "platform/linux/ScreenLock.h"

#include "platform/linux/LoginSession.h"
#include "platform/linux/ScreenSavers.h"

#include <utility>

namespace morvane {

ScreenLock::ScreenLock(const std::optional<QDBusConnection> &session,
                       const std::optional<QDBusConnection> &system, QObject *parent)
    : QObject(parent)
    , m_login(system ? std::make_unique<LoginSession>(*system, LoginSession::Sleep::ignored) : nullptr)
    , m_savers(session ? std::make_unique<ScreenSavers>(*session, ScreenSavers::Portal::left) : nullptr)
{
    if (m_login)
        connect(m_login.get(), &LoginSession::changed, this, &ScreenLock::look);
    if (m_savers)
        connect(m_savers.get(), &ScreenSavers::changed, this, &ScreenLock::look);
}

ScreenLock::~ScreenLock() = default;

void ScreenLock::look()
{
    const bool isLocked =
        (m_login && (m_login->isLocked() || m_login->isInactive())) || (m_savers && m_savers->isRunning());
    if (std::exchange(m_isLocked, isLocked) != isLocked)
        Q_EMIT changed(isLocked);
}

} // namespace morvane
