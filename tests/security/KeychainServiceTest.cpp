#include "security/KeychainService.h"

#include "async/Work.h"
#include "security/FakeSecretStore.h"
#include "security/KeychainTasks.h"
#include "support/Await.h"
#include "support/LogCapture.h"
#include "support/ManualClock.h"
#include "support/WipeSpy.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using Answer = UserPresenceConfirming::Answer;
using Call = FakeSecretStore::Call;
using Operation = KeychainError::Operation;

const QString service = u"ai.morvane.macos"_s;
const QString account = u"local-data-key"_s;

class KeychainServiceTest : public testing::Test {
protected:
    // What `work` throws; Delete and no status when it does not.
    template <typename Work>
    static std::pair<Operation, KeychainStatus> failure(Work work)
    {
        try {
            work();
        } catch (const KeychainError &error) {
            return {error.operation(), error.status()};
        }
        return {Operation::Delete, {}};
    }
    static auto failedRead(KeychainStatus status) { return std::pair(Operation::Read, status); }
    std::optional<QString> readWithReason() { return keychain.read(account, u"unlock"_s, {}); }

    FakeSecretStore store;
    FakePresence presence;
    KeychainService keychain{service, store, presence};
};

TEST_F(KeychainServiceTest, WhatWasReadOrSavedIsKnownUntilItIsRemovedOrTheCacheIsCleared)
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

    keychain.save(u"two"_s, account);
    EXPECT_EQ(store.held.at({service, account}).value, "two");
    store.refuse(Call::Remove, KeychainStatus::InputOutput);
    EXPECT_THROW(keychain.remove(account), KeychainError);
    EXPECT_EQ(keychain.read(account), u"two"_s); // still there
    store.refusal = nullptr;
    keychain.remove(account);
    EXPECT_EQ(keychain.read(account), std::nullopt);
    keychain.save(u"three"_s, account);
    EXPECT_EQ(keychain.read(account), u"three"_s);
    EXPECT_NO_THROW(keychain.remove(u"never there"_s));
}

TEST_F(KeychainServiceTest, WarmingUpCachesWhatTakesNoPromptAndNothingNewer)
{
    store.held[{service, account}] = {account, "guarded", UserPresence::Required};
    store.held[{service, u"a"_s}] = {u"a"_s, "one"};
    store.held[{service, u"b"_s}] = {u"b"_s, "\xff\xfe"};
    keychain.warmUp();
    EXPECT_EQ(keychain.read(u"a"_s), u"one"_s);
    EXPECT_EQ(keychain.read(u"never there"_s), std::nullopt);
    EXPECT_EQ(store.calls[Call::Find], 0);
    EXPECT_EQ(keychain.read(u"b"_s), std::nullopt); // there, but not a text
    EXPECT_EQ(store.calls[Call::Find], 1);
    EXPECT_THROW((void)keychain.read(account), KeychainError);
    keychain.save(u"two"_s, u"a"_s);
    store.held[{service, u"a"_s}].value = "stale";
    keychain.warmUp();
    EXPECT_EQ(keychain.read(u"a"_s), u"two"_s);
    store.held[{service, u"later"_s}] = {u"later"_s, "three"};
    EXPECT_EQ(keychain.read(u"later"_s), std::nullopt);
    keychain.clearCache(); // forgets the listing, too
    EXPECT_EQ(keychain.read(u"later"_s), u"three"_s);
}

