#include "security/KeychainService.h"

#include "security/FakeSecretStore.h"
#include "security/KeychainTasks.h"
#include "support/Await.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using Call = FakeSecretStore::Call;
using Operation = KeychainError::Operation;

const QString service = u"ai.morvane.macos"_s;
const QString account = u"local-data-key"_s;

class FakePresence final : public UserPresenceConfirming {
public:
    Answer answer = Answer::Confirmed;
    QStringList reasons;

    bool canConfirm() const override { return answer != Answer::Unavailable; }
    Answer confirm(const QString &reason, std::stop_token) override
    {
        reasons.append(reason);
        return answer;
    }
};

class KeychainServiceTest : public testing::Test {
protected:
    // What `work` throws, as "operation status"; empty when it does not.
    template <typename Work>
    static QString failure(Work work)
    {
        try {
            work();
        } catch (const KeychainError &error) {
            return u"%1 %2"_s.arg(static_cast<int>(error.operation())).arg(static_cast<int>(error.status()));
        }
        return {};
    }
    static QString failure(Operation operation, KeychainStatus status)
    {
        return u"%1 %2"_s.arg(static_cast<int>(operation)).arg(static_cast<int>(status));
    }
    FakeSecretStore::Item *item(const QString &name = account)
    {
        const auto found = store.held.find({service, name});
        return found == store.held.end() ? nullptr : &found->second;
    }

    FakeSecretStore store;
    FakePresence presence;
    KeychainService keychain{service, store, presence};
};

TEST_F(KeychainServiceTest, AReadLeavesTheProcessOnceAndAgainAfterTheCacheIsCleared)
{
    store.held[{service, account}] = {account, "k€y"};
    EXPECT_EQ(keychain.read(account), u"k€y"_s);
    EXPECT_EQ(keychain.read(account), u"k€y"_s);
    EXPECT_EQ(store.calls[Call::Find], 1);
    keychain.clearCache();
    EXPECT_EQ(keychain.read(account), u"k€y"_s);
    EXPECT_EQ(store.calls[Call::Find], 2);
    EXPECT_EQ(keychain.read(u"other"_s), std::nullopt);
    EXPECT_EQ(keychain.read(u"other"_s), std::nullopt); // another process may add it any time
    EXPECT_EQ(store.calls[Call::Find], 4);
}

TEST_F(KeychainServiceTest, SavesAndRemovesThroughTheCache)
{
    keychain.save(u"one"_s, account);
    keychain.save(u"two"_s, account);
    EXPECT_EQ(item()->value, "two");
    keychain.remove(account);
    EXPECT_EQ(item(), nullptr);
    EXPECT_EQ(keychain.read(account), std::nullopt);
    keychain.save(u"three"_s, account);
    EXPECT_EQ(keychain.read(account), u"three"_s);
    keychain.remove(u"never there"_s);
}

TEST_F(KeychainServiceTest, WarmingUpCachesWhatTakesNoPromptAndNothingNewer)
{
    store.held[{service, account}] = {account, "guarded", UserPresence::Required};
    store.held[{service, u"a"_s}] = {u"a"_s, "one"};
    store.held[{service, u"b"_s}] = {u"b"_s, "\xff\xfe"};
    store.held[{u"another"_s, u"c"_s}] = {u"c"_s, "three"};
    keychain.warmUp();
    EXPECT_EQ(keychain.read(u"a"_s), u"one"_s);
    EXPECT_EQ(store.calls[Call::Find], 0);
    EXPECT_EQ(keychain.read(u"never there"_s), std::nullopt);
    EXPECT_EQ(store.calls[Call::Find], 0);
    EXPECT_EQ(keychain.read(u"b"_s), std::nullopt); // there, but not a text
    EXPECT_EQ(store.calls[Call::Find], 1);
    EXPECT_EQ(failure([&] { (void)keychain.read(account); }),
              failure(Operation::Read, KeychainStatus::InteractionNotAllowed));
    keychain.save(u"two"_s, u"a"_s);
    store.held[{service, u"a"_s}].value = "stale";
    keychain.warmUp();
    EXPECT_EQ(keychain.read(u"a"_s), u"two"_s);
    store.held[{service, u"later"_s}] = {u"later"_s, "three"};
    EXPECT_EQ(keychain.read(u"later"_s), std::nullopt);
    keychain.clearCache(); // forgets the listing, too
    EXPECT_EQ(keychain.read(u"later"_s), u"three"_s);
}

struct RefusedCall {
    Call call;
    KeychainStatus status;
    std::function<void(KeychainService &)> use;
    Operation operation;
    QString line;
};

