#include "async/Work.h"
#include "security/FakeSecretStore.h"
#include "security/KeychainService.h"
#include "security/LocalDataVault.h"
#include "security/ServiceIdentity.h"
#include "support/LogCapture.h"
#include "support/TestData.h"
#include "support/WipeSpy.h"
#include "utils/files/PrivateFile.h"

#include <QDir>
#include <QMetaMethod>
#include <QRegularExpression>
#include <QSemaphore>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <thread>

namespace morvane {

using namespace Qt::StringLiterals;

// The keychain and what stands on it: most rules are told in transcripts, what takes threads or files here.

namespace {

// A keychain over a scripted keyring and person, with the vault and the credentials that stand on it.
struct Secrets {
    FakeSecretStore store;
    FakePresence presence;
    KeychainService keychain{QStringLiteral("own"), store, presence};
    LocalDataVault vault{keychain};
    ServiceIdentity identity{keychain};
    QTemporaryDir home;
    const QString path = home.filePath(QStringLiteral("notes"));
};

// Works the secrets by the lines of a transcript, each a command and its words. A command is the slot of its
// name.
//
// What comes of a line: its result, the calls that reached the keyring, the questions to the person, log
// lines, how often the watched text was wiped, and what the keyring holds when that changed ("*": behind
// presence). Long texts are keys, credentials and what is sealed: each shows as a number, ⟨1⟩, ⟨2⟩…, and is
// named so.
class SecretsScript : public QObject, private Secrets {
    Q_OBJECT

public:
    ~SecretsScript() override { setTestHost({}); }

    // Plays a file of tests/data; the line "anew" starts over.
    static void expect(const char *path)
    {
        auto script = std::make_unique<SecretsScript>();
        const auto outcome = [&](const QByteArray &line) {
            if (line != "anew")
                return script->play(line);
            script.reset();
            script = std::make_unique<SecretsScript>();
            return QString();
        };
        TestData::expect(path, outcome);
    }

public Q_SLOTS: // of the keyring and of the person
    void hold() { store.held[{words.size() > 3 ? arg(3) : text("own"), arg(1)}] = {arg(1), word(2)}; }
    void refuse() { store.refuse(Call(callNames.indexOf(word(1))), KeychainStatus(word(2).toInt())); }
    void obey() { store.refusal = nullptr; }
    // The item goes, and the first try to put it back fails.
    void lose()
    {
        store.refusal = [this](Call call) {
            const bool isFirst = call == Call::Add && store.held.erase({text("own"), text("key")}) == 1;
            return isFirst ? std::optional(KeychainStatus::InputOutput) : std::nullopt;
        };
    }
    void lockKeyring() { store.state = SecretStoring::Condition::Locked; }
    void marks() { store.canMark = word(1) == "kept"; }
    void person()
    {
        using enum UserPresenceConfirming::Answer;
        presence.answer = word(1) == "confirms" ? Confirmed : Refused;
    }
    void watch()
    {
        spy.reset();
        spy = std::make_unique<WipeSpy>(arg(1));
    }
    void testHost() { setTestHost(word(1)); }

public Q_SLOTS: // of the keychain
    void save() { keychain.save(QString::fromUtf8(words.mid(2).join(' ')), arg(1)); }
    QString read() { return shown(keychain.read(arg(1))); }
    QString ask() { return shown(keychain.read(arg(1), text("why"), {})); }
    void guard() { keychain.setUserPresence(arg(2), arg(1), UserPresence::Required); }
    void unguard() { keychain.setUserPresence(arg(2), arg(1), UserPresence::NotRequired); }
    QString isGuarded() { return text(keychain.requiresUserPresence(arg(1)) ? "yes" : "no"); }
    void remove() { keychain.remove(arg(1)); }
    void removeFor() { keychain.removeSecret(arg(2), arg(1)); }
    void forget() { keychain.clearCache(); }
    void warmUp() { keychain.warmUp(); }
    QString erase() { return QString::number(keychain.deleteAll()); }
    QString listFor()
    {
        QStringList all;
        for (const auto &secret : keychain.secretsOf(arg(1)))
            all.append(secret.account + u'=' + secret.value);
        return all.join(u' ');
    }

public Q_SLOTS: // of the vault
    QString seal() { return shown(vault.seal(arg(1))); }
    QString open() { return u'"' + vault.open(arg(1)) + u'"'; }
    QString sealFile() { return shown(text(vault.seal(arg(1).toLatin1()))); }
    QString openFile()
    {
        const auto opened = vault.open(arg(1).toLatin1());
        return opened ? text(*opened) : shown({});
    }
    void write() { vault.writeSealed(word(1), path); }
    QString show() { return shown(text(PrivateFile::read(path, 1 << 20).value())); }
    void key() { (void)vault.key(); }
    void needKey() { vault.requireExistingKey(); }
    void destroyKey() { vault.destroyKey(); }
    void guardKey() { vault.moveKey(UserPresence::Required); }
    void unguardKey() { vault.moveKey(UserPresence::NotRequired); }
    void wrap() { vault.wrapKey(Passphrase(arg(1)), {8, 1}); }
    QString unwrap() { return text(vault.unwrapKey(Passphrase(arg(1))) ? "the key" : "none"); }
    void bare() { vault.bareKey(); }
    void unlockWith()
    {
        if (auto key = vault.unwrapKey(Passphrase(arg(1))))
            vault.unlock(std::move(key));
    }
    void lock() { vault.lock(); }
    void unlock() { vault.unlock(); }

public Q_SLOTS: // of the services' numbers
    QString credential() { return shown(identity.credential(service())); }
    QString credentialElsewhere() { return shown(ServiceIdentity(keychain).credential(service())); }
    QString reset() { return shown(identity.reset(service())); }
    void replace() { identity.replace(service(), arg(2)); }

private:
    using Call = FakeSecretStore::Call;
    using Service = ServiceIdentity::Service;

