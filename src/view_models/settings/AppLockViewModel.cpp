#include "view_models/settings/AppLockViewModel.h"

#include "persistence/SettingsStore.h"
#include "services/AppLockService.h"

namespace morvane {

AppLockViewModel::AppLockViewModel(AppLockService &lock, SettingsStore &settings, QObject *parent)
    : QObject(parent)
    , m_lock(lock)
{
    connect(&lock, &AppLockService::isLockedChanged, this, &AppLockViewModel::isLockedChanged);
    connect(&lock, &AppLockService::isLockedChanged, this, &AppLockViewModel::changed);
    connect(&lock, &AppLockService::changed, this, &AppLockViewModel::changed);
    connect(&settings, &SettingsStore::appLockEnabledChanged, this, &AppLockViewModel::changed);
}

bool AppLockViewModel::isLocked() const
{
    return m_lock.isLocked();
}

bool AppLockViewModel::isUnlocking() const
{
    return m_lock.isUnlocking();
}

bool AppLockViewModel::canUnlock() const
{
    return m_lock.isLocked() && !m_lock.isUnlocking() &&
           m_lock.pauseBeforeUnlock() == std::chrono::seconds(0);
}

bool AppLockViewModel::isEnabled() const
{
    return m_lock.isEnabled();
}

bool AppLockViewModel::isChanging() const
{
    return m_lock.isMovingKey();
}

QString AppLockViewModel::unlockMessage() const
{
    return m_lock.unlockMessage();
}

QString AppLockViewModel::setUpMessage() const
{
    return m_lock.setUpMessage();
}

void AppLockViewModel::lock()
{
    if (isEnabled())
        m_lock.lock();
}

void AppLockViewModel::unlock()
{
    m_lock.unlock();
}

void AppLockViewModel::cancelUnlock()
{
    m_lock.cancelUnlock();
}

void AppLockViewModel::setEnabled(bool on)
{
    m_lock.setEnabled(on);
}

} // namespace morvane
