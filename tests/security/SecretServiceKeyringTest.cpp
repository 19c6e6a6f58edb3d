#include "security/SecretServiceKeyring.h"

#include "async/CancelledError.h"
#include "security/FakeSecretStore.h"
#include "security/KeychainPreparation.h"
#include "security/KeyringDaemon.h"
#include "security/LocalDataVault.h"
#include "support/Await.h"
#include "support/ManualClock.h"

#include <QFile>

#include <gmock/gmock.h>

namespace morvane {

using namespace Qt::StringLiterals;

// Against a real keyring daemon; run through with-private-bus.sh.

namespace {

using Condition = SecretStoring::Condition;
using Item = SecretStoring::Item;

const QString service = u"ai.morvane.macos"_s;
const QString keyAccount = u"local-data-key"_s;

template <typename Work>
KeychainStatus statusOf(Work work)
{
    try {
        work();
    } catch (const SecretStoreError &error) {
        return error.status();
    }
    return {};
}

// The environment names a bus that does not exist, as on a machine without a desktop session.
class WithoutBus {
public:
    WithoutBus() { qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent"); }
    ~WithoutBus() { qputenv("DBUS_SESSION_BUS_ADDRESS", m_former); }
    WithoutBus(const WithoutBus &) = delete;
    WithoutBus &operator=(const WithoutBus &) = delete;

private:
    const QByteArray m_former = qgetenv("DBUS_SESSION_BUS_ADDRESS");
};

class SecretServiceKeyringTest : public testing::Test {
protected:
    KeyringDaemon daemon;
    SecretServiceKeyring keyring;
};

TEST_F(SecretServiceKeyringTest, KeepsItemsTheirMarksAndThoseOfOlderBuilds)
{
    daemon.start(KeyringDaemon::Start::Unlocked);
    EXPECT_EQ(keyring.condition(service), Condition::Open);
    EXPECT_FALSE(keyring.find(service, u"a"_s));
    EXPECT_FALSE(keyring.update(service, u"a"_s, "1"));
    EXPECT_FALSE(keyring.remove(service, u"a"_s));
    EXPECT_TRUE(keyring.items(service).empty());

    keyring.add(service, {u"a"_s, "one €"});
    EXPECT_EQ(keyring.find(service, u"a"_s)->value, "one €");
    EXPECT_TRUE(keyring.update(service, u"a"_s, "two"));
    keyring.add(service, {u"a"_s, "three", UserPresence::Required});
    EXPECT_TRUE(keyring.update(service, u"a"_s, "four")); // keeps the mark
    ASSERT_EQ(keyring.items(service).size(), 1U);
    EXPECT_EQ(keyring.items(service).front().value, "four");
    EXPECT_EQ(keyring.find(service, u"a"_s)->presence, UserPresence::Required);

    keyring.add(u"ai.quelmarfolk.mac"_s, {u"a"_s, "older"});
    keyring.add(service, {u"b"_s, ""});
    EXPECT_EQ(keyring.items(u"ai.quelmarfolk.mac"_s).front().value, "older");
    EXPECT_EQ(keyring.items(service).size(), 2U);
    EXPECT_TRUE(keyring.remove(service, u"a"_s));
    EXPECT_FALSE(keyring.find(service, u"a"_s));
    EXPECT_EQ(keyring.find(service, u"b"_s)->value, "");
    EXPECT_EQ(keyring.find(u"ai.quelmarfolk.mac"_s, u"a"_s)->value, "older");
}

TEST_F(SecretServiceKeyringTest, ALockedKeyringIsNeitherEmptyNorBroken)
{
    daemon.start(KeyringDaemon::Start::Unlocked);
    keyring.add(service, {keyAccount, "k"});
    daemon.lock();
    EXPECT_EQ(keyring.condition(service), Condition::Locked);
    const Item another{u"b"_s, "1"};
    const KeychainStatus refusals[] = {
        statusOf([&] { (void)keyring.find(service, keyAccount); }),
        statusOf([&] { (void)keyring.find(service, u"missing"_s); }),
        statusOf([&] { (void)keyring.items(u"another"_s); }),
        statusOf([&] { keyring.add(service, another); }),
        statusOf([&] { (void)keyring.update(service, keyAccount, "1"); }),
        statusOf([&] { (void)keyring.remove(service, keyAccount); }),
    };
    EXPECT_THAT(refusals, testing::Each(KeychainStatus::InteractionNotAllowed));
    daemon.expectDismissal();
    EXPECT_EQ(statusOf([&] { keyring.unlock(service, {}); }), KeychainStatus::UserCancelled);
    daemon.expectPassword();
    keyring.unlock(service, {});
    EXPECT_EQ(keyring.condition(service), Condition::Open);
    EXPECT_EQ(keyring.find(service, keyAccount)->value, "k");
}

TEST_F(SecretServiceKeyringTest, NoBusAndNoServiceAreAbsent)
{
    EXPECT_EQ(keyring.condition(service), Condition::Absent); // a bus with nobody on it
    EXPECT_EQ(statusOf([&] { (void)keyring.find(service, keyAccount); }), KeychainStatus::NotAvailable);
    const WithoutBus withoutBus;
    EXPECT_EQ(keyring.condition(service), Condition::Absent);
    const auto runtime = qgetenv("XDG_RUNTIME_DIR");
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");
    qputenv("XDG_RUNTIME_DIR", "/nonexistent"); // nothing is started in its place
    EXPECT_EQ(keyring.condition(service), Condition::Absent);
    qputenv("XDG_RUNTIME_DIR", runtime);
}

// The whole road, from the keyring to a sealed field, over several starts of the program.
class KeychainRoadTest : public SecretServiceKeyringTest {
protected:
    // A start of the program: what it finds, and a vault on top of it.
    struct Run {
        Run(SecretServiceKeyring &keyring, const QString &path)
            : home(keyring, path, keyAccount)
        {}
        KeychainState prepare(KeyExpectation expectation, std::stop_token stop = {})
        {
            return TestWait::await(preparation.prepare(expectation, std::move(stop))).state;
        }
        KeychainHome home;
        FakePresence nobody;
        KeychainService keychain{service, home, nobody};
        LocalDataVault vault{keychain};
        ManualClock clock;
        Work work{clock};
        KeychainPreparation preparation{service, home, keychain, work};
    };
    std::unique_ptr<Run> newRun() { return std::make_unique<Run>(keyring, path); }

