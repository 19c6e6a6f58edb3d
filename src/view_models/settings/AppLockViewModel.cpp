#include "view_models/settings/AppLockViewModel.h"

#include "persistence/SettingsStore.h"
#include "services/AppLockService.h"
#include "services/PassphraseService.h"

#include <QMetaProperty>
#include <QVariant>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// The line's own text: one that stands in front of it tells nothing.
QMetaProperty typedText(const QObject &field)
{
    const QMetaObject *owner = nullptr;
    for (auto *type = field.metaObject(); type; type = type->superClass()) {
        if (type->indexOfProperty("text") >= 0)
            owner = type;
    }
    return owner ? owner->property(owner->indexOfProperty("text")) : QMetaProperty();
}

} // namespace

AppLockViewModel::AppLockViewModel(AppLockService &lock, PassphraseService &passphrase,
                                   SettingsStore &settings, QObject *parent)
    : QObject(parent)
    , m_lock(lock)
    , m_passphrase(passphrase)
{
    connect(&passphrase, &PassphraseService::changed, this, &AppLockViewModel::changed);
    connect(&lock, &AppLockService::isLockedChanged, this, &AppLockViewModel::isLockedChanged);
    connect(&lock, &AppLockService::isLockedChanged, this, &AppLockViewModel::changed);
    connect(&lock, &AppLockService::changed, this, &AppLockViewModel::changed);
    connect(&settings, &SettingsStore::appLockEnabledChanged, this, &AppLockViewModel::changed);
}

bool AppLockViewModel::isLocked() const
{
    return m_lock.isLocked();
}

bool AppLockViewModel::tellsIdleTime() const
{
    return m_lock.tellsIdleTime();
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

bool AppLockViewModel::asksPresence() const
{
    return m_lock.asksPresence();
}

bool AppLockViewModel::hasPassphrase() const
{
    return m_passphrase.isSet();
}

bool AppLockViewModel::isPassphraseChanging() const
{
    return m_passphrase.isChanging();
}

QString AppLockViewModel::passphraseMessage() const
{
    return m_passphrase.message();
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

// The field lets go of the text first, so that what is wiped is the last of it.
Passphrase AppLockViewModel::taken(QObject *field)
{
    if (!field)
        return {};
    const QMetaProperty line = typedText(*field);
    QString text = line.read(field).toString();
    line.write(field, QString());
    return Passphrase(std::move(text));
}

void AppLockViewModel::unlockWith(QObject *field)
{
    m_lock.unlock(taken(field));
}

bool AppLockViewModel::setPassphrase(QObject *former, QObject *chosen, QObject *repeated)
{
    const Passphrase current = taken(former);
    const Passphrase words = taken(chosen);
    const bool isTheSame = words == taken(repeated);
    if (words.characters() < Passphrase::fewestCharacters) {
        m_passphrase.setMessage(
            u"A passphrase has at least %1 characters. Several words that have nothing to do with each other are best."_s
                .arg(Passphrase::fewestCharacters));
    } else if (!isTheSame) {
        m_passphrase.setMessage(u"The two fields held different passphrases. Type both again."_s);
    } else {
        m_passphrase.change(current, words);
        return true;
    }
    return false;
}

void AppLockViewModel::removePassphrase(QObject *former)
{
    m_passphrase.change(taken(former), {});
}

void AppLockViewModel::forgetPassphraseMessage()
{
    m_passphrase.setMessage({});
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
