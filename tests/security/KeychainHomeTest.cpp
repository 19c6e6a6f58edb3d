#include "security/KeychainHome.h"

#include "security/DataKey.h"
#include "security/FakeSecretStore.h"
#include "security/KeychainPreparation.h"
#include "security/SealedForm.h"
#include "support/Await.h"
#include "support/LogCapture.h"
#include "support/ManualClock.h"
#include "support/TestData.h"
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

const QByteArray wrapped = "morvane-wrapped-key 1 argon2id 64 2 EBESExQVFhcYGRobHB0eHw== "
                           "oKGio6SlpqeoqaqrBiBMfqjQRD8JqBpGAPL1w8MAWMM2sQ4OGCohfZEKJgXdTILJVjqtDFhJqQOUosRg";

// A key of one letter all through; longer words stand for themselves, and but for "wrapped" are no keys.
QByteArray keyOf(const QByteArray &word)
{
    if (word == "wrapped")
        return wrapped;
    return word.size() == 1 ? DataKey::print(SecretBytes(QByteArray(SealedForm::keySize, word.front())))
                            : word;
}

QByteArray wordOf(const QByteArray &stored)
{
    const auto key = DataKey::parse(stored);
    if (!key)
        return stored == wrapped ? QByteArray("wrapped") : stored;
    const QByteArray letter = key->view().first(1).toByteArray();
    return keyOf(letter) == stored ? letter : QByteArray("new");
}

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
            keyring.held[{service, keyAccount}] = {keyAccount, keyOf(keyringKey)};
        keyring.calls.clear();
        keyring.refusal = nullptr;
        keyring.corruption = nullptr;
        keyring.state = Condition::Open;
    }
    QByteArray file() const { return PrivateFile::read(path, 1 << 20).value_or(QByteArray()); }
    static QByteArray fileWith(const QByteArray &key)
    {
        return KeyFileFormat::print({{service, u"api"_s, "a"}, {service, keyAccount, keyOf(key)}});
    }

    // A call's name: it fails.
    void cause(const QByteArray &trouble)
    {
        const QByteArrayList calls{"condition", "unlock", "find", "items", "add"};
        const auto refuseWhile = [this](Call refused, auto isTrue) {
            keyring.refusal = [=, this](Call call) {
                return call == refused && isTrue(keyring.calls[call])
                           ? std::optional(KeychainStatus::InputOutput)
                           : std::nullopt;
            };
        };
        if (calls.contains(trouble))
            keyring.refuse(Call(calls.indexOf(trouble)), KeychainStatus::InputOutput);
        else if (trouble.startsWith("dismissed"))
            keyring.refuse(Call::Unlock, KeychainStatus::UserCancelled);
        else if (trouble == "second-add")
            refuseWhile(Call::Add, [](int count) { return count > 1; });
        else if (trouble == "slow")
            refuseWhile(Call::Condition, [](int count) { return count < 3; });
        else if (trouble == "corrupts")
            keyring.corruption = [](const QByteArray &value) { return QByteArray(value.size(), 'x'); };
        else if (trouble == "guarded")
            keyring.held[{service, keyAccount}].presence = UserPresence::Required;
        else if (trouble == "former")
            keyring.held[{u"ai.quelmarfolk.mac"_s, keyAccount}] = {keyAccount, keyOf("k")};
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
    EXPECT_FALSE(isReady(KeychainState::Opening) || canRetry(KeychainState::Opening));
}

// A keyring is used where there is one; the file stands in only where there is neither keyring nor data; and
// what holds a key is never replaced, whatever fails.
TEST_F(KeychainHomeTest, OpensTheKeyringOrTheFileAndLosesNoKey)
{
    const std::map<QByteArray, QByteArray> files{{"none", {}},
                                                 {"empty", KeyFileFormat::print({})},
                                                 {"k", fileWith("k")},
                                                 {"short", fileWith("short")},
                                                 {"wrapped", fileWith("wrapped")},
                                                 {"broken", "morvane-keys 1\nc"}};
    const auto toldAs = [](KeychainState state) {
        const QString way = isReady(state)    ? u"ready"_s
                            : canRetry(state) ? u"may be retried"_s
                                              : u"on its way"_s;
        return (way + u' ' + sentenceFor(state)).trimmed();
    };
    const auto fileNow = [&] {
        const auto named =
            std::find_if(files.begin(), files.end(), [&](auto &each) { return each.second == file(); });
        if (named != files.end())
            return named->first;
        const auto entries = KeyFileFormat::parse(file());
        return entries && !entries->empty() ? wordOf(entries->back().value) : file();
    };
    const auto outcome = [&](const QByteArray &line) {
        const QByteArrayList words = line.split(' ');
        restart(files.at(words[2]), words[3] == "none" ? QByteArray() : words[3]);
        keyring.state = Condition(QByteArrayList{"open", "locked", "absent"}.indexOf(words[0]));
        cause(words.value(4));
        const LogCapture log;
        const auto expectation = words[1] == "known" ? KeyExpectation::MustExist : KeyExpectation::Unknown;
        auto opening = open(expectation);
        if (words.value(4) == "dismissed-then-file") {
            EXPECT_TRUE(canUseFile(opening.state, expectation) &&
                        !canStartAfresh(opening.state, expectation));
            opening = home().openInFile(service);
        }
        keyring.refusal = nullptr;
        QStringList parts{toldAs(opening.state)};
        parts.append(u"file "_s + QString::fromUtf8(fileNow()));
        for (const auto &[key, item] : keyring.held)
            parts.append(u"keyring %1"_s.arg(QString::fromUtf8(wordOf(item.value))));
        if (opening.dataKeyBehindPresence)
            parts.append(u"guarded"_s);
        if (opening.dataKeyWrapped)
            parts.append(u"under a passphrase"_s);
        if (const auto item = isReady(opening.state) ? home().find(service, keyAccount) : std::nullopt)
            parts.append(u"gives "_s + QString::fromUtf8(wordOf(item->value)));
        for (const auto state : heard)
            parts.append(toldAs(state));
        return (parts + log.lines()).join(u"; "_s);
    };
    TestData::expect("security/key_homes.txt", outcome);
}

TEST_F(KeychainHomeTest, AnErasureReachesTheKeyringBesideTheFile)
{
    restart(fileWith("f"), "r");
    ASSERT_EQ(open().state, KeychainState::ReadyInFile);
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

TEST_F(KeychainPreparationTest, DestroyingItEndsTheWait)
{
    keyring.state = Condition::Locked;
    keyring.onUnlock = [](std::stop_token stop) {
        QSemaphore stopped;
        const std::stop_callback onStop(stop, [&] { stopped.release(); });
        stopped.acquire();
        throw SecretStoreError(KeychainStatus::UserCancelled);
    };
    auto preparation = std::make_unique<KeychainPreparation>(service, home(), keychain, work);
    auto task = preparation->prepare(KeyExpectation::Unknown);
    TestWait::settle();
    preparation.reset();
    EXPECT_THROW(TestWait::await(std::move(task)), CancelledError);
}

} // namespace

} // namespace morvane
