#include "security/KeychainHome.h"

#include "security/FakeSecretStore.h"
#include "security/KeychainPreparation.h"
#include "support/Await.h"
#include "support/LogCapture.h"

#include <QFile>
#include <QSemaphore>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using Call = FakeSecretStore::Call;
using Condition = SecretStoring::Condition;

const QString service = u"ai.morvane.macos"_s;
const QString keyAccount = u"local-data-key"_s;

class NobodyThere final : public UserPresenceConfirming {
public:
    bool canConfirm() const override { return false; }
    Answer confirm(const QString &, std::stop_token) override { return Answer::Unavailable; }
};

class KeychainHomeTest : public testing::Test {
protected:
    KeychainOpening open(KeyExpectation expectation = KeyExpectation::Unknown)
    {
        heard.clear();
        return home().open(service, expectation, [this](KeychainState state) { heard.push_back(state); }, {});
    }
    KeychainState stateAfterOpening(KeyExpectation expectation = KeyExpectation::Unknown)
    {
        return open(expectation).state;
    }
    // As after a start of the process.
    void restart() { m_home.reset(); }
    KeychainHome &home()
    {
        if (!m_home)
            m_home = std::make_unique<KeychainHome>(keyring, path, keyAccount);
        return *m_home;
    }
    void fileHolds(const std::vector<KeyFileFormat::Entry> &entries)
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(KeyFileFormat::print(entries));
    }
    bool fileExists() const { return QFile::exists(path); }

    QTemporaryDir folder;
    const QString path = folder.filePath(u"support/keys"_s);
    FakeSecretStore keyring;
    std::vector<KeychainState> heard;

    void SetUp() override { QDir().mkpath(folder.filePath(u"support"_s)); }

private:
    std::unique_ptr<KeychainHome> m_home;
};

TEST_F(KeychainHomeTest, BeforeItIsOpenNothingIsReadOrStored)
{
    EXPECT_THROW((void)home().find(service, keyAccount), SecretStoreError);
    EXPECT_THROW(home().add(service, {keyAccount, "k"}), SecretStoreError);
    EXPECT_FALSE(home().keepsPresence());
}

TEST_F(KeychainHomeTest, AnOpenKeyringIsUsedAtOnceAndAMissingKeyIsToldFromAFreshStart)
{
    EXPECT_EQ(stateAfterOpening(), KeychainState::Ready);
    EXPECT_EQ(stateAfterOpening(KeyExpectation::MustExist), KeychainState::KeyMissing);
    home().add(service, {keyAccount, "k"});
    EXPECT_EQ(keyring.held.size(), 1U);
    const auto opening = open(KeyExpectation::MustExist);
    EXPECT_EQ(opening.state, KeychainState::Ready);
    EXPECT_TRUE(opening.holdsDataKey);
    EXPECT_FALSE(opening.dataKeyBehindPresence);
    EXPECT_TRUE(heard.empty());
    EXPECT_FALSE(fileExists());

    keyring.held.at({service, keyAccount}).presence = UserPresence::Required;
    EXPECT_TRUE(open().dataKeyBehindPresence);
    keyring.held.clear(); // a key that the move from an older build has yet to fetch is not lost
    keyring.held[{u"ai.quelmarfolk.mac"_s, keyAccount}] = {keyAccount, "k"};
    EXPECT_EQ(stateAfterOpening(KeyExpectation::MustExist), KeychainState::Ready);
}

TEST_F(KeychainHomeTest, ALockedKeyringIsWaitedForAndADismissedPromptCanBeRetried)
{
    keyring.held[{service, keyAccount}] = {keyAccount, "k"};
    keyring.state = Condition::Locked;
    keyring.refuse(Call::Unlock, KeychainStatus::UserCancelled);
    EXPECT_EQ(stateAfterOpening(), KeychainState::Locked);
    EXPECT_EQ(heard, std::vector{KeychainState::WaitingForUnlock});
    EXPECT_TRUE(canRetry(KeychainState::Locked));
    EXPECT_FALSE(fileExists());
    keyring.refusal = nullptr;
    EXPECT_EQ(stateAfterOpening(KeyExpectation::MustExist), KeychainState::Ready);
}

