#include "security/KeychainHome.h"

#include "security/FakeSecretStore.h"
#include "security/KeychainPreparation.h"
#include "support/Await.h"
#include "support/LogCapture.h"
#include "support/ManualClock.h"
#include "utils/files/PrivateFile.h"

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

class KeychainHomeTest : public testing::Test {
protected:
    KeychainHome &home()
    {
        if (!m_home)
            m_home = std::make_unique<KeychainHome>(keyring, path, keyAccount);
        return *m_home;
    }
    KeychainOpening open(KeyExpectation expectation = KeyExpectation::Unknown)
    {
        return home().open(service, expectation, [this](KeychainState state) { heard.push_back(state); }, {});
    }
    // As after a start of the process, with this in the file and the keyring.
    void restart(const QByteArray &file, const QByteArray &keyringKey)
    {
        m_home.reset();
        heard.clear();
        QFile::remove(path);
        if (!file.isEmpty())
            PrivateFile::write(path, file);
        keyring.held.clear();
        if (!keyringKey.isEmpty())
            keyring.held[{service, keyAccount}] = {keyAccount, keyringKey};
        keyring.calls.clear();
        keyring.refusal = nullptr;
        keyring.corruption = nullptr;
        keyring.state = Condition::Open;
    }
    QByteArray file() const { return PrivateFile::read(path, 1 << 20).value_or(QByteArray()); }
    QByteArray keyringKey() const
    {
        const auto found = keyring.held.find({service, keyAccount});
        return found == keyring.held.end() ? QByteArray() : found->second.value;
    }
    static QByteArray fileWith(const QByteArray &key)
    {
        return KeyFileFormat::print({{service, u"api"_s, "a"}, {service, keyAccount, key}});
    }

    QTemporaryDir folder;
    const QString path = folder.filePath(u"support/keys"_s);
    FakeSecretStore keyring;
    std::vector<KeychainState> heard;

private:
    std::unique_ptr<KeychainHome> m_home;
};

TEST_F(KeychainHomeTest, BeforeItIsOpenNothingIsReadOrStored)
{
    EXPECT_THROW((void)home().find(service, keyAccount), SecretStoreError);
    EXPECT_THROW(home().add(service, {keyAccount, "k"}), SecretStoreError);
    EXPECT_FALSE(home().keepsPresence());
}

// A keyring is used where there is one; the file stands in only where there is neither keyring nor data; and
// what holds a key is never replaced, whatever fails.
TEST_F(KeychainHomeTest, OpensTheKeyringOrTheFileAndLosesNoKey)
{
    using enum KeychainState;
    using Refusal = std::optional<std::pair<Call, KeychainStatus>>;
    constexpr auto isThere = KeyExpectation::MustExist;
    constexpr auto unknown = KeyExpectation::Unknown;
    const auto open = Condition::Open, absent = Condition::Absent, locked = Condition::Locked;
    const auto failing = [](Call call) { return Refusal({call, KeychainStatus::InputOutput}); };
    const Refusal dismissed({Call::Unlock, KeychainStatus::UserCancelled});
    const QByteArray none, empty = KeyFileFormat::print({}), withK = fileWith("k"),
                           broken = "morvane-keys 1\nc";
    const struct {
        Condition condition;
        Refusal refusal;
        KeyExpectation expectation;
        QByteArray file, keyring;
        KeychainState state;
        QByteArray fileAfter, keyringAfter;
    } cases[] = {
        {open, {}, unknown, none, none, Ready, none, none},
        {open, {}, isThere, none, none, KeyMissing, none, none},
        {open, {}, isThere, none, "k", Ready, none, "k"},
        {open, failing(Call::Condition), unknown, none, none, Unavailable, none, none}, // there, but silent
        {open, failing(Call::Find), unknown, none, "k", Unavailable, none, "k"},
        {locked, {}, isThere, none, "k", Ready, none, "k"},
        {locked, dismissed, unknown, none, "k", Locked, none, "k"},
        {locked, failing(Call::Unlock), unknown, none, "k", Unavailable, none, "k"},
        {absent, {}, unknown, none, none, ReadyInFile, empty, none},
        {absent, {}, isThere, none, none, Unavailable, none, none},
        {absent, {}, isThere, withK, none, ReadyInFile, withK, none},
        {absent, {}, isThere, empty, none, KeyMissing, empty, none},
        {absent, {}, unknown, broken, none, FileUnreadable, broken, none},
        {open, {}, unknown, broken, "k", FileUnreadable, broken, "k"}, // its keys may be the ones in use
        // A later keyring takes the secrets over, or nothing changes.
        {open, {}, isThere, withK, none, Ready, none, "k"},
        {open, {}, isThere, withK, "k", Ready, none, "k"}, // of a start that didn't come to its end
        {open, {}, isThere, withK, "o", ReadyInFile, withK, "o"},
        {open, failing(Call::Add), isThere, withK, none, ReadyInFile, withK, none},
        {open, failing(Call::Find), isThere, withK, none, ReadyInFile, withK, none},
        {locked, dismissed, isThere, withK, none, ReadyInFile, withK, none},
    };
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        const auto &each = cases[i];
        SCOPED_TRACE(i);
        restart(each.file, each.keyring);
        keyring.state = each.condition;
        if (each.refusal)
            keyring.refuse(each.refusal->first, each.refusal->second);
        const LogCapture log;
        const auto opening = this->open(each.expectation);
        EXPECT_EQ(opening.state, each.state);
        EXPECT_EQ(file(), each.fileAfter);
        EXPECT_EQ(keyringKey(), each.keyringAfter);
        EXPECT_EQ(heard.size(), each.condition == locked ? 1U : 0U);
        keyring.refusal = nullptr;
        const bool isUsable = each.state == Ready || each.state == ReadyInFile;
        const QByteArray key = each.state == ReadyInFile && !each.file.isEmpty() ? "k" : each.keyringAfter;
        ASSERT_EQ(opening.holdsDataKey, isUsable && !key.isEmpty());
        EXPECT_EQ(opening.holdsDataKey ? home().find(service, keyAccount)->value : key, key);
        const bool isMoved = each.state == Ready && !each.file.isEmpty();
        EXPECT_EQ(log.lines(),
                  QStringList(isMoved ? (each.keyring.isEmpty() ? 2 : 1) : 0,
                              u"app: Migrated a stored secret to the data-protection keychain"_s));
    }
}

