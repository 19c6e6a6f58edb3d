#include "attestation/VeniceMeasurementListAnchor.h"
#include "attestation/VeniceMeasurementLists.h"
#include "evidence/ListKey.h"
#include "evidence/TestAuthority.h"
#include "security/InMemoryKeychainService.h"
#include "support/Await.h"
#include "support/FakeHttpSession.h"
#include "support/LogCapture.h"
#include "support/ManualClock.h"
#include "utils/files/PrivateFile.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const QString model = u"e2ee-test-model"_s;
const QString builtIn = u"e2ee-built-in"_s;

bool said(const LogCapture &log, const std::string &words)
{
    return !log.lines().filter(QString::fromStdString(words)).isEmpty();
}

class MeasurementListsTest : public testing::Test {
protected:
    MeasurementListsTest()
    {
        VeniceMeasurementAllowlist::Stack stack = scenario.stack;
        stack.configurations[0].id = u"built.in"_s;
        bundled.stacksByModel[builtIn] = {stack};
        restart();
    }
    ~MeasurementListsTest() override { TestWait::settle(); }

    // The program is started anew on what it kept.
    void restart()
    {
        const VeniceMeasurementListStore store(vault, folder.path());
        lists.emplace(work, VeniceMeasurementLists::Parts{
                                store,
                                VeniceMeasurementAnchorStore(&keychain),
                                VeniceListFetch(network, clock, u" https://lists.invalid/v1?x=y "_s),
                                bundled,
                                {QByteArray("no key"), key.publicKey()}});
    }

    QByteArray list(int version, const QJsonObject &changes = {}) const
    {
        QJsonObject object = scenario.signedList();
        object.insert(u"listVersion"_s, version);
        for (const QString &name : changes.keys())
            object.insert(name, changes.value(name));
        return QJsonDocument(object).toJson();
    }

    void serve(const QByteArray &bytes) { serve(bytes, key.signatureFile(bytes)); }
    void serve(const QByteArray &bytes, const QByteArray &signature)
    {
        network.fake->answer(200, bytes);
        network.fake->answer(200, signature);
    }

    // What a refresh at `time` gives; nothing when none is due.
    std::optional<bool> refresh(const QDateTime &time)
    {
        const auto due = TestWait::await(lists->refreshIfDue(time, {}));
        return due ? std::optional(TestWait::await(due->wait({}))) : std::nullopt;
    }
    std::optional<bool> refresh() { return refresh(now = now.addSecs(21600)); }

    // What of the two models is accepted, and by which list.
    QString accepted() const
    {
        const VeniceMeasurementAllowlist allowlist = lists->allowlist(now);
        QString text = allowlist.source.text().section(u' ', 0, 1);
        for (const QString &name : {model, builtIn}) {
            if (!allowlist.stacks(name).empty())
                text += u' ' + name;
        }
        return text;
    }

    [[nodiscard]] std::size_t requests() const { return network.fake->requests().size(); }

    const Scenario scenario;
    const ListKey key;
    QTemporaryDir folder;
    ManualClock clock;
    Work work{clock};
    InMemoryKeychainService keychain;
    LocalDataVault vault{keychain};
    FakeHttpSessionProvider network;
    VeniceMeasurementAllowlist bundled;
    QDateTime now = scenario.date;
    std::optional<VeniceMeasurementLists> lists;
};

TEST_F(MeasurementListsTest, WithdrawalsStayWhateverComesLater)
{
    serve(list(1, {{u"issuedAt"_s, u"2020-01-01T00:00:00Z"_s},
                   {u"notAfter"_s, u"2020-01-02T00:00:00Z"_s},
                   {u"revoked"_s, QJsonArray{u"built.in"_s, u"test.configuration"_s}}}));
    LogCapture log;
    EXPECT_EQ(refresh(), true);
    EXPECT_TRUE(said(log, "(1 entries, 2 withdrawn, already expired: only its withdrawals count)"));
    EXPECT_EQ(accepted(), u"Version 1"_s);
    serve(list(2));
    EXPECT_EQ(refresh(), true);
    EXPECT_EQ(accepted(), u"Version 2,"_s);
}