    QTemporaryDir folder;
    const QString path = folder.filePath(u"keys"_s);
};

TEST_F(KeychainRoadTest, FromAFileToAKeyringThroughALockedOneToALostKey)
{
    QString field;
    {
        const WithoutBus withoutBus;
        const auto run = newRun();
        ASSERT_EQ(run->prepare(KeyExpectation::Unknown), KeychainState::ReadyInFile);
        field = *run->vault.seal(u"words"_s);
        EXPECT_THROW(run->vault.moveKey(UserPresence::Required), KeychainError);
        EXPECT_EQ(run->vault.open(field), u"words"_s);
    }
    EXPECT_TRUE(QFile::exists(path));
    daemon.start(KeyringDaemon::Start::Unlocked);
    {
        const auto run = newRun();
        ASSERT_EQ(run->prepare(KeyExpectation::MustExist), KeychainState::Ready);
        EXPECT_FALSE(QFile::exists(path));
        EXPECT_EQ(run->vault.open(field), u"words"_s);
    }
    daemon.stop();
    EXPECT_EQ(newRun()->prepare(KeyExpectation::MustExist), KeychainState::Unavailable);
    daemon.start(KeyringDaemon::Start::Locked);
    {
        const auto run = newRun();
        daemon.expectDismissal();
        EXPECT_EQ(run->prepare(KeyExpectation::MustExist), KeychainState::Locked);
        daemon.setDelay(200); // the GUI thread runs on meanwhile
        daemon.expectPassword();
        EXPECT_EQ(run->prepare(KeyExpectation::MustExist), KeychainState::Ready);
        EXPECT_EQ(run->vault.open(field), u"words"_s);
        run->keychain.remove(keyAccount);
    }
    const auto run = newRun();
    EXPECT_EQ(run->prepare(KeyExpectation::MustExist), KeychainState::KeyMissing);
    run->vault.requireExistingKey();
    EXPECT_THROW((void)run->vault.key(), LocalDataVault::KeyMissing);
    EXPECT_TRUE(keyring.items(service).empty());
    EXPECT_FALSE(QFile::exists(path));
}

TEST_F(KeychainRoadTest, AKeyUnderAPassphraseKeepsItsMarkAndOutlivesTheKeyringsEnd)
{
    const Passphrase words(u"right horse"_s);
    QString field;
    daemon.start(KeyringDaemon::Start::Unlocked);
    {
        const auto run = newRun();
        ASSERT_EQ(run->prepare(KeyExpectation::Unknown), KeychainState::Ready);
        field = *run->vault.seal(u"words"_s);
        run->vault.moveKey(UserPresence::Required);
        run->vault.wrapKey(words, {8, 1});
        EXPECT_EQ(run->vault.open(field), u"words"_s);
    }
    daemon.stop();
    daemon.start(KeyringDaemon::Start::Unlocked);
    EXPECT_TRUE(keyring.find(service, keyAccount)->value.startsWith("morvane-wrapped-key 1 "));
    const auto run = newRun();
    const auto opening = TestWait::await(run->preparation.prepare(KeyExpectation::MustExist));
    EXPECT_TRUE(opening.dataKeyWrapped && opening.dataKeyBehindPresence);
    run->nobody.answer = UserPresenceConfirming::Answer::Confirmed;
    (void)run->keychain.read(keyAccount, u"why"_s, {});
    EXPECT_EQ(run->vault.open(field), QString()) << "the desktop's yes alone opens nothing";
    run->vault.unlock(run->vault.unwrapKey(words));
    EXPECT_EQ(run->vault.open(field), u"words"_s);
}

TEST_F(KeychainRoadTest, EndingTheProgramEndsTheWaitForThePrompt)
{
    daemon.start(KeyringDaemon::Start::Unlocked);
    daemon.lock();
    daemon.setDelay(1000 * 1000);
    daemon.expectPassword();
    const auto run = newRun();
    std::stop_source stop;
    QObject::connect(&run->preparation, &KeychainPreparation::stateChanged, &run->preparation,
                     [&](KeychainState state) {
                         if (state == KeychainState::WaitingForUnlock)
                             stop.request_stop();
                     });
    EXPECT_THROW((void)run->prepare(KeyExpectation::Unknown, stop.get_token()), CancelledError);
}

} // namespace

} // namespace morvane
