#pragma once

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace morvane {

class AppLockService;
class Passphrase;
class PassphraseService;
class SettingsStore;

// The curtain and its button, and Settings > Privacy's switch. GUI thread.
class AppLockViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(bool isLocked READ isLocked NOTIFY isLockedChanged)
    Q_PROPERTY(bool tellsIdleTime READ tellsIdleTime NOTIFY changed) // false where the desktop never does
    Q_PROPERTY(bool isUnlocking READ isUnlocking NOTIFY changed)
    Q_PROPERTY(
        bool canUnlock READ canUnlock NOTIFY changed) // not while it asks, nor right after a wrong answer
    Q_PROPERTY(bool isEnabled READ isEnabled NOTIFY changed)
    Q_PROPERTY(bool asksPresence READ asksPresence NOTIFY changed)
    Q_PROPERTY(bool hasPassphrase READ hasPassphrase NOTIFY changed)
    Q_PROPERTY(bool isPassphraseChanging READ isPassphraseChanging NOTIFY changed)
    Q_PROPERTY(QString passphraseMessage READ passphraseMessage NOTIFY changed) // empty for none
    Q_PROPERTY(bool isChanging READ isChanging NOTIFY changed)                  // the key is being moved
    Q_PROPERTY(QString unlockMessage READ unlockMessage NOTIFY changed)         // empty for none
    Q_PROPERTY(QString setUpMessage READ setUpMessage NOTIFY changed)           // empty for none

public:
    // All outlive this object.
    AppLockViewModel(AppLockService &lock, PassphraseService &passphrase, SettingsStore &settings,
                     QObject *parent = nullptr);

    [[nodiscard]] bool isLocked() const;
    [[nodiscard]] bool tellsIdleTime() const;
    [[nodiscard]] bool isUnlocking() const;
    [[nodiscard]] bool canUnlock() const;
    [[nodiscard]] bool isEnabled() const;
    [[nodiscard]] bool asksPresence() const;
    [[nodiscard]] bool hasPassphrase() const;
    [[nodiscard]] bool isPassphraseChanging() const;
    [[nodiscard]] QString passphraseMessage() const;
    [[nodiscard]] bool isChanging() const;
    [[nodiscard]] QString unlockMessage() const;
    [[nodiscard]] QString setUpMessage() const;

    // Nothing while the lock is switched off: there would be nothing to unlock with.
    Q_INVOKABLE void lock();
    Q_INVOKABLE void unlock();
    // A passphrase comes as the field that it was typed into, whose text is taken and emptied here: no script
    // ever holds it. A null field: none.
    Q_INVOKABLE void unlockWith(QObject *field);
    // False when the two new ones differ or are too short, which passphraseMessage says.
    Q_INVOKABLE bool setPassphrase(QObject *former, QObject *chosen, QObject *repeated);
    Q_INVOKABLE void removePassphrase(QObject *former);
    Q_INVOKABLE void forgetPassphraseMessage();
    Q_INVOKABLE void cancelUnlock();
    Q_INVOKABLE void setEnabled(bool on);

Q_SIGNALS:
    void isLockedChanged();
    void changed();

private:
    [[nodiscard]] static Passphrase taken(QObject *field);

    AppLockService &m_lock;
    PassphraseService &m_passphrase;
};

} // namespace morvane
