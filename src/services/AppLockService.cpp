#include "services/AppLockService.h"

#include "async/CancelledError.h"
#include "async/Clock.h"
#include "async/Work.h"
#include "persistence/SettingsStore.h"
#include "security/KeychainServicing.h"
#include "security/LocalDataVault.h"
#include "security/UserPresenceConfirming.h"
#include "services/AnswerPause.h"
#include "services/PassphraseService.h"
#include "services/UnlockAttempt.h"
#include "utils/log/Log.h"
#include "utils/text/DesktopWords.h"
#include "utils/text/Product.h"

#include <QtMath>

#include <algorithm>
#include <utility>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using std::chrono::seconds;

namespace {

struct KeyMove {
    enum class Outcome { Done, NothingToAskWith, Failed, WithoutEffect };
    Outcome outcome = Outcome::Done;
    QString reason; // of a failure
};

// Off the GUI thread.
KeyMove move(LocalDataVault &vault, KeychainServicing &keychain, const UserPresenceConfirming &presence,
             bool behindPresence)
{
    if (behindPresence && !presence.canConfirm())
        return {KeyMove::Outcome::NothingToAskWith, {}};
    try {
        vault.moveKey(behindPresence ? UserPresence::Required : UserPresence::NotRequired);
    } catch (const std::exception &error) {
        return {KeyMove::Outcome::Failed, QString::fromUtf8(error.what())};
    }
    if (keychain.requiresUserPresence(LocalDataVault::keyAccount) != behindPresence)
        return {KeyMove::Outcome::WithoutEffect, {}};
    return {};
}

} // namespace

bool AppLockService::Signals::isAway() const
{
    return isScreenLocked || isScreenSaverRunning || isSessionInactive || areDisplaysAsleep ||
           isSystemAsleep || (idleTimeout && *idleTimeout >= 1 && idleSeconds >= *idleTimeout);
}

AppLockService::AppLockService(Parts parts, QObject *parent)
    : QObject(parent)
    , m_parts(std::move(parts))
    , m_isLocked(m_parts.vault.isLocked())
    , m_isKeyBehindPresence(m_parts.isKeyBehindPresence)
    , m_presentAt(m_parts.clock.elapsed())
{
    connect(&m_parts.session, &SessionSignaling::changed, this, &AppLockService::hear);
    connect(&m_parts.passphrase, &PassphraseService::isSetChanged, this, &AppLockService::passphraseChanged);
    connect(&m_parts.settings, &SettingsStore::appLockIdleMinutesChanged, this, [this] {
        takeSettings();
        evaluate();
    });
}

AppLockService::~AppLockService() = default;

bool AppLockService::isEnabled() const
{
    return m_parts.settings.appLockEnabled();
}

bool AppLockService::asksPresence() const
{
    return isEnabled() && (m_isKeyBehindPresence || !m_parts.passphrase.isSet());
}

// The switch

void AppLockService::setEnabled(bool flag)
{
    if (std::exchange(m_isMovingKey, true))
        return;
    setSetUpMessage({});
    m_moving = TaskHandle::start(
        [this, flag](std::stop_token stop) { return moveKey(QPointer(this), flag, std::move(stop)); });
    Q_EMIT changed();
}

QCoro::Task<> AppLockService::moveKey(QPointer<AppLockService> self, bool flag, std::stop_token stop)
{
    const auto moving = [vault = &self->m_parts.vault, keychain = &self->m_parts.keychain,
                         presence = &self->m_parts.presence,
                         flag] { return move(*vault, *keychain, *presence, flag); };
    KeyMove moved;
    try {
        moved = co_await self->m_parts.work.run(moving, stop);
    } catch (const CancelledError &) {
        co_return;
    } catch (const std::exception &error) {
        moved = {KeyMove::Outcome::Failed, QString::fromUtf8(error.what())};
    }
    if (!self)
        co_return;
    self->m_isMovingKey = false;
    switch (moved.outcome) {
    case KeyMove::Outcome::Done:
        self->keyMoved(flag);
        break;
    case KeyMove::Outcome::NothingToAskWith:
        self->setSetUpMessage(
            u"This %1 has no %2 set up, so there is nothing to unlock with. Add one in %3, then turn this on."_s
                .arg(DesktopWords::here().device, DesktopWords::here().unlockers,
                     DesktopWords::here().unlockerSettings));
        break;
    case KeyMove::Outcome::Failed:
        Log::error(Log::Category::App, "App lock key protection failed: %s"_L1, {moved.reason});
        self->keyStayed(flag);
        break;
    case KeyMove::Outcome::WithoutEffect:
        Log::error(Log::Category::App, "App lock key protection did not take effect"_L1);
        self->keyStayed(flag);
    }
    Q_EMIT self->changed();
}