TEST_F(KeychainServiceTest, RefusalsAreTypedAndLogged)
{
    const auto save = [](KeychainService &k) { k.save(u"v"_s, account); };
    const auto read = [](KeychainService &k) { (void)k.read(account); };
    const auto remove = [](KeychainService &k) { k.remove(account); };
    const auto guard = [](KeychainService &k) { k.setUserPresence(u"v"_s, account, UserPresence::Required); };
    const QString behind = u"app: A stored secret is behind Touch ID and was not read (%1)"_s;
    const std::vector<RefusedCall> cases{
        {Call::Add, KeychainStatus::InputOutput, save, Operation::Save, u"app: Keychain add failed: -36"_s},
        {Call::Update, KeychainStatus::NotAvailable, save, Operation::Save,
         u"app: Keychain update failed: -25291"_s},
        {Call::Find, KeychainStatus::InputOutput, read, Operation::Read, u"app: Keychain read failed: -36"_s},
        {Call::Find, KeychainStatus::InteractionNotAllowed, read, Operation::Read, behind.arg(-25308)},
        {Call::Remove, KeychainStatus::InputOutput, remove, Operation::Delete,
         u"app: Keychain delete failed: -36"_s},
        {Call::Add, KeychainStatus::InputOutput, guard, Operation::Save,
         u"app: Keychain add behind Touch ID failed: -36"_s},
    };
    for (const auto &each : cases) {
        FakeSecretStore refusing;
        refusing.refuse(each.call, each.status);
        KeychainService service_(service, refusing, presence);
        const LogCapture log;
        EXPECT_EQ(failure([&] { each.use(service_); }), failure(each.operation, each.status));
        ASSERT_FALSE(log.lines().isEmpty());
        EXPECT_EQ(log.lines().first(), each.line);
    }
}

TEST_F(KeychainServiceTest, AFailedRemovalKeepsTheCachedValue)
{
    keychain.save(u"one"_s, account);
    store.refuse(Call::Remove, KeychainStatus::InputOutput);
    EXPECT_THROW(keychain.remove(account), KeychainError);
    EXPECT_EQ(keychain.read(account), u"one"_s);
}

TEST_F(KeychainServiceTest, AnItemBehindPresenceIsReadOnlyByWhoShowsThatTheyAreThere)
{
    keychain.setUserPresence(u"key"_s, account, UserPresence::Required);
    EXPECT_TRUE(keychain.requiresUserPresence(account));
    EXPECT_FALSE(keychain.requiresUserPresence(u"missing"_s));
    EXPECT_EQ(keychain.read(account), u"key"_s); // who stored it has it in memory
    keychain.clearCache();
    {
        const LogCapture log;
        EXPECT_EQ(failure([&] { (void)keychain.read(account); }),
                  failure(Operation::Read, KeychainStatus::InteractionNotAllowed));
        EXPECT_EQ(log.lines(),
                  QStringList{u"app: A stored secret is behind Touch ID and was not read (-25308)"_s});
    }
    EXPECT_TRUE(presence.reasons.isEmpty());
    presence.answer = UserPresenceConfirming::Answer::Refused;
    EXPECT_EQ(failure([&] { (void)keychain.read(account, u"unlock"_s, {}); }),
              failure(Operation::Read, KeychainStatus::AuthenticationFailed));
    presence.answer = UserPresenceConfirming::Answer::Unavailable;
    EXPECT_EQ(failure([&] { (void)keychain.read(account, u"unlock"_s, {}); }),
              failure(Operation::Read, KeychainStatus::InteractionNotAllowed));
    presence.answer = UserPresenceConfirming::Answer::Confirmed;
    EXPECT_EQ(keychain.read(account, u"unlock"_s, {}), u"key"_s);
    EXPECT_EQ(presence.reasons, QStringList(3, u"unlock"_s));
    EXPECT_EQ(keychain.read(account), u"key"_s);

    keychain.save(u"newer"_s, account); // a plain save does not take the mark away
    EXPECT_TRUE(keychain.requiresUserPresence(account));
    keychain.setUserPresence(u"newer"_s, account, UserPresence::NotRequired);
    keychain.clearCache();
    EXPECT_EQ(keychain.read(account), u"newer"_s);
}