TEST_F(MeasurementListsTest, AcceptsNothingWhileTheKeychainWouldNotTell)
{
    serve(list(1));
    ASSERT_EQ(refresh(), true);
    const auto saved = keychain.read(u"accepted-servers-anchor"_s);
    LogCapture log;
    keychain.save(u"{}"_s, u"accepted-servers-anchor"_s);
    EXPECT_FALSE(TestWait::await(lists->prepare({})));
    EXPECT_TRUE(said(log, "so no server is accepted"));
    EXPECT_EQ(accepted(), u"Built into"_s);
    EXPECT_EQ(refresh(), std::nullopt);
    keychain.save(*saved, u"accepted-servers-anchor"_s);
    EXPECT_TRUE(TestWait::await(lists->prepare({})));
    EXPECT_EQ(accepted(), u"Version 1, e2ee-test-model"_s);
}

TEST_F(MeasurementListsTest, ARefreshThatLosesWhatWasRememberedEnds)
{
    const QByteArray bytes = list(1);
    network.fake->answer({.pieces = {bytes}, .ending = FakeHttpSession::Ending::staysOpen});
    const auto due = TestWait::await(lists->refreshIfDue(now, {}));
    keychain.save(u"{}"_s, u"accepted-servers-anchor"_s);
    ASSERT_FALSE(TestWait::await(lists->prepare({})));
    network.fake->answer(200, key.signatureFile(bytes));
    network.fake->closeBody();
    EXPECT_FALSE(TestWait::await(due->wait({})));
    keychain.remove(u"accepted-servers-anchor"_s);
    serve(bytes);
    EXPECT_EQ(refresh(), true); // the next one isn't kept from beginning
}

// Reads what it can, refuses to save.
class ForgetfulKeychain : public InMemoryKeychainService {
public:
    void save(const QString &value, const QString &account) override
    {
        if (forgets)
            throw KeychainError(KeychainError::Operation::Save, KeychainStatus::InputOutput);
        InMemoryKeychainService::save(value, account);
    }
    std::atomic<bool> forgets = true;
};

TEST_F(MeasurementListsTest, TakesNoListThatItCouldNotRemember)
{
    ForgetfulKeychain forgetful;
    lists.emplace(work,
                  VeniceMeasurementLists::Parts{VeniceMeasurementListStore(vault, folder.path()),
                                                VeniceMeasurementAnchorStore(&forgetful),
                                                VeniceListFetch(network, clock, u"https://lists.invalid"_s),
                                                bundled,
                                                {key.publicKey()}});
    LogCapture log;
    serve(list(1));
    EXPECT_EQ(refresh(), false);
    EXPECT_TRUE(said(log, "the Keychain would not remember version 1, so it is not accepted"));
    EXPECT_EQ(accepted(), u"Built into e2ee-built-in"_s);
    forgetful.forgets = false;
    serve(list(1));
    EXPECT_EQ(refresh(), true);
    lists.reset();
}

TEST_F(MeasurementListsTest, IsFetchedWhenItIsDueAndOnlyOnce)
{
    network.fake->answer({.neverAnswers = true});
    const auto first = TestWait::await(lists->refreshIfDue(now, {}));
    const auto second = TestWait::await(lists->refreshIfDue(now, {}));
    ASSERT_TRUE(first && second);
    EXPECT_EQ(requests(), 1U);
    const auto late = TestWait::begin(first->wait(clock, 2s, {}));
    TestWait::settle();
    EXPECT_FALSE(late->done);
    clock.advance(2s);
    TestWait::until([&] { return late->done; });
    EXPECT_EQ(*late->value, std::nullopt);
    restart();
    for (const auto &[seconds, isDue] :
         {std::pair(-1, true), std::pair(21599, false), std::pair(21600, true)}) {
        network.fake->answer(404, {});
        const QDateTime attempt = now = now.addYears(1);
        ASSERT_EQ(refresh(attempt), false);
        network.fake->answer(404, {});
        EXPECT_EQ(refresh(attempt.addSecs(seconds)).has_value(), isDue) << seconds;
        network.fake.reset(new FakeHttpSession);
    }
    for (const auto &[seconds, isDue] : {std::pair(299, 0), std::pair(300, 1)}) {
        network.fake->answer(404, {});
        now = now.addYears(1);
        ASSERT_EQ(refresh(now), false);
        network.fake.reset(new FakeHttpSession);
        network.fake->answer(404, {});
        EXPECT_FALSE(TestWait::await(lists->refreshAfterRefusal(now.addSecs(seconds), {})));
        EXPECT_EQ(requests(), static_cast<std::size_t>(isDue)) << seconds;
        network.fake.reset(new FakeHttpSession);
    }
}