TEST_F(KeychainHomeTest, ATakeOverThatGoesWrongMidwayLeavesTheKeyringAsItWas)
{
    const auto refuseTheSecond = [this](Call call) {
        const bool late = call == Call::Add && keyring.calls[Call::Add] > 1;
        return late ? std::optional(KeychainStatus::InputOutput) : std::nullopt;
    };
    for (const bool isCorrupted : {true, false}) {
        restart(fileWith("k"), {});
        if (isCorrupted)
            keyring.corruption = [](const QByteArray &value) { return QByteArray(value.size(), 'x'); };
        else
            keyring.refusal = refuseTheSecond;
        EXPECT_EQ(open(KeyExpectation::MustExist).state, KeychainState::ReadyInFile);
        EXPECT_EQ(file(), fileWith("k"));
        EXPECT_TRUE(keyring.held.empty());
    }
}

TEST_F(KeychainHomeTest, ASlowKeyringIsAskedAgain)
{
    keyring.refusal = [this](Call call) {
        const bool slow = call == Call::Condition && keyring.calls[Call::Condition] < 3;
        return slow ? std::optional(KeychainStatus::InputOutput) : std::nullopt;
    };
    EXPECT_EQ(open().state, KeychainState::Ready);
}

TEST_F(KeychainHomeTest, AKeyBehindPresenceIsToldAndOneThatHasYetToBeMovedIsNotLost)
{
    keyring.held[{service, keyAccount}] = {keyAccount, "k", UserPresence::Required};
    EXPECT_TRUE(open().dataKeyBehindPresence);
    restart({}, "k");
    EXPECT_FALSE(open().dataKeyBehindPresence);
    restart({}, {});
    keyring.held[{u"ai.quelmarfolk.mac"_s, keyAccount}] = {keyAccount, "k"};
    EXPECT_EQ(open(KeyExpectation::MustExist).state, KeychainState::Ready);
}

TEST_F(KeychainHomeTest, AnErasureReachesTheKeyringBesideTheFile)
{
    restart(fileWith("of the file"), "of the keyring");
    EXPECT_EQ(open().state, KeychainState::ReadyInFile);
    FakePresence nobody;
    EXPECT_EQ(KeychainService(service, home(), nobody).deleteAll(), 2 + 1);
    EXPECT_TRUE(keyring.held.empty());
    EXPECT_EQ(file(), KeyFileFormat::print({}));
}

class KeychainPreparationTest : public KeychainHomeTest {
protected:
    FakePresence nobody;
    KeychainService keychain{service, home(), nobody};
    ManualClock clock;
    Work work{clock};
};

TEST_F(KeychainPreparationTest, TheGuiThreadRunsOnWhileThePersonIsAsked)
{
    keyring.held[{service, keyAccount}] = {keyAccount, "k"};
    keyring.state = Condition::Locked;
    QSemaphore answered;
    keyring.onUnlock = [&](std::stop_token) { answered.acquire(); };

    KeychainPreparation preparation(service, home(), keychain, work);
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
    auto preparation = std::make_unique<KeychainPreparation>(service, home(), keychain, work);
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
    using enum KeychainState;
    for (const auto state :
         {Opening, WaitingForUnlock, Ready, ReadyInFile, Locked, Unavailable, KeyMissing, FileUnreadable}) {
        const bool isFailure = state >= Locked;
        EXPECT_EQ(canRetry(state), isFailure);
        EXPECT_EQ(isReady(state), state == Ready || state == ReadyInFile);
        EXPECT_EQ(sentenceFor(state).endsWith(u'.'), state != Opening && state != Ready);
    }
}

} // namespace

} // namespace morvane