TEST_F(KeychainServiceTest, APresenceChangeThatFailsLeavesTheItemAsItWas)
{
    keychain.save(u"key"_s, account);
    store.canMark = false;
    {
        const LogCapture log;
        EXPECT_EQ(failure([&] { keychain.setUserPresence(u"key"_s, account, UserPresence::Required); }),
                  failure(Operation::Save, KeychainStatus::Parameter));
        EXPECT_EQ(log.lines(), QStringList{u"app: Access control unavailable: <private>"_s});
    }
    store.canMark = true;
    store.refuse(Call::Add, KeychainStatus::InputOutput);
    EXPECT_THROW(keychain.setUserPresence(u"key"_s, account, UserPresence::Required), KeychainError);
    ASSERT_TRUE(item());
    EXPECT_EQ(item()->presence, UserPresence::NotRequired);
    store.refusal = nullptr;

    keychain.setUserPresence(u"key"_s, account, UserPresence::Required);
    store.refuse(Call::Add, KeychainStatus::InputOutput);
    EXPECT_THROW(keychain.setUserPresence(u"key"_s, account, UserPresence::NotRequired), KeychainError);
    ASSERT_TRUE(item());
    EXPECT_EQ(item()->presence, UserPresence::Required);
}

TEST_F(KeychainServiceTest, AReadWithAReasonUnlocksALockedKeyringAndOneWithoutNeverPrompts)
{
    store.held[{service, account}] = {account, "key"};
    store.state = SecretStoring::Condition::Locked;
    EXPECT_EQ(failure([&] { (void)keychain.read(account); }),
              failure(Operation::Read, KeychainStatus::InteractionNotAllowed));
    EXPECT_FALSE(keychain.requiresUserPresence(account));
    EXPECT_EQ(store.calls[Call::Unlock], 0);
    store.refuse(Call::Unlock, KeychainStatus::UserCancelled);
    EXPECT_EQ(failure([&] { (void)keychain.read(account, u"unlock"_s, {}); }),
              failure(Operation::Read, KeychainStatus::UserCancelled));
    store.refusal = nullptr;
    EXPECT_EQ(keychain.read(account, u"unlock"_s, {}), u"key"_s);
}

TEST_F(KeychainServiceTest, DeletingAllCountsWhatWentAndTakesFormerServicesAlong)
{
    for (const auto &name : {u"a"_s, u"b"_s, u"c"_s})
        keychain.save(u"v"_s, name);
    store.held[{u"ai.quelmarfolk.mac"_s, u"x"_s}] = {u"x"_s, "v"};
    store.held[{u"ai.quelmarfolk.mac"_s, u"y"_s}] = {u"y"_s, "v"};
    store.held[{u"com.morvane.Quelmar"_s, u"x"_s}] = {u"x"_s, "v"};
    store.held[{u"someone.else"_s, u"x"_s}] = {u"x"_s, "v"};
    EXPECT_EQ(keychain.deleteAll(), 3 + 2); // three items and two former services
    ASSERT_EQ(store.held.size(), 1U);
    EXPECT_EQ(keychain.read(u"a"_s), std::nullopt);

    keychain.save(u"v"_s, u"a"_s);
    store.refuse(Call::Remove, KeychainStatus::InputOutput);
    EXPECT_EQ(keychain.deleteAll(), 0);
    store.state = SecretStoring::Condition::Locked;
    EXPECT_EQ(keychain.deleteAll(), 0);
}

TEST_F(KeychainServiceTest, ListsAndRemovesTheSecretsOfAnOlderBuild)
{
    const QString older = u"ai.quelmarfolk.mac"_s;
    store.held[{older, u"x"_s}] = {u"x"_s, "v"};
    EXPECT_EQ(keychain.secretsOf(older), (std::vector<LegacySecretListing::Secret>{{u"x"_s, u"v"_s}}));
    keychain.removeSecret(older, u"x"_s);
    EXPECT_TRUE(keychain.secretsOf(older).empty());
    store.refuse(Call::Items, KeychainStatus::InputOutput);
    EXPECT_THROW((void)keychain.secretsOf(older), KeychainError);
}

TEST_F(KeychainServiceTest, TheGuiThreadMayHaveItsCallsDoneOnThePool)
{
    TestWait::await(KeychainTasks::save(&keychain, u"v"_s, u"a"_s));
    keychain.clearCache();
    EXPECT_EQ(TestWait::await(KeychainTasks::read(&keychain, u"a"_s, u"reason"_s, {})), u"v"_s);
    TestWait::await(KeychainTasks::remove(&keychain, u"a"_s));
    EXPECT_TRUE(store.held.empty());
    store.refuse(Call::Update, KeychainStatus::InputOutput);
    EXPECT_THROW(TestWait::await(KeychainTasks::save(&keychain, u"v"_s, u"a"_s)), KeychainError);
}

TEST(KeychainErrorTest, SpeaksToThePerson)
{
    const KeychainError error(Operation::Delete, KeychainStatus::InputOutput);
    EXPECT_EQ(error.userMessage(), u"The API key could not be removed from the Keychain."_s);
    EXPECT_EQ(
        error.recoverySuggestion(),
        u"Try again. If the problem persists, check Keychain Access for a locked or damaged keychain."_s);
    EXPECT_TRUE(error.isRetryable());
}

} // namespace

} // namespace morvane