void AppLockService::keyStayed(bool flag)
{
    const QString sentence =
        flag ? u"%1 could not move its key behind %2. Nothing changed."_s
             : u"%1 could not take its key back out from behind %2. The lock is still on."_s;
    setSetUpMessage(sentence.arg(Product::name, DesktopWords::here().keyGuard));
}

void AppLockService::keyMoved(bool flag)
{
    m_isKeyBehindPresence = flag;
    settle(flag || m_parts.passphrase.isSet());
}

// Without a passphrase it was presence that the lock stood for.
void AppLockService::passphraseChanged()
{
    if (m_parts.passphrase.isSet())
        m_isKeyBehindPresence = isEnabled();
    settle(m_isKeyBehindPresence || m_parts.passphrase.isSet());
    Q_EMIT changed();
}

void AppLockService::settle(bool isEnabled)
{
    m_parts.settings.setAppLockEnabled(isEnabled);
    if (isEnabled) {
        m_presentAt = m_parts.clock.elapsed();
        return startWatching();
    }
    stopWatching();
    if (m_isLocked)
        finishUnlock();
}

// Locking

void AppLockService::lock()
{
    if (m_isLocked)
        return;
    m_isLocked = true;
    setUnlockMessage({});
    m_check.reset();
    Q_EMIT isLockedChanged(); // the curtain first
    if (onLock)
        onLock();
    m_parts.vault.lock();
    if (m_parts.stopSpeech)
        m_parts.stopSpeech();
    Log::info(Log::Category::App, "Morvane locked"_L1);
}

// Unlocking

seconds AppLockService::pauseBeforeUnlock() const
{
    return m_parts.pause.left();
}

void AppLockService::unlock(const Passphrase &passphrase)
{
    if (!m_isLocked || m_isUnlocking || pauseBeforeUnlock() > 0s)
        return;
    if (m_parts.passphrase.isSet() && passphrase.isEmpty())
        return;
    m_isUnlocking = true;
    setUnlockMessage({});
    m_overlooked = m_parts.session.absence();
    Q_EMIT changed();
    m_unlocking = TaskHandle::start([this, passphrase](std::stop_token stop) {
        return readKey(QPointer(this), passphrase, std::move(stop));
    });
}

void AppLockService::cancelUnlock()
{
    m_unlocking.requestStop();
}

QCoro::Task<> AppLockService::readKey(QPointer<AppLockService> self, Passphrase passphrase,
                                      std::stop_token stop)
{
    const auto attempting = [&vault = self->m_parts.vault, &keychain = self->m_parts.keychain,
                             passphrase](const std::stop_token &stopped) {
        return UnlockAttempt::make(vault, keychain, passphrase, stopped);
    };
    passphrase = {};
    UnlockAttempt attempt;
    try {
        attempt = co_await self->m_parts.work.run(attempting, stop);
    } catch (const std::exception &) {
        // Cancelled, or the machine has no thread to wait on.
    }
    if (!self)
        co_return;
    self->m_isUnlocking = false;
    if (attempt.outcome == UnlockAttempt::Outcome::Opened)
        self->finishUnlock(attempt.key ? std::optional(std::move(*attempt.key)) : std::nullopt);
    else
        self->stayLocked(attempt);
    if (self)
        Q_EMIT self->changed();
}

void AppLockService::stayLocked(const UnlockAttempt &attempt)
{
    using Outcome = UnlockAttempt::Outcome;
    const QString still = u"%1 is still locked."_s.arg(Product::name);
    switch (attempt.outcome) {
    case Outcome::WrongAnswer:
        return stayLockedAfterWrong(still);
    case Outcome::WrongPassphrase:
        return stayLockedAfterWrong(u"That is not your passphrase."_s);
    case Outcome::PassphraseWanted:
        m_parts.passphrase.found(true);
        return setUnlockMessage(u"Your key is under your passphrase."_s);
    case Outcome::KeyUnreadable:
        return setUnlockMessage(
            u"This %1 can't read the form in which its key is stored."_s.arg(Product::name));
    case Outcome::TooLittleMemory:
        return setUnlockMessage(u"This %1 has too little free memory to try your passphrase now."_s.arg(
            DesktopWords::here().device));
    case Outcome::Opened:
    case Outcome::Closed:
        return setUnlockMessage(still);
    }
}