    QString play(const QByteArray &line)
    {
        const QString before = holding();
        words = line.split(' ');
        store.calls.clear();
        presence.reasons.clear();
        const LogCapture log;
        QStringList parts{attempt()};
        for (const auto &[call, count] : store.calls)
            parts.append(QStringLiteral("%1 ×%2").arg(text(callNames.at(int(call)))).arg(count));
        for (const QString &reason : presence.reasons)
            parts.append(text("asks the person ") + reason);
        parts.append(log.lines());
        if (const int count = spy ? spy->takeCount() : 0)
            parts.append(QStringLiteral("wiped ×%1").arg(count));
        if (const QString now = holding(); now != before)
            parts.append(text("holds ") + now);
        parts.removeAll(QString());
        return parts.join(text("; "));
    }
    QString attempt()
    {
        const QMetaMethod command = metaObject()->method(metaObject()->indexOfSlot(words[0] + "()"));
        QString told;
        try {
            const bool isKnown =
                command.returnType() == QMetaType::Void
                    ? command.invoke(this, Qt::DirectConnection)
                    : command.invoke(this, Qt::DirectConnection, Q_RETURN_ARG(QString, told));
            return isKnown ? told : text("no such command");
        } catch (const KeychainError &error) {
            return error.userMessage() + QStringLiteral(" (%1)").arg(int(error.status()));
        } catch (const std::exception &error) {
            return text(error.what());
        }
    }
    QString holding()
    {
        QStringList all;
        for (const auto &[key, item] : store.held) {
            const auto account = key.first == text("own") ? key.second : key.first + u'/' + key.second;
            const auto mark = text(item.presence == UserPresence::Required ? "*" : "");
            all.append(account + u'=' + shown(QString::fromUtf8(item.value)) + mark);
        }
        return all.isEmpty() ? text("nothing") : all.join(u' ');
    }
    static void setTestHost(const QByteArray &set)
    {
        for (const char *name : {"XCTestConfigurationFilePath", "XCTestBundlePath"})
            set == name ? qputenv(name, "/x") : qunsetenv(name);
    }

    Service service() const { return word(1) == "hosted" ? Service::Hosted : Service::Search; }
    static QString text(const QByteArray &bytes) { return QString::fromLatin1(bytes); }
    QByteArray word(int index) const { return words.value(index); }
    QString arg(int index) const
    {
        const QString given = QString::fromUtf8(word(index));
        return given.startsWith(u'⟨') ? numbered.at(given.sliced(1).chopped(1).toInt() - 1) : given;
    }
    QString shown(const std::optional<QString> &result)
    {
        if (!result || result->size() < 32)
            return result.value_or(text("none"));
        if (!numbered.contains(*result))
            numbered.append(*result);
        return QStringLiteral("⟨%1⟩").arg(numbered.indexOf(*result) + 1);
    }

