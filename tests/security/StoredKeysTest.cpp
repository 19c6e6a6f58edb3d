#include "security/DataKey.h"
#include "security/FakeSecretStore.h"
#include "security/KeyFile.h"
#include "security/KeychainService.h"
#include "security/LocalDataVault.h"
#include "security/SealedForm.h"
#include "security/WrappedKey.h"
#include "support/FileSpy.h"
#include "support/TestData.h"
#include "support/WipeSpy.h"
#include "utils/bytes/Hex.h"
#include "utils/files/PrivateFile.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <set>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QByteArray whole = "morvane-keys 1\ncw== YQ== djE=\ncw== Yg== \nend\n";

TEST(KeyFileFormatTest, ReadsWhatItPrintsAndNoBrokenFile)
{
    const std::vector<KeyFileFormat::Entry> entries{{u"s"_s, u"a"_s, "v1"}, {u"s"_s, u"b"_s, ""}};
    EXPECT_EQ(KeyFileFormat::print(entries), whole);
    EXPECT_EQ(KeyFileFormat::parse(whole), entries);
    EXPECT_EQ(KeyFileFormat::parse("morvane-keys 1\nend\n"), std::vector<KeyFileFormat::Entry>());
    for (qsizetype size = 0; size < whole.size(); ++size)
        EXPECT_EQ(KeyFileFormat::parse(whole.first(size)), std::nullopt) << size;
    for (const QByteArray &broken : TestData::lines("security/broken_key_files.txt"))
        EXPECT_EQ(KeyFileFormat::parse(broken), std::nullopt) << broken.constData();
}

class KeyFileTest : public testing::Test {
protected:
    QByteArray contentsOf(const QString &name) const
    {
        QFile raw(name);
        return raw.open(QIODevice::ReadOnly) ? raw.readAll() : QByteArray("(none)");
    }

    QTemporaryDir folder;
    const QString path = folder.filePath(u"new/keys"_s);
    const QByteArray nativePath = QFile::encodeName(path);
    KeyFile file{path};
};