void AppLockService::stayLockedAfterWrong(const QString &what)
{
    m_parts.pause.wrong();
    m_wrong = what;
    tellPause();
}

void AppLockService::tellPause()
{
    const auto left = pauseBeforeUnlock();
    QString message = m_wrong;
    if (left > 1s)
        message += u" You can try again in %1 seconds."_s.arg(left.count());
    else if (left == 1s)
        message += u" You can try again in a second."_s;
    setUnlockMessage(message);
    m_pause = left > 0s ? m_parts.clock.after(1s, [this] { tellPause(); }) : nullptr;
    Q_EMIT changed();
}

void AppLockService::finishUnlock(std::optional<SecretBytes> openedKey)
{
    m_parts.pause.right();
    m_presentAt = m_parts.clock.elapsed();
    m_parts.vault.unlock(std::move(openedKey));
    m_isLocked = false;
    setUnlockMessage({});
    if (onUnlock)
        onUnlock();
    Log::info(Log::Category::App, "Morvane unlocked"_L1);
    Q_EMIT isLockedChanged();
    evaluate(); // the screen may have been locked during the prompt
}

// The moments to lock

void AppLockService::startWatching()
{
    if (std::exchange(m_isWatching, true))
        return;
    takeSettings();
    m_parts.session.startWatching();
    evaluate();
}

void AppLockService::stopWatching()
{
    if (!std::exchange(m_isWatching, false))
        return;
    m_parts.session.stopWatching();
    m_check.reset();
    m_signals = {};
}

void AppLockService::takeSettings()
{
    const auto minutes = m_parts.settings.appLockIdleMinutes();
    m_signals.isEnabled = isEnabled();
    m_signals.idleTimeout = minutes >= 1 ? std::optional(static_cast<double>(minutes) * 60) : std::nullopt;
}

void AppLockService::evaluate()
{
    if (!m_isWatching || m_isLocked)
        return;
    m_parts.session.askIdleTime();
    hear();
}

// What was overlooked and has ended counts when it begins again.
void AppLockService::hear()
{
    if (!m_isWatching)
        return;
    const auto now = m_parts.session.absence();
    const auto take = [](bool is, bool &ignored) {
        ignored = ignored && is;
        return is && !ignored;
    };
    m_signals.isScreenLocked = take(now.isScreenLocked, m_overlooked.isScreenLocked);
    m_signals.isScreenSaverRunning = take(now.isScreenSaverRunning, m_overlooked.isScreenSaverRunning);
    m_signals.isSessionInactive = take(now.isSessionInactive, m_overlooked.isSessionInactive);
    m_signals.areDisplaysAsleep = take(now.areDisplaysAsleep, m_overlooked.areDisplaysAsleep);
    m_signals.isSystemAsleep = take(now.isSystemAsleep, m_overlooked.isSystemAsleep);
    const std::chrono::duration<double> present = m_parts.clock.elapsed() - m_presentAt;
    m_signals.idleSeconds = std::min(now.idleSeconds, present.count());
    if (std::exchange(m_tellsIdleTime, now.tellsIdleTime) != now.tellsIdleTime)
        Q_EMIT changed();
    judge();
}

void AppLockService::judge()
{
    if (!isEnabled() || m_isLocked)
        return;
    if (m_signals.isAway())
        return lock();
    scheduleCheck();
}

// Not before the time could be up, so that an idle program sleeps.
void AppLockService::scheduleCheck()
{
    m_check.reset();
    if (!m_signals.idleTimeout)
        return;
    const double left = *m_signals.idleTimeout - m_signals.idleSeconds;
    m_check = m_parts.clock.after(seconds(std::max<qint64>(1, qCeil(left))), [this] { evaluate(); });
}

void AppLockService::setUnlockMessage(const QString &message)
{
    if (std::exchange(m_unlockMessage, message) != message)
        Q_EMIT changed();
}

void AppLockService::setSetUpMessage(const QString &message)
{
    if (std::exchange(m_setUpMessage, message) != message)
        Q_EMIT changed();
}

} // namespace morvane