TEST_F(KeychainServiceTest, RefusalsAreTypedAndLogged)
{
    const auto save = [](KeychainService &k) { k.save(u"v"_s, account); };
    const auto read = [](KeychainService &k) { (void)k.read(account); };
    const auto remove = [](KeychainService &k) { k.remove(account); };
    const auto guard = [](KeychainService &k) { k.setUserPresence(u"v"_s, account, UserPresence::Required); };
    const auto failed = KeychainStatus::InputOutput;
    const auto locked = KeychainStatus::InteractionNotAllowed;
    const struct {
        Call call;
        KeychainStatus status;
        std::function<void(KeychainService &)> use;
        Operation operation;
        const char *line;
    } cases[] = {
        {Call::Add, failed, save, Operation::Save, "app: Keychain add failed: -36"},
        {Call::Update, KeychainStatus::NotAvailable, save, Operation::Save,
         "app: Keychain update failed: -25291"},
        {Call::Find, failed, read, Operation::Read, "app: Keychain read failed: -36"},
        {Call::Find, locked, read, Operation::Read,
         "app: A stored secret is behind Touch ID and was not read (-25308)"},
        {Call::Remove, failed, remove, Operation::Delete, "app: Keychain delete failed: -36"},
        {Call::Add, failed, guard, Operation::Save, "app: Keychain add behind Touch ID failed: -36"},
    };
    for (const auto &each : cases) {
        FakeSecretStore refusing;
        refusing.refuse(each.call, each.status);
        KeychainService refused(service, refusing, presence);
        const LogCapture log;
        EXPECT_EQ(failure([&] { each.use(refused); }), std::pair(each.operation, each.status));
        EXPECT_EQ(log.lines().value(0).toStdString(), each.line);
    }
    const KeychainError error(Operation::Delete, failed);
    EXPECT_EQ(error.userMessage(), u"The API key could not be removed from the Keychain."_s);
    EXPECT_EQ(
        error.recoverySuggestion(),
        u"Try again. If the problem persists, check Keychain Access for a locked or damaged keychain."_s);
    EXPECT_TRUE(error.isRetryable());
}

TEST_F(KeychainServiceTest, AnItemBehindPresenceIsReadOnlyByWhoShowsThatTheyAreThere)
{
    keychain.setUserPresence(u"key"_s, account, UserPresence::Required);
    EXPECT_TRUE(keychain.requiresUserPresence(account));
    EXPECT_FALSE(keychain.requiresUserPresence(u"missing"_s));
    EXPECT_EQ(keychain.read(account), u"key"_s); // who stored it has it in memory
    keychain.clearCache();
    EXPECT_EQ(failure([&] { (void)keychain.read(account); }),
              failedRead(KeychainStatus::InteractionNotAllowed));
    EXPECT_TRUE(presence.reasons.isEmpty());
    EXPECT_EQ(failure([&] { readWithReason(); }), failedRead(KeychainStatus::InteractionNotAllowed));
    presence.answer = Answer::Refused;
    EXPECT_EQ(failure([&] { readWithReason(); }), failedRead(KeychainStatus::AuthenticationFailed));
    presence.answer = Answer::Confirmed;
    EXPECT_EQ(readWithReason(), u"key"_s);
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
    EXPECT_EQ(failure([&] { keychain.setUserPresence(u"key"_s, account, UserPresence::Required); }),
              std::pair(Operation::Save, KeychainStatus::Parameter));
    store.canMark = true;
    for (const auto now : {UserPresence::NotRequired, UserPresence::Required}) {
        keychain.setUserPresence(u"key"_s, account, now);
        const auto other = now == UserPresence::Required ? UserPresence::NotRequired : UserPresence::Required;
        store.refusal = [&](Call call) { // the item goes, and the first try to put it back fails
            const bool isFirst = call == Call::Add && store.held.erase({service, account}) == 1;
            return isFirst ? std::optional(KeychainStatus::InputOutput) : std::nullopt;
        };
        EXPECT_THROW(keychain.setUserPresence(u"key"_s, account, other), KeychainError);
        store.refusal = nullptr;
        ASSERT_EQ(store.held.size(), 1U);
        EXPECT_EQ(store.held.at({service, account}).presence, now);
    }
}