TEST_F(KeychainHomeTest, WithoutAKeyringAFileStandsInAndIsRemembered)
{
    keyring.state = Condition::Absent;
    EXPECT_EQ(stateAfterOpening(), KeychainState::ReadyInFile);
    ASSERT_TRUE(fileExists());
    EXPECT_EQ(QFile::permissions(path) & (QFile::ReadGroup | QFile::ReadOther), 0);
    home().add(service, {keyAccount, "k"});
    restart();
    const auto opening = open(KeyExpectation::MustExist);
    EXPECT_EQ(opening.state, KeychainState::ReadyInFile);
    EXPECT_TRUE(opening.holdsDataKey);
    EXPECT_EQ(home().find(service, keyAccount)->value, "k");
    EXPECT_TRUE(keyring.held.empty());
}

TEST_F(KeychainHomeTest, AKeyThatMustExistIsNeverReplacedByAFile)
{
    keyring.state = Condition::Absent;
    EXPECT_EQ(stateAfterOpening(KeyExpectation::MustExist), KeychainState::Unavailable);
    keyring.state = Condition::Open;
    keyring.refuse(Call::Condition, KeychainStatus::InputOutput); // there, but silent
    EXPECT_EQ(stateAfterOpening(), KeychainState::Unavailable);
    EXPECT_FALSE(fileExists());
}

TEST_F(KeychainHomeTest, ASlowKeyringIsAskedAgain)
{
    keyring.refusal = [this](Call call) {
        const bool slow = call == Call::Condition && keyring.calls[Call::Condition] < 3;
        return slow ? std::optional(KeychainStatus::InputOutput) : std::nullopt;
    };
    EXPECT_EQ(stateAfterOpening(), KeychainState::Ready);
}

TEST_F(KeychainHomeTest, ABrokenFileIsReportedAndKept)
{
    keyring.state = Condition::Absent;
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("morvane-keys 1\ncut");
    file.close();
    EXPECT_EQ(stateAfterOpening(), KeychainState::FileUnreadable);
    keyring.state = Condition::Open;
    EXPECT_EQ(stateAfterOpening(), KeychainState::FileUnreadable); // its keys may be the ones in use
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), "morvane-keys 1\ncut");
    EXPECT_TRUE(keyring.held.empty());
}

TEST_F(KeychainHomeTest, ALaterKeyringTakesTheSecretsOverAndTheFileIsWiped)
{
    fileHolds({{service, keyAccount, "k"}, {service, u"api"_s, "a"}});
    keyring.held[{service, u"api"_s}] = {u"api"_s, "a"}; // of a start that did not come to its end
    const LogCapture log;
    const auto opening = open(KeyExpectation::MustExist);
    EXPECT_EQ(opening.state, KeychainState::Ready);
    EXPECT_TRUE(opening.holdsDataKey);
    EXPECT_FALSE(fileExists());
    EXPECT_EQ(keyring.held.at({service, keyAccount}).value, "k");
    EXPECT_EQ(log.lines(), QStringList{u"app: Migrated a stored secret to the data-protection keychain"_s});
}

TEST_F(KeychainHomeTest, ATakeOverThatCannotBeVerifiedChangesNothing)
{
    const std::vector<KeyFileFormat::Entry> entries{{service, u"a"_s, "1"}, {service, keyAccount, "k"}};
    const auto scripts = std::vector<std::function<void()>>{
        [&] { keyring.corruption = [](const QByteArray &value) { return value + "x"; }; },
        [&] { keyring.refuse(Call::Add, KeychainStatus::InputOutput); },
        [&] {
            keyring.refusal = [this](Call call) { // the second item is refused
                const bool late = call == Call::Add && keyring.calls[Call::Add] > 1;
                return late ? std::optional(KeychainStatus::InputOutput) : std::nullopt;
            };
        },
        [&] { keyring.refuse(Call::Find, KeychainStatus::InputOutput); },
        [&] {
            keyring.state = Condition::Locked;
            keyring.refuse(Call::Unlock, KeychainStatus::UserCancelled);
        },
    };
    for (std::size_t i = 0; i < scripts.size(); ++i) {
        restart();
        fileHolds(entries);
        keyring.calls.clear();
        scripts[i]();
        EXPECT_EQ(stateAfterOpening(KeyExpectation::MustExist), KeychainState::ReadyInFile) << i;
        EXPECT_EQ(KeyFile(path).entries(), entries) << i;
        EXPECT_TRUE(keyring.held.empty()) << i;
        keyring.refusal = nullptr;
        keyring.corruption = nullptr;
    }
}

