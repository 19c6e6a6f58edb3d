#include "ai/prompts/SystemPromptStore.h"
#include "ai/prompts/SystemPrompt.h"
#include "persistence/InMemorySettingsRepository.h"
#include "persistence/SettingsStore.h"
#include "security/InMemoryKeychainService.h"
#include "security/LocalDataVault.h"
#include "security/SealedForm.h"
#include "support/TestData.h"
#include "utils/files/PrivateFile.h"

#include <QCryptographicHash>
#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QByteArray sly = R"({"companion":{"name":"Fox","personality":" sly\n"}})";

class SystemPromptStoreTest : public testing::Test {
protected:
    QByteArray contents() const { return PrivateFile::read(path, 1 << 20).value_or(QByteArray("(none)")); }
    void write(const QByteArray &bytes) { PrivateFile::write(path, bytes); }
    // What is in the file once it is opened.
    std::optional<QByteArray> opened() const { return vault.open(contents()); }
    // What an older build left behind.
    void leave(const QString &prompt, const QByteArray &personas)
    {
        repository.setString(u"customSystemPrompt"_s, prompt);
        repository.setData(u"characterPersonas"_s, personas);
    }

    InMemoryKeychainService keychain;
    LocalDataVault vault{keychain};
    InMemorySettingsRepository repository;
    SettingsStore settings{repository};
    QTemporaryDir home;
    QString path = SystemPromptStore::path({home.path(), {}, {}});
};

TEST_F(SystemPromptStoreTest, KeepsInstructionsInOneSealedFile)
{
    EXPECT_EQ(path, home.filePath(u"ai.morvane.macos/instructions.txt"_s));
    SystemPromptStore store(settings, vault, path);
    EXPECT_TRUE(QDir(home.filePath(u"ai.morvane.macos"_s)).isEmpty());
    EXPECT_EQ(store.effectivePrompt(), SystemPrompt::defaultPrompt());
    int changes = 0;
    QObject::connect(&store, &SystemPromptStore::promptChanged, [&] { ++changes; });
    const QString words = u" Répondez court 👻\n"_s;
    store.setPrompt(words);
    const QByteArray saved = contents();
    store.setPrompt(words);
    EXPECT_EQ(contents(), saved); // a new seal would have a new nonce
    EXPECT_EQ(changes, 1);
    EXPECT_TRUE(SealedForm::isSealedFile(saved));
    EXPECT_EQ(opened(), words.toUtf8());
    EXPECT_EQ(SystemPromptStore(settings, vault, path).prompt(), words);
    EXPECT_EQ(store.effectivePrompt(), u"Répondez court 👻"_s);

    write("Be kind"); // a plain file stands until the next save
    store.load();
    EXPECT_EQ(store.prompt() + QString::fromUtf8(contents()), u"Be kindBe kind"_s);
    store.setPrompt(u" \n\t"_s);
    EXPECT_EQ(store.effectivePrompt(), SystemPrompt::defaultPrompt());
    EXPECT_TRUE(SealedForm::isSealedFile(contents()));
}

TEST_F(SystemPromptStoreTest, LeavesAFileThatItCannotOpenAloneUntilReset)
{
    InMemoryKeychainService otherKeychain;
    const QByteArray underALostKey = LocalDataVault(otherKeychain).seal(QByteArray("secret"));
    leave(u"old"_s, sly);
    for (const QByteArray &unreadable :
         {underALostKey, QByteArray("KVT1 tampered, and no box at all"), QByteArray("\xff\xfe")}) {
        write(unreadable);
        SystemPromptStore store(settings, vault, path);
        EXPECT_TRUE(store.loadFailed());
        EXPECT_EQ(store.effectivePrompt(), SystemPrompt::defaultPrompt());
        store.setPrompt(u"meanwhile"_s);
        EXPECT_EQ(store.effectivePrompt(), u"meanwhile"_s);
        EXPECT_EQ(contents(), unreadable);
        EXPECT_EQ(repository.string(u"customSystemPrompt"_s), u"old"_s);
    }

    repository.removeAll();
    SystemPromptStore store(settings, vault, path);
    store.reset();
    store.setPrompt(u"anew"_s);
    EXPECT_EQ(opened(), QByteArray("anew"));

    write(underALostKey);
    store.load();
    EXPECT_TRUE(store.loadFailed());
    // The key comes back.
    keychain.save(*otherKeychain.read(LocalDataVault::keyAccount), LocalDataVault::keyAccount);
    store.load();
    EXPECT_FALSE(store.loadFailed());
    EXPECT_EQ(store.prompt(), u"secret"_s);
}