TEST_F(KeychainServiceTest, AReadWithAReasonUnlocksALockedKeyringAndOneWithoutNeverPrompts)
{
    store.held[{service, account}] = {account, "key"};
    store.state = SecretStoring::Condition::Locked;
    EXPECT_EQ(failure([&] { (void)keychain.read(account); }),
              failedRead(KeychainStatus::InteractionNotAllowed));
    EXPECT_FALSE(keychain.requiresUserPresence(account));
    EXPECT_EQ(store.calls[Call::Unlock], 0);
    store.refuse(Call::Unlock, KeychainStatus::UserCancelled);
    EXPECT_EQ(failure([&] { readWithReason(); }), failedRead(KeychainStatus::UserCancelled));
    store.refusal = nullptr;
    EXPECT_EQ(readWithReason(), u"key"_s);
}

TEST_F(KeychainServiceTest, DeletingAllCountsWhatWentAndTakesFormerServicesAlong)
{
    for (const auto &name : {u"a"_s, u"b"_s, u"c"_s})
        keychain.save(u"v"_s, name);
    const QString older = u"ai.quelmarfolk.mac"_s;
    for (const auto &name : {u"x"_s, u"y"_s})
        store.held[{older, name}] = {name, "v"};
    store.held[{u"com.morvane.Quelmar"_s, u"x"_s}] = {u"x"_s, "v"};
    store.held[{u"someone.else"_s, u"x"_s}] = {u"x"_s, "v"};
    EXPECT_EQ(keychain.secretsOf(older),
              (std::vector<LegacySecretListing::Secret>{{u"x"_s, u"v"_s}, {u"y"_s, u"v"_s}}));
    keychain.removeSecret(older, u"y"_s);
    EXPECT_EQ(keychain.secretsOf(older).size(), 1U);
    EXPECT_EQ(keychain.deleteAll(), 3 + 2); // three items and two former services
    ASSERT_EQ(store.held.size(), 1U);
    EXPECT_EQ(keychain.read(u"a"_s), std::nullopt);

    keychain.save(u"v"_s, u"a"_s);
    store.refuse(Call::Remove, KeychainStatus::InputOutput);
    EXPECT_EQ(keychain.deleteAll(), 0);
    store.refuse(Call::Items, KeychainStatus::InputOutput);
    EXPECT_EQ(keychain.deleteAll(), 0);
    EXPECT_THROW((void)keychain.secretsOf(older), KeychainError);
}

TEST_F(KeychainServiceTest, LeavesNoCopyOfASecretBehind)
{
    WipeSpy spy(u"open sesame"_s);
    const auto wipes = [&](const std::function<void()> &work) {
        work();
        return spy.takeCount();
    };
    EXPECT_EQ(wipes([&] { keychain.save(u"open sesame"_s, account); }), 1);
    EXPECT_EQ(wipes([&] { keychain.clearCache(); }), 1);
    EXPECT_EQ(wipes([&] { (void)keychain.read(account); }), 1);
    EXPECT_EQ(wipes([&] { (void)keychain.requiresUserPresence(account); }), 1);
    EXPECT_EQ(wipes([&] { keychain.remove(account); }), 1);
}

TEST_F(KeychainServiceTest, TheGuiThreadMayHaveItsCallsDoneBesideIt)
{
    ManualClock clock;
    Work work{clock};
    TestWait::await(KeychainTasks::save(work, keychain, u"v"_s, u"a"_s));
    keychain.clearCache();
    EXPECT_EQ(TestWait::await(KeychainTasks::read(work, keychain, u"a"_s, u"reason"_s, {})), u"v"_s);
    TestWait::await(KeychainTasks::remove(work, keychain, u"a"_s));
    EXPECT_TRUE(store.held.empty());
    store.refuse(Call::Update, KeychainStatus::InputOutput);
    EXPECT_THROW(TestWait::await(KeychainTasks::save(work, keychain, u"v"_s, u"a"_s)), KeychainError);
}

} // namespace

} // namespace morvane
