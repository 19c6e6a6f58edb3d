#include "services/AppLockService.h"

#include "async/Work.h"
#include "persistence/InMemorySettingsRepository.h"
#include "persistence/SettingsStore.h"
#include "security/FakeSecretStore.h"
#include "security/InMemoryKeychainService.h"
#include "security/LocalDataVault.h"
#include "services/AnswerPause.h"
#include "services/PassphraseService.h"
#include "support/Await.h"
#include "support/LogCapture.h"
#include "support/ManualClock.h"

#include <QSemaphore>

#include <gtest/gtest.h>

#include <deque>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

class FakeSession final : public SessionSignaling {
public:
    void startWatching() override { ++watching; }
    void stopWatching() override { --watching; }
    void askIdleTime() override {}
    [[nodiscard]] Absence absence() const override { return now; }
    void tell(const Absence &absence)
    {
        now = absence;
        Q_EMIT changed();
    }

    Absence now;
    int watching = 0;
};

// Its prompts answer with what a test gave them.
class PromptingKeychain final : public InMemoryKeychainService {
public:
    using InMemoryKeychainService::read;

    [[nodiscard]] std::optional<QString> read(const QString &account, const QString &reason,
                                              std::stop_token stop) override
    {
        reasons += reason;
        const auto answer = answers.empty() ? std::nullopt : answers.front();
        if (!answers.empty())
            answers.pop_front();
        if (answer)
            throw KeychainError(KeychainError::Operation::Read, *answer);
        return InMemoryKeychainService::read(account, reason, std::move(stop));
    }
    void setUserPresence(const QString &value, const QString &account, UserPresence presence) override
    {
        if (!ignoresPresence)
            InMemoryKeychainService::setUserPresence(value, account, presence);
    }

    std::deque<std::optional<KeychainStatus>> answers; // none: the right one
    QStringList reasons;
    bool ignoresPresence = false;
};

class AppLockServiceTest : public testing::Test {
protected:
    AppLockServiceTest()
    {
        (void)vault.key();
        presence.answer = FakePresence::Answer::Confirmed;
        makeLock();
    }
    ~AppLockServiceTest() override { work.end(); }

    void makeLock()
    {
        lock.emplace(AppLockService::Parts{.settings = settings,
                                           .vault = vault,
                                           .keychain = keychain,
                                           .presence = presence,
                                           .passphrase = passphrase,
                                           .pause = pause,
                                           .session = session,
                                           .clock = clock,
                                           .work = work,
                                           .stopSpeech = [this] { steps += u"hush"_s; }});
        lock->onLock = [this] { steps += vault.isLocked() ? u"hide late"_s : u"hide"_s; };
        lock->onUnlock = [this] { steps += vault.isLocked() ? u"show early"_s : u"show"_s; };
    }
    void set(bool flag)
    {
        lock->setEnabled(flag);
        TestWait::until([this] { return !lock->isMovingKey(); });
    }
    void change(const Passphrase &former, const Passphrase &chosen)
    {
        passphrase.change(former, chosen);
        TestWait::until([this] { return !passphrase.isChanging(); });
    }
    void unlock(const Passphrase &words = {})
    {
        lock->unlock(words);
        TestWait::until([this] { return !lock->isUnlocking(); });
    }

    LogCapture log;
    ManualClock clock;
    Work work{clock};
    InMemorySettingsRepository defaults;
    SettingsStore settings{defaults};
    PromptingKeychain keychain;
    LocalDataVault vault{keychain};
    FakePresence presence;
    FakeSession session;
    AnswerPause pause{clock};
    PassphraseService passphrase{{.vault = vault, .pause = pause, .work = work, .cost = [] {
                                      return Argon2id::Cost{8, 1};
                                  }}};
    QStringList steps;
    std::optional<AppLockService> lock;
};

TEST_F(AppLockServiceTest, LocksAndUnlocksInOrder)
{
    set(true);
    EXPECT_TRUE(settings.appLockEnabled());
    EXPECT_TRUE(keychain.requiresUserPresence(LocalDataVault::keyAccount));
    lock->lock();
    lock->lock();
    EXPECT_TRUE(vault.isLocked());
    EXPECT_EQ(vault.seal(u"words"_s), std::nullopt);
    EXPECT_THROW((void)keychain.InMemoryKeychainService::read(LocalDataVault::keyAccount), KeychainError);

    lock->unlock();
    lock->unlock(); // no second prompt
    EXPECT_TRUE(lock->isUnlocking());
    TestWait::until([this] { return !lock->isUnlocking(); });
    EXPECT_FALSE(lock->isLocked());
    EXPECT_EQ(keychain.reasons, QStringList(u"unlock MorvaneGPT"_s));
    EXPECT_EQ(steps.join(u' ').toStdString(), "hide hush show");
    EXPECT_EQ(log.lines().filter(u"Morvane"_s),
              QStringList({u"app: Morvane locked"_s, u"app: Morvane unlocked"_s}));

    set(false);
    EXPECT_FALSE(settings.appLockEnabled());
    EXPECT_FALSE(keychain.requiresUserPresence(LocalDataVault::keyAccount));
    EXPECT_EQ(session.watching, 0);
    session.tell({.isScreenLocked = true});
    EXPECT_FALSE(lock->isLocked());
}