    const QByteArrayList callNames{"condition", "unlock", "find", "items", "add", "update", "remove"};
    QByteArrayList words; // of the line that is played
    QStringList numbered; // what ⟨1⟩, ⟨2⟩… stand for
    std::unique_ptr<WipeSpy> spy;
};

std::vector<QString> onManyThreads(const std::function<QString()> &work)
{
    std::vector<QString> results(16);
    {
        std::vector<std::jthread> threads;
        for (auto &result : results)
            threads.emplace_back([&] { result = work(); });
    }
    return results;
}

class KeychainServiceTest : public testing::Test, protected Secrets {};

TEST_F(KeychainServiceTest, RemembersWhatWasReadOrSavedAndLeavesNoCopyBehind)
{
    SecretsScript::expect("security/keychain_memory.txt");
}

TEST_F(KeychainServiceTest, ReadsBehindPresenceOnlyForWhoIsThere)
{
    SecretsScript::expect("security/keychain_presence.txt");
}

TEST_F(KeychainServiceTest, TellsAndLogsRefusalsAndCountsWhatAnErasureTook)
{
    SecretsScript::expect("security/keychain_refusals.txt");
    const KeychainError error(KeychainError::Operation::Delete, KeychainStatus::InputOutput);
    EXPECT_EQ(
        error.recoverySuggestion(),
        u"Try again. If the problem persists, check your desktop's password manager for a locked or damaged keyring."_s);
    EXPECT_TRUE(error.isRetryable());
}

class LocalDataVaultTest : public testing::Test, protected Secrets {
protected:
    static QByteArray contents(const QString &path)
    {
        return PrivateFile::read(path, 1 << 20).value_or(QByteArray("(none)"));
    }
};

TEST_F(LocalDataVaultTest, SealsUnderOneKeyAndOpensNothingWhileLockedOrWithoutIt)
{
    SecretsScript::expect("security/vault.txt");
}

TEST_F(LocalDataVaultTest, SealsWhatAnOlderBuildLeftInTheClearOnce)
{
    const std::map<QString, QByteArray> files{
        {u"Morvane/other.json"_s, "stays"},
        {u"Morvane/code-app-data/b.txt"_s, "stays"},
        {u"ai.morvane.macos/code.json"_s, "stays"},
        {u"Morvane/subscriptions.json"_s, "[1]"},
        {u"Morvane/code.json"_s, ""},
        {u"Morvane/code-app-data/b.json"_s, "{}"},
        {u"ai.morvane.macos/memory.md"_s, "# Notes"},
        {u"ai.morvane.macos/memory-work.md"_s, vault.seal(QByteArray("sealed before"))},
    };
    for (const auto &[name, bytes] : files)
        PrivateFile::write(home.filePath(name), bytes);
    QDir().mkpath(home.filePath(u"Morvane/gift-people.json"_s)); // a folder in a file's place
    const QString notes = home.filePath(u"ai.morvane.macos/memory.md"_s);
    QFile::setPermissions(notes, QFile::permissions(notes) | QFile::ReadGroup | QFile::ReadOther);

    vault.lock();
    EXPECT_EQ(vault.sealLeftovers(home.path()), QStringList());
    vault.unlock();
    store.refuse(FakeSecretStore::Call::Find, KeychainStatus::NotAvailable);
    EXPECT_EQ(vault.sealLeftovers(home.path()), QStringList());
    store.refusal = nullptr;
    EXPECT_EQ(contents(notes), "# Notes");

    EXPECT_EQ(vault.sealLeftovers(home.path()), (QStringList{u"code.json"_s, u"subscriptions.json"_s,
                                                             u"code-app-data/b.json"_s, u"memory.md"_s}));
    EXPECT_EQ(vault.sealLeftovers(home.path()), QStringList());
    EXPECT_TRUE(contents(notes).startsWith("KVT1"));
    EXPECT_EQ(vault.open(contents(notes)), QByteArray("# Notes"));
    EXPECT_EQ(QFile::permissions(notes) & (QFile::ReadGroup | QFile::ReadOther), 0);
    for (const auto &[name, bytes] : files)
        EXPECT_EQ(contents(home.filePath(name)) == "stays", bytes == "stays") << name.toStdString();
}

TEST_F(LocalDataVaultTest, FirstSealsFromManyThreadsShareOneKey)
{
    for (const auto &field : onManyThreads([this] { return *vault.seal(u"words"_s); }))
        EXPECT_EQ(vault.open(field), u"words"_s);
}

// The lock must not wait for a keychain that waits for a person.
TEST_F(LocalDataVaultTest, LockingDoesNotWaitForAKeychainCallAndDoesNotStopItsSeal)
{
    (void)vault.seal(u"first"_s);
    keychain.clearCache();
    QSemaphore reading, answered;
    store.refusal = [&](FakeSecretStore::Call) {
        reading.release();
        answered.acquire();
        return std::nullopt;
    };
    std::optional<QString> field;
    {
        const std::jthread sealing([&] { field = vault.seal(u"words"_s); });
        reading.acquire();
        vault.lock();
        EXPECT_EQ(vault.seal(u"dropped"_s), std::nullopt);
        answered.release();
    }
    store.refusal = nullptr;
    vault.unlock();
    EXPECT_EQ(vault.open(field.value_or(QString())), u"words"_s);
}

class ServiceIdentityTest : public testing::Test, protected Secrets {};

TEST_F(ServiceIdentityTest, EachServiceHasANumberOfItsOwnWhateverTheKeychainRefuses)
{
    SecretsScript::expect("security/credentials.txt");
}

TEST_F(ServiceIdentityTest, CallersOnManyThreadsGetOneNumber)
{
    const auto seen = onManyThreads([this] { return identity.credential(ServiceIdentity::Service::Search); });
    EXPECT_EQ(seen, std::vector(seen.size(), seen.front()));
    EXPECT_TRUE(QRegularExpression(u"^[0-9a-f]{64}$"_s).match(seen.front()).hasMatch());
}

} // namespace

} // namespace morvane

#include "SecretsTest.moc"