TEST_F(KeyFileTest, KeepsSecretsForItsOwnerOnly)
{
    EXPECT_FALSE(file.exists());
    file.create();
    file.add(u"s"_s, {u"a"_s, "1"});
    file.add(u"other"_s, {u"a"_s, "2"});
    file.create(); // once
    file.add(u"s"_s, {u"a"_s, "3"});
    EXPECT_FALSE(file.update(u"s"_s, u"b"_s, "4"));
    EXPECT_FALSE(file.remove(u"s"_s, u"b"_s));
    ASSERT_EQ(file.items(u"s"_s).size(), 1U);
    EXPECT_EQ(file.find(u"s"_s, u"a"_s)->value, "3");
    EXPECT_EQ(file.find(u"s"_s, u"b"_s), std::nullopt);
    EXPECT_TRUE(file.remove(u"s"_s, u"a"_s));
    EXPECT_THROW(file.add(u"s"_s, {u"c"_s, "1", UserPresence::Required}), SecretStoreError);
    EXPECT_EQ(file.entries(), (std::vector<KeyFileFormat::Entry>{{u"other"_s, u"a"_s, "2"}}));

    ::chmod(nativePath.constData(), 0644); // as a careless copy would leave it
    (void)file.entries();
    struct stat status {};
    ::stat(nativePath.constData(), &status);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST_F(KeyFileTest, WipingZeroesTheBytesOnTheDiskThatOtherNamesOfTheFileStillShow)
{
    file.create();
    const QString link = folder.filePath(u"link"_s);
    ASSERT_EQ(::link(nativePath.constData(), QFile::encodeName(link).constData()), 0);
    const qsizetype size = contentsOf(link).size();
    QFile::rename(path, path + u".part-aB3xYz"_s); // of a program that was killed while it wrote
    const QString neighbour = path + u".backup"_s;
    PrivateFile::write(neighbour, "the person's");
    const FileSpy spy(folder.path());
    file.removeStrays();
    EXPECT_EQ(spy.steps(),
              (QStringList{u"unlink new/keys.part-aB3xYz"_s, u"write new/keys.part-aB3xYz (deleted)"_s,
                           u"sync new/keys.part-aB3xYz (deleted)"_s}));
    EXPECT_EQ(contentsOf(link), QByteArray(size, '\0'));
    EXPECT_TRUE(QFile::exists(neighbour));
}

TEST_F(KeyFileTest, LeavesNoCopyOfASecretBehind)
{
    file.create();
    {
        WipeSpy encoded(u"b3BlbiBzZXNhbWU="_s);
        file.add(u"s"_s, {u"a"_s, "open sesame"});
        EXPECT_EQ(encoded.takeCount(), 2); // of its line and of the file
        (void)file.find(u"s"_s, u"a"_s);
        EXPECT_EQ(encoded.takeCount(), 1);
    }
    WipeSpy plain(u"open sesame"_s);
    (void)file.find(u"s"_s, u"a"_s);
    EXPECT_EQ(plain.takeCount(), 1);
}

// Key 00 01 … 1f, nonce a0 a1 … ab; boxes computed with another program over the same cipher.
SecretBytes knownKey()
{
    return SecretBytes(*Hex::decode(u"000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f"_s));
}

TEST(SealedFormTest, OpensFieldsOfAKnownKeyAndNothingElse)
{
    const auto outcome = [](const QByteArray &line) {
        return SealedForm::openField(QString::fromUtf8(line), knownKey()).value_or(u"does not open"_s);
    };
    TestData::expect("security/sealed_fields.txt", outcome);
}

TEST(SealedFormTest, OpensFilesOfAKnownKeyAndNothingElse)
{
    const auto known =
        *Hex::decode(u"4b565431a0a1a2a3a4a5a6a7a8a9aaabe6e75c432abf67ccf16dbc166029cc8846e0f4d4db076f96"_s);
    EXPECT_EQ(SealedForm::openFile(known, knownKey()), QByteArray("\x00\xff notes", 8));
    for (qsizetype size = 0; size < known.size(); ++size) {
        const auto cut = QByteArrayView(known).first(size);
        EXPECT_EQ(SealedForm::isSealedFile(cut), size > 4) << size;
        EXPECT_EQ(SealedForm::openFile(cut, knownKey()), std::nullopt) << size;
    }
}

// That key under “grün-Licht 1”, made by another program over the same library and cipher.
const QString known = u"morvane-wrapped-key 1 argon2id 64 2 EBESExQVFhcYGRobHB0eHw== "
                      "oKGio6SlpqeoqaqrBiBMfqjQRD8JqBpGAPL1w8MAWMM2sQ4OGCohfZEKJgXdTILJVjqtDFhJqQOUosRg"_s;

std::optional<QByteArray> opened(const QString &text, QString typed)
{
    const auto key = WrappedKey::unwrap(text, Passphrase(std::move(typed)).bytes());
    return key ? std::optional(key->view().toByteArray()) : std::nullopt;
}

TEST(WrappedKeyTest, OpensAKnownKeyHoweverItsPassphraseWasSpelledAndUnderNoOther)
{
    EXPECT_EQ(opened(known, u"grün-Licht 1"_s), knownKey().view().toByteArray());
    EXPECT_EQ(opened(known, u"gru\u0308n-Licht 1"_s), knownKey().view().toByteArray());
    for (const QString &other : {u""_s, u"grün-Licht 2"_s, u"grün-Licht 1 "_s, u"grun-Licht 1"_s})
        EXPECT_EQ(opened(known, other), std::nullopt) << other.toStdString();
    EXPECT_EQ(opened(QString(known).replace(u" 64 2 "_s, u" 64 1 "_s), u"grün-Licht 1"_s), std::nullopt);

    const SecretBytes key = knownKey();
    const SecretBytes words(QByteArrayView("words"));
    const auto once = WrappedKey::wrap(key, words, {8, 1});
    EXPECT_NE(once, WrappedKey::wrap(key, words, {8, 1})) << "a salt of its own";
    EXPECT_EQ(WrappedKey::unwrap(QString::fromLatin1(once), words)->view(), key.view());
}

// What asks for too much is refused before anything is spent on it.
TEST(WrappedKeyTest, ReadsNothingThatIsCutChangedOrTooCostly)
{
    const auto with = [](QStringView was, QStringView is) {
        return QString(known).replace(was.toString(), is.toString());
    };
    QStringList broken{with(u" 64 2", u" 4294967295 1"),
                       with(u" 64 2", u" 1048577 1"),
                       with(u" 64 2", u" 1048576 5"),
                       with(u" 64 2", u" 64 4294967295"),
                       with(u" 64 2", u" 64 0"),
                       with(u" 64 2", u" 7 1"),
                       with(u" 64 2", u" -64 2"),
                       with(u"argon2id", u"argon2d"),
                       with(u"key 1", u"key 2"),
                       with(u"EBES", u""),
                       known + u"AAAA"_s,
                       known + QString(300, u' ')};
    for (qsizetype size = 0; size < known.size(); ++size)
        broken += known.first(size);
    for (const QString &text : broken) {
        EXPECT_FALSE(WrappedKey::isReadable(text)) << text.toStdString();
        EXPECT_THROW((void)opened(text, u"grün-Licht 1"_s), WrappedKey::Unreadable);
    }
}

// In the file that stands in for a keyring, whose former contents are gone from the disk as well.
TEST(WrappedKeyTest, AChangeThatIsKilledAtAnyCallLeavesTheFormerOrTheNewForm)
{
    const auto wrapWith = [](LocalDataVault &vault, const QString &words) {
        words.isEmpty() ? vault.bareKey() : vault.wrapKey(Passphrase(QString(words)), {8, 1});
    };
    // Which form stands there once a change from one passphrase to the other, either of them none, was killed
    // at that call; nothing when it was done before.
    const auto killedAt = [&](int call, const QString &from, const QString &to) -> std::optional<QString> {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"keys"_s);
        const QString former = folder.filePath(u"former"_s);
        KeyFile file(path);
        FakePresence nobody;
        KeychainService keychain(u"own"_s, file, nobody);
        file.create();
        LocalDataVault vault(keychain);
        const QByteArray key = vault.key().view().toByteArray();
        if (!from.isEmpty())
            wrapWith(vault, from);
        EXPECT_EQ(::link(QFile::encodeName(path).constData(), QFile::encodeName(former).constData()), 0);
        const pid_t child = fork();
        if (child == 0) {
            FileSpy spy(folder.path());
            spy.killAt(call);
            wrapWith(vault, to);
            _exit(0);
        }
        int status = 0;
        waitpid(child, &status, 0);
        const auto stored = QString::fromLatin1(file.find(u"own"_s, LocalDataVault::keyAccount)->value);
        std::optional<QString> form;
        for (const QString &words : {from, to}) {
            const auto found = words.isEmpty() ? DataKey::parse(stored)
                               : WrappedKey::isReadable(stored)
                                   ? WrappedKey::unwrap(stored, Passphrase(QString(words)).bytes())
                                   : std::nullopt;
            if (found && found->view() == key)
                form = words;
        }
        EXPECT_TRUE(form) << "neither opens it";
        if (!WIFEXITED(status))
            return form;
        EXPECT_EQ(form, to);
        const auto left = PrivateFile::read(former, 1000);
        EXPECT_TRUE(left && left->count('\0') == left->size()) << "the former form is on the disk";
        return std::nullopt;
    };
    for (const auto &[from, to] :
         {std::pair{u""_s, u"new"_s}, {u"former"_s, u"new"_s}, {u"former"_s, u""_s}}) {
        SCOPED_TRACE((from + u" to "_s + to).toStdString());
        std::set<QString> ends;
        int call = 1;
        for (std::optional<QString> end; (end = killedAt(call, from, to)); ++call) {
            ASSERT_LT(call, 50);
            ends.insert(*end);
        }
        EXPECT_EQ(ends, (std::set{from, to}));
    }
}

TEST(WrappedKeyTest, MeasuresACostThatMayBeReadBack)
{
    const auto cost = Argon2id::measured();
    EXPECT_TRUE(Argon2id::isBearable(cost) && cost.memory == Argon2id::usualMemory && cost.passes >= 3);
}

} // namespace

} // namespace morvane