TEST_F(AppLockServiceTest, ChangesNothingWhereTheKeyStays)
{
    presence.answer = FakePresence::Answer::Unavailable;
    set(true);
    EXPECT_TRUE(lock->setUpMessage().startsWith(u"This computer has no "_s));
    EXPECT_TRUE(lock->setUpMessage().endsWith(u", then turn this on."_s));
    presence.answer = FakePresence::Answer::Confirmed;
    keychain.setFailure(KeychainError(KeychainError::Operation::Save, KeychainStatus::InputOutput));
    set(true);
    EXPECT_EQ(lock->setUpMessage().toStdString(),
              "MorvaneGPT could not move its key behind your password. Nothing changed.");
    keychain.setFailure(std::nullopt);
    keychain.ignoresPresence = true;
    set(true);
    EXPECT_EQ(log.lines().last().toStdString(), "app: App lock key protection did not take effect");
    EXPECT_FALSE(settings.appLockEnabled());
    EXPECT_EQ(session.watching, 0);

    keychain.ignoresPresence = false;
    set(true);
    EXPECT_EQ(lock->setUpMessage(), QString());
    keychain.ignoresPresence = true;
    set(false);
    EXPECT_EQ(lock->setUpMessage().toStdString(),
              "MorvaneGPT could not take its key back out from behind your password. The lock is still on.");
    EXPECT_TRUE(settings.appLockEnabled());
}

TEST_F(AppLockServiceTest, WrongAnswersWaitLongerEachTimeAndADismissedPromptDoesNot)
{
    set(true);
    lock->lock();
    keychain.answers = {KeychainStatus::UserCancelled, KeychainStatus::AuthenticationFailed,
                        KeychainStatus::AuthenticationFailed};
    unlock();
    EXPECT_EQ(lock->unlockMessage().toStdString(), "MorvaneGPT is still locked.");
    unlock();
    EXPECT_EQ(lock->pauseBeforeUnlock(), 1s);
    clock.advance(1s);
    unlock();
    EXPECT_EQ(lock->unlockMessage().toStdString(),
              "MorvaneGPT is still locked. You can try again in 2 seconds.");
    unlock(); // too early: no prompt
    EXPECT_EQ(keychain.reasons.size(), 3);
    clock.advance(2s);
    EXPECT_EQ(lock->unlockMessage().toStdString(), "MorvaneGPT is still locked.");
    EXPECT_TRUE(vault.isLocked());
    unlock();
    EXPECT_FALSE(vault.isLocked());
    EXPECT_EQ(lock->unlockMessage(), QString());
}

TEST_F(AppLockServiceTest, APassphraseLocksBesidePresenceOrInItsPlace)
{
    const QString sealed = *vault.seal(u"words"_s);
    const Passphrase right(u"right horse"_s);
    change({}, right);
    EXPECT_TRUE(settings.appLockEnabled() && passphrase.isSet());
    EXPECT_FALSE(lock->asksPresence() || keychain.requiresUserPresence(LocalDataVault::keyAccount));
    EXPECT_EQ(session.watching, 1);
    set(true);
    set(false);
    EXPECT_TRUE(settings.appLockEnabled()) << "the passphrase still locks";
    set(true);
    lock->lock();
    unlock(); // without one there is nothing to try
    EXPECT_EQ(keychain.reasons.size(), 0);
    unlock(Passphrase(u"wrong horse"_s));
    EXPECT_EQ(lock->unlockMessage().toStdString(),
              "That is not your passphrase. You can try again in a second.");
    EXPECT_THROW((void)vault.unwrapKey(right), KeychainError) << "presence is asked again";
    unlock(right); // too early
    clock.advance(1s);
    unlock(Passphrase(u"wrong again"_s));
    EXPECT_EQ(pause.left(), 2s);
    clock.advance(2s);
    EXPECT_TRUE(lock->isLocked() && vault.open(sealed).isEmpty());
    unlock(right);
    EXPECT_EQ(vault.open(sealed), u"words"_s);

    const Passphrase next(u"next horse"_s);
    change(next, {});
    EXPECT_TRUE(passphrase.message().startsWith(u"That is not your passphrase, so nothing changed."_s));
    change(right, next); // too early
    EXPECT_TRUE(vault.unwrapKey(right));
    clock.advance(1s);
    keychain.setFailure(KeychainError(KeychainError::Operation::Save, KeychainStatus::InputOutput));
    change(right, next);
    EXPECT_FALSE(passphrase.message().isEmpty());
    keychain.setFailure(std::nullopt);
    change(right, next);
    EXPECT_EQ(passphrase.message(), QString());
    change(next, {});
    EXPECT_TRUE(lock->asksPresence() && !passphrase.isSet());
    change({}, right);
    EXPECT_TRUE(lock->asksPresence());
    set(false);
    change(right, {});
    EXPECT_FALSE(settings.appLockEnabled());
    EXPECT_EQ(session.watching, 0);
    EXPECT_EQ(vault.open(sealed), u"words"_s);
}

