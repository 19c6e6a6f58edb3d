#pragma once

#include "async/TaskHandle.h"
#include "security/Passphrase.h"
#include "services/SessionSignaling.h"

#include <QCoroTask>
#include <QObject>
#include <QPointer>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>

namespace morvane {

class Alarm;
class AnswerPause;
class Clock;
class KeychainServicing;
class LocalDataVault;
class PassphraseService;
class SettingsStore;
struct UnlockAttempt;
class UserPresenceConfirming;
class Work;

// The application lock: the data key stands behind user presence, under a passphrase or both, and while
// locked the vault hands it out to nobody. Owns the switch, hears of the moments to lock, and runs the
// unlock. The lock is on while either guards the key.
//
// It begins locked when the vault is. GUI thread.
class AppLockService final : public QObject {
    Q_OBJECT

public:
    struct Parts {
        SettingsStore &settings;
        LocalDataVault &vault;
        KeychainServicing &keychain;
        UserPresenceConfirming &presence;
        PassphraseService &passphrase;
        AnswerPause &pause; // shared with it
        SessionSignaling &session;
        Clock &clock;
        Work &work;
        bool isKeyBehindPresence = false; // as it was found at the start
        std::function<void()> stopSpeech = {};
    };

    // The last picture of the system.
    struct Signals {
        bool isEnabled = false;
        bool isScreenLocked = false;
        bool isScreenSaverRunning = false;
        bool isSessionInactive = false;
        bool areDisplaysAsleep = false;
        bool isSystemAsleep = false;
        double idleSeconds = 0;            // since the last input or unlock
        std::optional<double> idleTimeout; // seconds; none: no idle lock

        // Whether this is a moment to lock.
        [[nodiscard]] bool isAway() const;
    };

    // All outlive this object, and what it has begun ends with the work.
    explicit AppLockService(Parts parts, QObject *parent = nullptr);
    ~AppLockService() override;

    [[nodiscard]] bool isEnabled() const;
    // Whether the switch is on: the passphrase alone may be what locks.
    [[nodiscard]] bool asksPresence() const;
    [[nodiscard]] bool isLocked() const { return m_isLocked; }
    [[nodiscard]] bool isUnlocking() const { return m_isUnlocking; }
    [[nodiscard]] bool isMovingKey() const { return m_isMovingKey; }
    [[nodiscard]] const QString &unlockMessage() const { return m_unlockMessage; } // empty for none
    [[nodiscard]] const QString &setUpMessage() const { return m_setUpMessage; }   // empty for none
    // False where this desktop never says that nobody types.
    [[nodiscard]] bool tellsIdleTime() const { return m_tellsIdleTime; }
    // How long no further attempt begins, after wrong answers; zero for an attempt at once.
    [[nodiscard]] std::chrono::seconds pauseBeforeUnlock() const;

    // Called before the vault locks, so that what is at work can still be sealed, and after it is open again.
    std::function<void()> onLock;
    std::function<void()> onUnlock;

    // Moves the key, which takes the desktop's answers; changed() follows. Nothing while it moves already.
    void setEnabled(bool flag);
    void lock();
    // Prompts, and tries the passphrase where one guards the key. Nothing while it prompts already, before
    // pauseBeforeUnlock() is over, or without the passphrase that it takes.
    void unlock(const Passphrase &passphrase = {});
    void cancelUnlock();

    void startWatching();
    void stopWatching();
    // Someone has the window before them: the idle time is judged now.
    void evaluate();

Q_SIGNALS:
    void isLockedChanged();
    void changed(); // anything else that can be read here

private:
    static QCoro::Task<> moveKey(QPointer<AppLockService> self, bool flag, std::stop_token stop);
    static QCoro::Task<> readKey(QPointer<AppLockService> self, Passphrase passphrase, std::stop_token stop);
    void keyMoved(bool flag);
    void keyStayed(bool flag);
    void passphraseChanged();
    void settle(bool isEnabled);
    void finishUnlock(std::optional<SecretBytes> openedKey = std::nullopt);
    void stayLocked(const UnlockAttempt &attempt);
    void stayLockedAfterWrong(const QString &what);
    void tellPause();
    void takeSettings();
    void hear();
    void judge();
    void scheduleCheck();
    void setUnlockMessage(const QString &message);
    void setSetUpMessage(const QString &message);

    Parts m_parts;
    bool m_isLocked;
    bool m_isUnlocking = false;
    bool m_isWatching = false;
    bool m_tellsIdleTime = true;
    bool m_isMovingKey = false;
    bool m_isKeyBehindPresence;
    QString m_unlockMessage;
    QString m_setUpMessage;
    Signals m_signals;
    // What held already when the person last asked to unlock: it says nothing of them any more until it ends.
    SessionSignaling::Absence m_overlooked;
    std::chrono::milliseconds m_presentAt{0}; // when the person was last known to be here
    QString m_wrong;                          // what the latest answer was
    std::unique_ptr<Alarm> m_pause;
    std::unique_ptr<Alarm> m_check;
    TaskHandle m_moving;
    TaskHandle m_unlocking;
};

} // namespace morvane