TEST_F(MeasurementListsTest, IgnoresAFileThatIsNotSealedAndWaitsForALockedVault)
{
    serve(list(1));
    ASSERT_EQ(refresh(), true);
    vault.lock();
    restart();
    EXPECT_FALSE(TestWait::await(lists->prepare({})));
    vault.unlock();
    EXPECT_TRUE(TestWait::await(lists->prepare({})));
    EXPECT_EQ(accepted(), u"Version 1, e2ee-test-model"_s);

    PrivateFile::write(folder.filePath(u"accepted-servers.sealed"_s), "{\"list\": \"e30=\"}");
    restart();
    LogCapture log;
    EXPECT_TRUE(TestWait::await(lists->prepare({})));
    EXPECT_TRUE(said(log, "Accepted servers list: the saved state is not sealed, so it is ignored"));
    EXPECT_EQ(accepted(), u"Built into e2ee-built-in"_s);
    serve(list(2, {{u"revoked"_s, QJsonArray{u"built.in"_s}}}));
    EXPECT_EQ(refresh(), true);
    PrivateFile::write(folder.filePath(u"accepted-servers.sealed"_s), "KVT1 cut");
    restart();
    EXPECT_TRUE(TestWait::await(lists->prepare({})));
    EXPECT_EQ(accepted(), u"Built into"_s); // the withdrawal is remembered elsewhere
}

using Anchor = VeniceMeasurementListAnchor;

TEST(ListAnchor, RemembersEachKeyForItselfAndForgetsNoWithdrawal)
{
    const QByteArray one(32, '1');
    const QByteArray two(32, '2');
    const Anchor first = Anchor().after(one, {7, u"aa"_s}, {u"withdrawn.first"_s});
    const Anchor second = first.after(two, {3, u"bb"_s}, {});
    EXPECT_EQ(second.floorOf(one), 7);
    EXPECT_EQ(second.floorOf(two), 3);
    EXPECT_EQ(first.floorOf(two), 0);
    EXPECT_EQ(second.after(one, {8, u"cc"_s}, {u"withdrawn.later"_s}).revoked,
              (std::set{u"withdrawn.first"_s, u"withdrawn.later"_s}));
    EXPECT_EQ(Anchor::read(second.json()), second);
    EXPECT_EQ(Anchor::read(Anchor().json()), Anchor());
}

TEST(ListAnchor, IsUnreadableUnlessAllOfItHolds)
{
    const QString good =
        uR"({"marks":{"MTExMTExMTExMTExMTExMTExMTExMTExMTExMTExMTE=":{"version":7,"sha256":"aa"}},"revoked":["a"]})"_s;
    ASSERT_TRUE(Anchor::read(good));
    const std::pair<QString, QString> breaches[] = {
        {u"7"_s, u"0"_s},          {u"7"_s, u"7.5"_s},      {u"7"_s, u"\"7\""_s},
        {u"MTEx"_s, u"MT"_s},      {u"\"aa\""_s, u"1"_s},   {u"[\"a\"]"_s, u"[\"A\"]"_s},
        {u"[\"a\"]"_s, u"[1]"_s},  {u"[\"a\"]"_s, u"{}"_s}, {u"\"sha256\""_s, u"\"sha\""_s},
        {u"revoked"_s, u"gone"_s}, {u"}},"_s, u"}}},"_s},   {good, u"[]"_s},
        {good, QString()}};
    for (const auto &[before, after] : breaches)
        EXPECT_FALSE(Anchor::read(QString(good).replace(before, after))) << after.toStdString();
}

} // namespace

} // namespace morvane