TEST_F(SystemPromptStoreTest, TakesOverOnceWhatOlderBuildsHeld)
{
    const std::tuple<QString, QByteArray, QString> cases[] = {
        {u" Be brief \n"_s, {}, u"Be brief"_s},
        {u" Be brief "_s, sly, u"Be brief\n\nYour personality: sly"_s},
        {u" \n"_s, sly, u"sly"_s},
    };
    for (const auto &[prompt, personas, expected] : cases) {
        QFile::remove(path);
        leave(prompt, personas);
        SystemPromptStore store(settings, vault, path);
        EXPECT_EQ(store.prompt(), expected);
        EXPECT_EQ(opened(), expected.toUtf8());
        EXPECT_TRUE(repository.keys().isEmpty());

        store.reset();
        EXPECT_EQ(SystemPromptStore(settings, vault, path).prompt(), QString()); // it doesn't come back
    }

    write("Newer words");
    leave(u"Older words"_s, {});
    EXPECT_EQ(SystemPromptStore(settings, vault, path).prompt(), u"Newer words"_s);
    EXPECT_TRUE(repository.keys().isEmpty());
}

TEST_F(SystemPromptStoreTest, LosesNothingWhenTheFileCannotBeWritten)
{
    leave(u"Be brief"_s, sly);
    const QStringList keys = repository.keys();
    ASSERT_TRUE(QFile::link(u"/nonexistent/folder"_s, home.filePath(u"ai.morvane.macos"_s)));
    SystemPromptStore store(settings, vault, path);
    EXPECT_FALSE(store.loadFailed());
    EXPECT_EQ(store.prompt(), u"Be brief\n\nYour personality: sly"_s);
    EXPECT_EQ(repository.keys(), keys);
    store.setPrompt(u"kept in memory"_s);
    EXPECT_EQ(store.effectivePrompt(), u"kept in memory"_s);
}

QByteArray fingerprint(const QString &text)
{
    return QCryptographicHash::hash(text.toUtf8(), QCryptographicHash::Sha256).toHex();
}

// The digests were taken from the agreed wording, not from this program: a changed character is a fault here.
TEST(SystemPromptTest, TheWordsAreTheAgreedOnes)
{
    const auto instructions = [](const QByteArray &names) {
        std::vector<AITool> tools;
        for (const QString &name : QString::fromUtf8(names).split(u' ', Qt::SkipEmptyParts))
            tools.push_back({name});
        return QString::fromLatin1(fingerprint(SystemPrompt::toolInstructions(tools)));
    };
    TestData::expect("ai/tool_instructions.txt", instructions);
}

TEST(SystemPromptTest, IdentityThenRulesThenMemory)
{
    const QString identity = SystemPrompt::identity(u"Be brief."_s);
    EXPECT_EQ(identity, u"Be brief.\n\nYour name is MorvaneGPT."_s);
    const QString start = identity + u"\n\n"_s + SystemPrompt::toolInstructions({});
    EXPECT_EQ(SystemPrompt::ofTurn(identity, {}, u"Notes"_s), start + u"\n\nNotes"_s);
    EXPECT_EQ(SystemPrompt::ofTurn(identity, {}, u""_s), start);
    EXPECT_EQ(SystemPrompt::ofTurn(identity, {}, std::nullopt), start);
}

} // namespace

} // namespace morvane