// Another program, or a keyring that took it without an answer.
TEST_F(AppLockServiceTest, APassphraseThatIsFoundAtAnUnlockIsAskedFor)
{
    set(true);
    vault.wrapKey(Passphrase(u"right horse"_s), {8, 1});
    lock->lock();
    unlock();
    EXPECT_TRUE(lock->isLocked() && passphrase.isSet());
    unlock(Passphrase(u"right horse"_s));
    EXPECT_FALSE(lock->isLocked() || vault.isLocked());
    lock->lock();
    keychain.save(u"morvane-wrapped-key 2 x"_s, LocalDataVault::keyAccount);
    unlock(Passphrase(u"right horse"_s));
    EXPECT_TRUE(lock->isLocked() && lock->unlockMessage().contains(u"can't read the form"_s));
}

TEST_F(AppLockServiceTest, ALockDuringAChangeTakesTheKeyAllTheSame)
{
    set(true);
    QSemaphore measuring;
    QSemaphore locked;
    PassphraseService slow({.vault = vault, .pause = pause, .work = work, .cost = [&] {
                                measuring.release();
                                locked.acquire();
                                return Argon2id::Cost{8, 1};
                            }});
    slow.change({}, Passphrase(u"right horse"_s));
    measuring.acquire();
    lock->lock();
    locked.release();
    TestWait::until([&] { return !slow.isChanging(); });
    EXPECT_FALSE(slow.isSet());
    EXPECT_THROW((void)vault.key(), LocalDataVault::Locked);
    unlock();
    EXPECT_FALSE(lock->isLocked());
}

TEST_F(AppLockServiceTest, LocksAtEachMomentAndNotAgainForWhatHeldAlready)
{
    using Absence = SessionSignaling::Absence;
    set(true);
    for (const Absence &away : {Absence{.isScreenLocked = true}, Absence{.isScreenSaverRunning = true},
                                Absence{.isSessionInactive = true}, Absence{.areDisplaysAsleep = true},
                                Absence{.isSystemAsleep = true}, Absence{.idleSeconds = 300}}) {
        clock.advance(400s);
        session.tell(away);
        EXPECT_TRUE(lock->isLocked());
        unlock();
        session.tell(away); // a desktop that never tells of an end must not lock the person out
        EXPECT_FALSE(lock->isLocked());
        session.tell({});
    }
    session.tell({.isScreenLocked = true});
    lock->unlock();
    session.tell({.isScreenLocked = true, .isSystemAsleep = true});
    TestWait::until([this] { return !lock->isUnlocking(); });
    EXPECT_TRUE(lock->isLocked()) << "it came during the prompt";
}

TEST_F(AppLockServiceTest, IdleTimeIsJudgedWithoutAnyInput)
{
    set(true);
    clock.advance(100s);
    session.now.idleSeconds = 100;
    lock->evaluate();
    session.now.idleSeconds = 299;
    clock.advance(200s);
    EXPECT_FALSE(lock->isLocked());
    session.now.idleSeconds = 300;
    clock.advance(1s);
    EXPECT_TRUE(lock->isLocked());
    unlock();
    settings.setAppLockIdleMinutes(0);
    session.now.idleSeconds = 90000;
    clock.advance(90000s);
    lock->evaluate();
    EXPECT_FALSE(lock->isLocked());
    EXPECT_EQ(clock.pendingAlarms(), 0U) << "nothing to wake up for";
    settings.setAppLockIdleMinutes(1);
    EXPECT_TRUE(lock->isLocked());
}

TEST_F(AppLockServiceTest, BeginsLockedWithTheVaultAndForgetsAnUnlockWithItsWindow)
{
    settings.setAppLockEnabled(true);
    keychain.setUserPresence(*keychain.InMemoryKeychainService::read(LocalDataVault::keyAccount),
                             LocalDataVault::keyAccount, UserPresence::Required);
    vault.lock();
    makeLock();
    EXPECT_TRUE(lock->isLocked());
    lock->startWatching();
    keychain.answers = {KeychainStatus::InteractionNotAllowed};
    unlock();
    EXPECT_TRUE(lock->isLocked());
    lock->unlock();
    lock.reset();
    TestWait::settle();
    EXPECT_TRUE(vault.isLocked());
}

} // namespace

} // namespace morvane