TEST_F(KeychainHomeTest, AKeyringThatHoldsAnotherKeyIsNotWrittenOver)
{
    fileHolds({{service, u"a"_s, "1"}, {service, keyAccount, "of the file"}});
    keyring.held[{service, keyAccount}] = {keyAccount, "of the keyring"};
    EXPECT_EQ(stateAfterOpening(), KeychainState::ReadyInFile);
    EXPECT_EQ(home().find(service, keyAccount)->value, "of the file");
    EXPECT_TRUE(fileExists());
    ASSERT_EQ(keyring.held.size(), 1U);
    EXPECT_EQ(keyring.held.at({service, keyAccount}).value, "of the keyring");

    // An erasure reaches both.
    NobodyThere nobody;
    KeychainService keychain(service, home(), nobody);
    EXPECT_EQ(keychain.deleteAll(), 2 + 1);
    EXPECT_TRUE(keyring.held.empty());
    EXPECT_TRUE(KeyFile(path).entries().empty());
}

class KeychainPreparationTest : public KeychainHomeTest {
protected:
    NobodyThere nobody;
    KeychainService keychain{service, home(), nobody};
};

TEST_F(KeychainPreparationTest, TheGuiThreadRunsOnWhileThePersonIsAsked)
{
    keyring.held[{service, keyAccount}] = {keyAccount, "k"};
    keyring.state = Condition::Locked;
    QSemaphore answered;
    keyring.onUnlock = [&](std::stop_token) { answered.acquire(); };

    KeychainPreparation preparation(service, home(), keychain);
    std::vector<KeychainState> states;
    QObject::connect(&preparation, &KeychainPreparation::stateChanged, &preparation,
                     [&](KeychainState state) {
                         states.push_back(state);
                         if (state == KeychainState::WaitingForUnlock)
                             answered.release(); // from the GUI thread's own loop
                     });
    const auto opening = TestWait::await(preparation.prepare(KeyExpectation::MustExist));
    EXPECT_EQ(opening.state, KeychainState::Ready);
    EXPECT_EQ(states, (std::vector{KeychainState::WaitingForUnlock, KeychainState::Ready}));

    const int finds = keyring.calls[Call::Find];
    EXPECT_EQ(keychain.read(keyAccount), u"k"_s);
    EXPECT_EQ(keyring.calls[Call::Find], finds); // from the cache
}

TEST_F(KeychainPreparationTest, StoppingOrDestroyingItEndsTheWait)
{
    keyring.state = Condition::Locked;
    keyring.onUnlock = [](std::stop_token stop) {
        QSemaphore stopped;
        const std::stop_callback onStop(stop, [&] { stopped.release(); });
        stopped.acquire();
        throw SecretStoreError(KeychainStatus::UserCancelled);
    };
    std::stop_source stop;
    auto preparation = std::make_unique<KeychainPreparation>(service, home(), keychain);
    QObject::connect(preparation.get(), &KeychainPreparation::stateChanged, preparation.get(),
                     [&] { stop.request_stop(); });
    EXPECT_THROW(TestWait::await(preparation->prepare(KeyExpectation::Unknown, stop.get_token())),
                 CancelledError);

    auto task = preparation->prepare(KeyExpectation::Unknown);
    TestWait::settle();
    preparation.reset();
    EXPECT_THROW(TestWait::await(std::move(task)), CancelledError);
}

TEST(KeychainStateTest, EveryStateThatStopsThePersonHasWordsAndAWayOn)
{
    for (const auto state : {KeychainState::Locked, KeychainState::Unavailable, KeychainState::KeyMissing,
                             KeychainState::FileUnreadable}) {
        EXPECT_FALSE(isReady(state));
        EXPECT_TRUE(canRetry(state));
        EXPECT_TRUE(sentenceFor(state).endsWith(u'.'));
    }
    EXPECT_TRUE(isReady(KeychainState::ReadyInFile));
    EXPECT_FALSE(sentenceFor(KeychainState::ReadyInFile).isEmpty());
    EXPECT_TRUE(sentenceFor(KeychainState::Ready).isEmpty());
}

} // namespace

} // namespace morvane
